#include "discio/bluray_source.h"
#include "discio/directory_list.h"
#include "discio/dvd_source.h"
#include "service/owner_only_file.h"
#include "tests/native/rights.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <random>

using namespace discio;
using namespace service;
namespace fs = std::filesystem;

namespace {

// The path as the program passes it: in UTF-8, with slashes.
std::string text(const fs::path& path)
{
    const std::u8string utf8 = path.generic_u8string();
    return {utf8.begin(), utf8.end()};
}

void write(const fs::path& path, const std::string& content)
{
    fs::create_directories(path.parent_path());
    ASSERT_TRUE((std::ofstream(path, std::ios::binary | std::ios::app) << content).flush()) << path;
}

// A folder of its own for each test, on every system.
class Native : public testing::Test {
protected:
    Native() { fs::create_directory(m_folder); }
    ~Native() override
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    const fs::path m_folder =
        fs::temp_directory_path() / ("platterscope-native-" + std::to_string(std::random_device()()));
    const std::string m_path = text(m_folder);
};

TEST_F(Native, DirectoriesAreListedInBytewiseOrder)
{
    EXPECT_EQ(listDirectory(m_path), std::vector<std::string>());
    std::vector<std::string> names = {".hidden", "B.x", "_", "a b", "b"};
    for (int i = 1001; i <= 2000; ++i) {
        names.push_back("x" + std::to_string(i) + std::string(60, 'x'));
    }
    for (const std::string& name : names) {
        write(m_folder / name, "");
    }
    write(m_folder / "sub.dir" / u8"stra\u00DFe", "content");
    names.insert(names.begin() + 5, "sub.dir");
    EXPECT_EQ(listDirectory(m_path), names);
    EXPECT_EQ(listDirectory(m_path + '/'), names);
    const std::string inside = listDirectory(m_path + "/sub.dir").value().at(0);
    EXPECT_EQ(openRegularFile(m_path + "/sub.dir/" + inside).sizeBytes, 7U);
    for (const char* name : {"b", "none", "none/deeper", "su*", "sub.di?", "*"}) {
        EXPECT_EQ(listDirectory(m_path + '/' + name), std::nullopt) << name;
    }
}

TEST_F(Native, DiscsAreReadFromDirectories)
{
    write(m_folder / "bdmv/Playlist/00001.MPLS", "playlist");
    BlurayDiscSource bluray;
    ASSERT_EQ(openBluraySource(m_path.c_str(), bluray, nullptr, 0), 0);
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(readWholeFile(bluray, "BDMV/PLAYLIST/00001.mpls", bytes), 0);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "playlist");
    DvdDiscSource dvd;
    std::string problem(256, '\0');
    EXPECT_EQ(openDvdSource(m_path.c_str(), dvd, problem.data(), problem.size()), -1);
    EXPECT_EQ(problem.c_str(), "'" + m_path + "' has no VIDEO_TS directory");
}

TEST_F(Native, OnlyRegularFilesAreOpened)
{
    write(m_folder / "file", "12345");
    const std::pair<int, std::vector<std::string>> rows[] = {
        {0, {m_path + "/file"}},
        {EISDIR, {m_path, m_path + "//", text(m_folder.root_path())}},
        {ENOENT, {m_path + "/none", m_path + "/none/deeper", m_path + "/none/", ""}},
        {ENOTDIR, {m_path + "/file/"}},
    };
    for (const auto& [error, paths] : rows) {
        for (const std::string& path : paths) {
            const PathStatus status = queryPath(path);
            EXPECT_EQ(status.kind == PathKind::RegularFile, error == 0) << path;
            EXPECT_EQ(status.kind == PathKind::Directory, error == EISDIR) << path;
            EXPECT_EQ(status.errorNumber, error == EISDIR ? 0 : error) << path;
            const OpenedFile opened = openRegularFile(path);
            EXPECT_EQ(opened.stream != nullptr, error == 0) << path;
            EXPECT_EQ(opened.errorNumber, error) << path;
            EXPECT_FALSE(opened.isSpecial) << path;
        }
    }
    EXPECT_FALSE(openRegularFile("/dev/null").stream || openRegularFile("NUL").stream)
        << "a device of either system";
}

