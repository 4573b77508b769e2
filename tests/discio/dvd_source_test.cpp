#include "discio/dvd_source.h"
#include "tests/support/disc_tree.h"
#include "tests/support/unprivileged_user.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

using discio::DiscFileRef;
using discio::DvdDiscSource;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::ImageSpec;
using testsupport::kIsoDescriptor;
using testsupport::kSector;
namespace fs = std::filesystem;

namespace {

const Bytes kManager = {'m', 'a', 'n', 'a', 'g', 'e', 'r'};

DiscTree smallTree()
{
    return DiscTree().add("VIDEO_TS/VIDEO_TS.IFO", kManager).add("VIDEO_TS/VTS_01_0.IFO", {1, 2, 3});
}

testsupport::BuiltImage smallImage(const ImageSpec& spec = {})
{
    return smallTree().image(DiscForm::Iso, spec);
}

class DvdSource : public testing::Test {
protected:
    int open(const std::string& path)
    {
        return openDvdSource(path.c_str(), m_source, m_text.data(), m_text.size());
    }
    int openFile(const std::string& name)
    {
        return openDvdFile(m_source, name, m_ref, m_text.data(), m_text.size());
    }
    int openOptional(const std::string& name)
    {
        return openDvdFileOptional(m_source, name, m_ref, m_text.data(), m_text.size());
    }
    [[nodiscard]] std::string message() const { return m_text.data(); }

    // What opening the path fails with.
    std::string failure(const std::string& path)
    {
        EXPECT_EQ(open(path), -1) << path;
        EXPECT_FALSE(m_source.image);
        return message();
    }

    // What opening the small tree as an image with a patched byte fails with.
    std::string imageFailure(std::uint64_t offset, std::uint8_t value)
    {
        smallImage().putLe(offset, value, 1).writeTo(m_image);
        return failure(m_image);
    }

