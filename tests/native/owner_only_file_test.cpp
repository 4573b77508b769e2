#include "service/owner_only_file.h"
#include "tests/native/folder_fixture.h"

using service::isOwnerOnly;
using service::makeOwnerOnlyDirectory;
using service::OwnerOnlyStep;
using service::readOwnerOnlyFile;
using service::replaceOwnerOnlyFile;
namespace fs = std::filesystem;

namespace {

class OwnerOnlyFile : public native_test::FolderTest {
protected:
    static constexpr std::size_t kLimit = 100;

    OwnerOnlyFile()
    {
        EXPECT_TRUE(makeOwnerOnlyDirectory(text(m_private)));
        EXPECT_TRUE(makeOwnerOnlyDirectory(text(m_directory)));
    }

    // The content, or the step that failed.
    [[nodiscard]] static std::string readBack(const fs::path& path)
    {
        constexpr const char* kSteps[] = {"None", "Absent", "NotPlain", "Read", "Write", "Owner", "Restrict"};
        std::string content = "before";
        const auto result = readOwnerOnlyFile(text(path), kLimit, content);
        return result.ok() ? content : content + kSteps[static_cast<int>(result.failed)];
    }
    [[nodiscard]] std::ptrdiff_t entryCount() const
    {
        return std::distance(fs::directory_iterator(m_directory), {});
    }

    // wine ignores the protection against inherited rights; from this directory there are none to inherit.
    const fs::path m_private = m_folder / "private";
    const fs::path m_directory = m_private / u8".h\u00F6st";
    const fs::path m_file = m_directory / u8"k\u20ACy.txt";
};

TEST_F(OwnerOnlyFile, WhatIsWrittenIsReadAndNobodyElses)
{
    EXPECT_TRUE(isOwnerOnly(text(m_file))) << "there is none";
    EXPECT_EQ(readBack(m_file), "Absent");
    EXPECT_EQ(readBack(m_folder / "none" / "file"), "Absent");
    for (const std::string& content : {std::string("key\r\n"), std::string(), std::string(kLimit, 'k')}) {
        EXPECT_TRUE(replaceOwnerOnlyFile(text(m_file), content).ok());
        EXPECT_EQ(fs::file_size(m_file), content.size());
        EXPECT_EQ(readBack(m_file), content);
        EXPECT_TRUE(isOwnerOnly(text(m_file)));
    }
    EXPECT_EQ(entryCount(), 1) << "nothing is left beside it";
    EXPECT_TRUE(replaceOwnerOnlyFile(text(m_file), std::string(kLimit + 1, 'k')).ok());
    EXPECT_EQ(readBack(m_file), "Read") << "too long";
}

TEST_F(OwnerOnlyFile, RightsOfOthersAreSeenAndTakenAway)
{
    ASSERT_TRUE(replaceOwnerOnlyFile(text(m_file), "key").ok());
    ASSERT_TRUE(native_test::giveEverybody(m_file, false));
    EXPECT_FALSE(isOwnerOnly(text(m_file)));
    EXPECT_EQ(readBack(m_file), "key");
    EXPECT_TRUE(isOwnerOnly(text(m_file)));

    ASSERT_TRUE(native_test::giveEverybody(m_directory, false));
    EXPECT_TRUE(isOwnerOnly(text(m_file))) << "who sees the directory cannot read the file";
    ASSERT_TRUE(native_test::giveEverybody(m_directory, true));
    EXPECT_FALSE(isOwnerOnly(text(m_file))) << "another file could be put there";
    EXPECT_TRUE(makeOwnerOnlyDirectory(text(m_directory)));
    EXPECT_TRUE(isOwnerOnly(text(m_file)));
    EXPECT_EQ(readBack(m_file), "key");
}

TEST_F(OwnerOnlyFile, OnlyAFileIsRead)
{
    fs::create_directory(m_file);
    EXPECT_EQ(readBack(m_file), "NotPlain");
    EXPECT_FALSE(isOwnerOnly(text(m_file)));
    write(m_directory / "file", "x");
    EXPECT_FALSE(makeOwnerOnlyDirectory(text(m_directory / "file")));
    EXPECT_FALSE(makeOwnerOnlyDirectory(text(m_folder / "none" / "deeper")));
    EXPECT_TRUE(makeOwnerOnlyDirectory(text(m_directory))) << "it is there already";
}

TEST_F(OwnerOnlyFile, AFailedReplacementChangesNothing)
{
    fs::create_directories(m_file / "inside");
    EXPECT_EQ(replaceOwnerOnlyFile(text(m_file), "new").failed, OwnerOnlyStep::Write);
    EXPECT_TRUE(fs::is_directory(m_file / "inside"));
    EXPECT_EQ(entryCount(), 1);
    EXPECT_EQ(replaceOwnerOnlyFile(text(m_folder / "none" / "file"), "new").failed, OwnerOnlyStep::Write);
}

}  // namespace