TEST_F(Native, BytesAreReadAtAnyOffset)
{
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30U) + 7;
    const std::string bytes("a\r\nb\n\x1A\0\xFF end", 12);
    write(m_folder / "file", bytes);
    fs::resize_file(m_folder / "file", kFar);
    write(m_folder / "file", "far");
    EXPECT_EQ(queryPath(m_path + "/file").sizeBytes, kFar + 3);
    const OpenedFile file = openRegularFile(m_path + "/file");
    EXPECT_EQ(file.sizeBytes, kFar + 3);
    EXPECT_EQ(streamSize(*file.stream), kFar + 3);
    const auto read = [&file](std::uint64_t offset) {
        std::vector<std::uint8_t> found(12, '?');
        found.resize(readUpTo(*file.stream, offset, found));
        return std::string(found.begin(), found.end());
    };
    EXPECT_EQ(read(0), bytes);
    EXPECT_EQ(read(3), bytes.substr(3) + std::string(3, '\0'));
    EXPECT_EQ(read(kFar & UINT32_MAX), std::string(12, '\0'));
    EXPECT_EQ(read(kFar), "far");
    EXPECT_EQ(read(kFar + 3) + read(INT64_MAX) + read(std::uint64_t{INT64_MAX} + 1) + read(UINT64_MAX), "");
}

class OwnerOnlyFile : public Native {
protected:
    OwnerOnlyFile()
    {
        EXPECT_TRUE(makeOwnerOnlyDirectory(m_path + "/private") && makeOwnerOnlyDirectory(text(m_directory)));
    }

    // The content, or the step that failed.
    [[nodiscard]] static std::string readBack(const fs::path& path)
    {
        constexpr const char* kSteps[] = {"None", "Absent", "NotPlain", "Read", "Write", "Owner", "Restrict"};
        std::string content = "before";
        const auto result = readOwnerOnlyFile(text(path), 100, content);
        return result.ok() ? content : content + kSteps[static_cast<int>(result.failed)];
    }

    // wine ignores the protection against inherited rights; from this directory there are none to inherit.
    const fs::path m_directory = m_folder / "private" / u8".h\u00F6st";
    const fs::path m_file = m_directory / u8"k\u20ACy.txt";
};

TEST_F(OwnerOnlyFile, WhatIsWrittenIsReadAndNobodyElses)
{
    EXPECT_TRUE(isOwnerOnly(text(m_file))) << "there is none";
    EXPECT_EQ(readBack(m_file), "Absent");
    EXPECT_EQ(readBack(m_folder / "none" / "file"), "Absent");
    for (const std::string& content : {std::string("key\r\n"), std::string(), std::string(100, 'k')}) {
        EXPECT_TRUE(replaceOwnerOnlyFile(text(m_file), content).ok());
        EXPECT_EQ(readBack(m_file), content);
        EXPECT_TRUE(isOwnerOnly(text(m_file)));
    }
    EXPECT_EQ(listDirectory(text(m_directory))->size(), 1U) << "nothing is left beside it";
    EXPECT_TRUE(replaceOwnerOnlyFile(text(m_file), std::string(101, 'k')).ok());
    EXPECT_EQ(readBack(m_file), "Read") << "too long";
}

TEST_F(OwnerOnlyFile, RightsOfOthersAreSeenAndTakenAway)
{
    ASSERT_TRUE(replaceOwnerOnlyFile(text(m_file), "key").ok());
    ASSERT_TRUE(giveEverybody(m_file, false));
    EXPECT_FALSE(isOwnerOnly(text(m_file)));
    EXPECT_EQ(readBack(m_file), "key");
    EXPECT_TRUE(isOwnerOnly(text(m_file)));
    ASSERT_TRUE(giveEverybody(m_directory, false));
    EXPECT_TRUE(isOwnerOnly(text(m_file))) << "who sees the directory cannot read the file";
    ASSERT_TRUE(giveEverybody(m_directory, true));
    EXPECT_FALSE(isOwnerOnly(text(m_file))) << "another file could be put there";
    EXPECT_TRUE(makeOwnerOnlyDirectory(text(m_directory)));
    EXPECT_TRUE(isOwnerOnly(text(m_file)));
}

TEST_F(OwnerOnlyFile, OnlyAFileIsReadAndReplaced)
{
    write(m_directory / "file", "x");
    EXPECT_FALSE(makeOwnerOnlyDirectory(text(m_directory / "file")));
    EXPECT_FALSE(makeOwnerOnlyDirectory(text(m_folder / "none" / "deeper")));
    fs::create_directories(m_file / "inside");
    EXPECT_EQ(readBack(m_file), "NotPlain");
    EXPECT_FALSE(isOwnerOnly(text(m_file)));
    EXPECT_EQ(replaceOwnerOnlyFile(text(m_file), "new").failed, OwnerOnlyStep::Write);
    EXPECT_TRUE(fs::is_directory(m_file / "inside"));
    EXPECT_EQ(listDirectory(text(m_directory))->size(), 2U);
    EXPECT_EQ(replaceOwnerOnlyFile(text(m_folder / "none" / "file"), "new").failed, OwnerOnlyStep::Write);
}

}  // namespace