    testsupport::TemporaryFolder m_folder;
    const std::string m_image = m_folder / "disc.iso";
    const std::string m_videoTs = m_folder / "disc/VIDEO_TS";
    DvdDiscSource m_source;
    DiscFileRef m_ref;
    std::array<char, 512> m_text = {'?'};
};

TEST_F(DvdSource, DirectoryIsTakenAsVideoTsOrAsItsParent)
{
    smallTree().writeDirectory(m_folder / "disc");
    EXPECT_EQ(open(m_folder / "disc"), 0);
    EXPECT_EQ(m_source.videoTsPath, m_videoTs);
    EXPECT_EQ(open(m_videoTs), 0);
    EXPECT_EQ(m_source.videoTsPath, m_videoTs);
    EXPECT_FALSE(m_source.isImage);

    // A path that ends in a separator is a parent, and so is a bare name.
    EXPECT_EQ(failure(m_videoTs + '/'), "'" + m_videoTs + "/' has no VIDEO_TS directory");
    const fs::path before = fs::current_path();
    fs::current_path(m_folder / "disc");
    EXPECT_EQ(failure("VIDEO_TS"), "'VIDEO_TS' has no VIDEO_TS directory");
    EXPECT_EQ(open("./VIDEO_TS"), 0);
    fs::current_path(before);
}

TEST_F(DvdSource, DirectoryNameInAnyLetterCase)
{
    fs::create_directories(m_folder / "a/video_ts");
    fs::create_directories(m_folder / "b/Video_TS");
    EXPECT_EQ(open(m_folder / "a"), 0);
    EXPECT_EQ(m_source.videoTsPath, m_folder / "a/video_ts");
    EXPECT_EQ(open(m_folder / "b/Video_TS"), 0);
    EXPECT_EQ(failure(m_folder / "b"), "'" + m_folder / "b" + "' has no VIDEO_TS directory")
        << "below the path only the two usual spellings are probed";

    fs::create_directories(m_folder / "c/video_ts");
    testsupport::writeFile(m_folder / "c/VIDEO_TS", kManager);
    EXPECT_EQ(open(m_folder / "c"), 0) << "a file of that name is no directory";
    fs::create_directories(m_folder / "d" / fs::path("x\\video_ts"));
    EXPECT_EQ(open(m_folder / "d/x\\video_ts"), 0) << "a backslash separates as well";
}

TEST_F(DvdSource, PathThatCannotBeADisc)
{
    const std::string missing = m_folder / "missing";
    EXPECT_EQ(failure(missing), "cannot stat '" + missing + "': No such file or directory");
    const std::string fifo = m_folder / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(failure(fifo), "'" + fifo + "' is neither a directory nor an ISO image");
    EXPECT_EQ(failure("/dev/null"), "'/dev/null' is neither a directory nor an ISO image");
}

TEST_F(DvdSource, FilesOfADirectory)
{
    smallTree().writeDirectory(m_folder / "disc");
    ASSERT_EQ(open(m_folder / "disc"), 0);
    ASSERT_EQ(openFile("VIDEO_TS.IFO"), 0);
    EXPECT_EQ(m_ref.offset, 0U);
    EXPECT_EQ(m_ref.sizeBytes, kManager.size());
    EXPECT_EQ(readDiscFile(m_ref, *m_source.budget).bytes, kManager);
    EXPECT_EQ(openOptional("VTS_01_0.IFO"), 1);

    EXPECT_EQ(openFile("VTS_02_0.IFO"), -1);
    EXPECT_EQ(message(), "cannot open '" + m_videoTs + "/VTS_02_0.IFO': No such file or directory");
    EXPECT_EQ(openOptional("VTS_02_0.IFO"), 0);
    EXPECT_EQ(message(), "");
    EXPECT_FALSE(m_ref.stream);
    EXPECT_EQ(openFile("vts_01_0.ifo"), -1) << "letter case is the file system's affair";
}

TEST_F(DvdSource, WhatIsNoRegularFileNeitherHangsNorOpens)
{
    fs::create_directories(m_videoTs + "/DIR.IFO");
    ASSERT_EQ(::mkfifo((m_videoTs + "/FIFO.IFO").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", m_videoTs + "/ZERO.IFO");
    fs::create_symlink("nowhere", m_videoTs + "/DANGLING.IFO");
    fs::create_symlink("LOOP.IFO", m_videoTs + "/LOOP.IFO");
    ASSERT_EQ(open(m_videoTs), 0);
    const std::array<std::array<std::string, 2>, 4> cases = {{
        {"DIR.IFO", "cannot open '" + m_videoTs + "/DIR.IFO': Is a directory"},
        {"FIFO.IFO", "cannot determine size of '" + m_videoTs + "/FIFO.IFO'"},
        {"ZERO.IFO", "cannot determine size of '" + m_videoTs + "/ZERO.IFO'"},
        {"LOOP.IFO", "cannot open '" + m_videoTs + "/LOOP.IFO': Too many levels of symbolic links"},
    }};
    for (const auto& [name, text] : cases) {
        EXPECT_EQ(openFile(name), -1);
        EXPECT_EQ(message(), text);
        EXPECT_EQ(openOptional(name), -1) << name << " is there, so it is not optional";
        EXPECT_EQ(message(), text);
        EXPECT_FALSE(m_ref.stream);
    }
    EXPECT_EQ(openOptional("DANGLING.IFO"), 0);
    EXPECT_EQ(openFile("DANGLING.IFO"), -1);
    EXPECT_EQ(message(), "cannot open '" + m_videoTs + "/DANGLING.IFO': No such file or directory");
}

TEST_F(DvdSource, PermissionDenied)
{
    smallTree().writeDirectory(m_folder / "disc");
    smallImage().writeTo(m_image);
    fs::create_directories(m_folder / "locked/disc");
    fs::permissions(m_folder.path(), fs::perms(0755));
    for (const std::string& path : {m_videoTs + "/VTS_01_0.IFO", m_image, m_folder / "locked"}) {
        fs::permissions(path, fs::perms::none);
    }
    {
        const testsupport::UnprivilegedUser meanwhile;
        ASSERT_EQ(open(m_folder / "disc"), 0);
        const std::string text = "cannot open '" + m_videoTs + "/VTS_01_0.IFO': Permission denied";
        EXPECT_EQ(openFile("VTS_01_0.IFO"), -1);
        EXPECT_EQ(message(), text);
        EXPECT_EQ(openOptional("VTS_01_0.IFO"), -1);
        EXPECT_EQ(message(), text);
        EXPECT_EQ(failure(m_image), "cannot open '" + m_image + "': Permission denied");
        const std::string locked = m_folder / "locked/disc";
        EXPECT_EQ(failure(locked), "cannot stat '" + locked + "': Permission denied");
    }
    fs::permissions(m_folder / "locked", fs::perms::owner_all);  // to be removed
}

TEST_F(DvdSource, ImageMustHoldAVolumeDescriptor)
{
    const std::string notIso = "'" + m_image + "' is not a supported ISO-9660 image";
    EXPECT_EQ(imageFailure(kIsoDescriptor, 2), notIso);
    EXPECT_EQ(imageFailure(kIsoDescriptor + 5, '2'), notIso);
    smallImage().writeTo(m_image, 17 * kSector - 1);
    EXPECT_EQ(failure(m_image), notIso) << "the descriptor's last byte is missing";
    testsupport::writeFile(m_image, {});
    EXPECT_EQ(failure(m_image), notIso);

    const std::string blockSize = "'" + m_image + "' has an unsupported ISO block size";
    EXPECT_EQ(imageFailure(kIsoDescriptor + 130, 512 / 256), blockSize);
    EXPECT_EQ(imageFailure(kIsoDescriptor + 156, 33), blockSize);
    smallImage().putLe(kIsoDescriptor + 128, 512, 2).writeTo(m_image);
    EXPECT_EQ(open(m_image), 0) << "only the big-endian copy counts";
    EXPECT_EQ(m_source.blockSize, 2048U);
}

TEST_F(DvdSource, ImageMustHoldVideoTs)
{
    const std::string none = "ISO image has no VIDEO_TS directory";
    DiscTree().add("AUDIO_TS/A.IFO", {1}).image(DiscForm::Iso).writeTo(m_image);
    EXPECT_EQ(failure(m_image), none);
    DiscTree().add("VIDEO_TS", {1}).image(DiscForm::Iso).writeTo(m_image);
    EXPECT_EQ(failure(m_image), none) << "a file of that name";
    smallImage().writeTo(m_image, 18 * kSector);
    EXPECT_EQ(failure(m_image), none) << "the image ends before the root directory";
    smallImage().putLe(smallImage().placeOf("").record + 10, 0, 4).writeTo(m_image);
    EXPECT_EQ(failure(m_image), none);
    EXPECT_EQ(imageFailure(smallImage().placeOf("VIDEO_TS").record, 20), none);
}

TEST_F(DvdSource, FilesOfAnImage)
{
    for (const bool hasVersion : {true, false}) {
        auto image = smallTree().add("VIDEO_TS/DIR.IFO/FILE", {}).image(DiscForm::Iso);
        const std::uint64_t record = image.placeOf("VIDEO_TS/VIDEO_TS.IFO").record;
        if (!hasVersion) { image.putLe(record + 32, 12, 1).putLe(record + 33, 'v', 1); }
        image.writeTo(m_image);
        ASSERT_EQ(open(m_image), 0) << message();
        ASSERT_EQ(openFile("video_ts.IFO"), 0);
        EXPECT_EQ(m_ref.stream, m_source.image);
        EXPECT_EQ(readDiscFile(m_ref, *m_source.budget).bytes, kManager) << "and nothing of the block's rest";
        EXPECT_EQ(openOptional("VTS_01_0.IFO"), 1);
        EXPECT_EQ(readDiscFile(m_ref, *m_source.budget).bytes, Bytes({1, 2, 3}));
        for (const char* name : {"VTS_02_0.IFO", "DIR.IFO"}) {
            EXPECT_EQ(openFile(name), -1);
            EXPECT_EQ(message(), std::string("ISO image has no VIDEO_TS/") + name);
            EXPECT_EQ(openOptional(name), 0);
            EXPECT_EQ(message(), "");
        }
    }
}

TEST_F(DvdSource, FileOutlivesItsSource)
{
    for (const DiscForm form : testsupport::kAllDiscForms) {
        ASSERT_EQ(open(smallTree().write(form, m_folder)), 0);
        ASSERT_EQ(openFile("VIDEO_TS.IFO"), 0);
        discio::ReadBudget budget;
        m_source = {};
        EXPECT_EQ(readDiscFile(m_ref, budget).bytes, kManager);
        EXPECT_EQ(m_ref.stream.use_count(), 1);
    }
}

TEST_F(DvdSource, OffsetsAbove4GiB)
{
    const std::uint32_t at6GiB = 3U << 20U;
    smallImage({.sectors = {{"VIDEO_TS", at6GiB}, {"VIDEO_TS/VIDEO_TS.IFO", UINT32_MAX}}}).writeTo(m_image);
    ASSERT_EQ(open(m_image), 0) << message();
    ASSERT_EQ(openFile("VIDEO_TS.IFO"), 0) << message();
    EXPECT_EQ(m_ref.offset, 2048ULL * UINT32_MAX);
    EXPECT_EQ(readDiscFile(m_ref, *m_source.budget).bytes, kManager);
}

TEST_F(DvdSource, ClaimedSizesTakeNoMemoryAndNoTime)
{
    testsupport::BuiltImage image = smallImage();
    image.putLe(image.placeOf("VIDEO_TS").record + 10, UINT32_MAX, 4);
    image.putLe(image.placeOf("VIDEO_TS/VIDEO_TS.IFO").record + 10, UINT32_MAX, 4).writeTo(m_image);
    ASSERT_EQ(open(m_image), 0) << message();
    EXPECT_EQ(openOptional("VTS_99_0.IFO"), 0);
    ASSERT_EQ(openFile("VIDEO_TS.IFO"), 0);
    const discio::DiscFileBytes file = readDiscFile(m_ref, *m_source.budget);
    EXPECT_EQ(file.sizeBytes, UINT32_MAX);
    EXPECT_FALSE(file.isComplete());
    EXPECT_EQ(file.bytes.size(), 2 * kSector) << "two files of a block each are all that follows";
    EXPECT_LE(file.bytes.capacity(), 2 * kSector);

    m_ref.offset = 1ULL << 40U;
    EXPECT_TRUE(readDiscFile(m_ref, *m_source.budget).bytes.empty());
    m_ref.offset = UINT64_MAX;
    EXPECT_TRUE(readDiscFile(m_ref, *m_source.budget).bytes.empty());
    m_ref.offset = 0;
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::NavigationBytes, 100, "bytes");
    EXPECT_TRUE(readDiscFile(m_ref, budget).bytes.empty());
    EXPECT_STREQ(budget.reached(), "bytes");
}

TEST_F(DvdSource, MessagesAreCutAndMayBeUnwanted)
{
    std::array<char, 12> small = {};
    EXPECT_EQ(openDvdSource("/nowhere", m_source, small.data(), small.size()), -1);
    EXPECT_STREQ(small.data(), "cannot stat");
    EXPECT_EQ(openDvdSource("/nowhere", m_source, nullptr, 10), -1);
    small[0] = 'x';
    EXPECT_EQ(openDvdSource("/nowhere", m_source, small.data(), 0), -1);
    EXPECT_EQ(small[0], 'x');
}

}  // namespace
