// Discs whose files and directories fail or go away while they are read.
#include "tests/faults/disc_on_disk.h"
#include "tests/support/fault_table.h"

using faults::DiscOnDisk;
using faults::Family;
using faults::FileRead;
using faults::InterposedReads;
using testsupport::DiscForm;
using testsupport::recordFault;
using testsupport::TemporaryFolder;
namespace fs = std::filesystem;

namespace {

struct BadFile {
    Family family = Family::Dvd;
    std::string path;
    std::uint64_t offset = 0;
    std::string expected;
};

const BadFile kBadFiles[] = {
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 0, "VIDEO_TS.IFO is not a DVD-Video manager IFO"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048, "VIDEO_TS.IFO has no readable title table"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048 + 8, "cannot read title 1"},
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", 2048 + 8 + 24, "cannot read VIDEO_TS/VIDEO_TS.IFO"},
    {Family::Dvd, "VIDEO_TS/VTS_01_0.IFO", 0, "VTS_01_0.IFO is not a valid VTS IFO"},
    {Family::Dvd, "VIDEO_TS/VTS_01_0.IFO", 984, "VTS_01_0.IFO has invalid title PTT data"},
    {Family::Dvd, "VIDEO_TS/VTS_02_0.IFO", 0, "VTS_02_0.IFO is not a valid VTS IFO"},
    {Family::Bluray, "BDMV/index.bdmv", 50, faults::warned(faults::kWithoutIndex)},
    {Family::Bluray, "CERTIFICATE/id.bdmv", 0, faults::warned(faults::kWithoutIdentity)},
    {Family::Bluray, "BDMV/PLAYLIST/00000.mpls", 0, "cannot parse playlist 'BDMV/PLAYLIST/00000.mpls'"},
    {Family::Bluray, "BDMV/PLAYLIST/00801.mpls", 100, "cannot parse playlist 'BDMV/PLAYLIST/00801.mpls'"},
    {Family::Bluray, "BDMV/CLIPINF/00001.clpi", 0, "cannot parse clip information 'BDMV/CLIPINF/00001.clpi'"},
    {Family::Bluray, "BDMV/CLIPINF/00003.clpi", 100,
     "cannot parse clip information 'BDMV/CLIPINF/00003.clpi'"},
};

std::string answerTo(const std::string& text)
{
    return faults::isSummary(text) ? "read, without what the file would have said"
                                   : "fails, with its message";
}

TEST(ReadFaults, AFileThatCannotBeReadFromSomewhereOn)
{
    for (const BadFile& file : kBadFiles) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        bool isHit = false;
        EXPECT_EQ(disc.readUnder(faults::failingFrom(path, file.offset, isHit)), file.expected) << file.path;
        EXPECT_TRUE(isHit) << file.path;
        if (!HasFailure()) { recordFault("Directory: a read error in a file", answerTo(file.expected)); }
    }
}

TEST(ReadFaults, AFileThatShrinksWhenItIsRead)
{
    for (const BadFile& file : kBadFiles) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        EXPECT_EQ(disc.readUnder([&](const FileRead& read) {
            if (read.path == path) { fs::resize_file(path, file.offset); }
            return 0;
        }),
                  file.expected)
            << file.path;
        if (!HasFailure()) {
            recordFault("Directory: a file that shrinks while it is read", answerTo(file.expected));
        }
    }
}

TEST(ReadFaults, AFileThatVanishesBeforeItIsOpened)
{
    const std::vector<BadFile> files = {
        {Family::Dvd, "VIDEO_TS/VTS_02_0.IFO", 0, "cannot open '%s': No such file or directory"},
        {Family::Bluray, "CERTIFICATE/id.bdmv", 0, faults::kWithoutIdentity},
        {Family::Bluray, "BDMV/STREAM/00002.m2ts", 0, faults::kWithoutOneStream},
    };
    for (const BadFile& file : files) {
        const DiscOnDisk disc(file.family, DiscForm::Directory);
        const std::string path = disc.path() + '/' + file.path;
        EXPECT_EQ(disc.readUnder([&](const FileRead&) {
            fs::remove(path);
            return 0;
        }),
                  faults::filledIn(file.expected, path));
        if (!HasFailure()) {
            recordFault("Directory: a file that vanishes before it is opened", answerTo(file.expected));
        }
    }
}

// A file that is open can be read whatever becomes of its name, and so can an image.
TEST(ReadFaults, ADiscThatIsRemovedAtAnyRead)
{
    const auto playlist = [](const char* name) {
        return "cannot parse playlist 'BDMV/PLAYLIST/" + std::string(name) + ".mpls'";
    };
    const auto clip = [](const char* name) {
        return "cannot parse clip information 'BDMV/CLIPINF/" + std::string(name) + ".clpi'";
    };
    const std::vector<std::string> dvd = {"cannot open '%s/VIDEO_TS/VTS_01_0.IFO': No such file or directory",
                                          "cannot open '%s/VIDEO_TS/VTS_02_0.IFO': No such file or directory",
                                          faults::wholeDisc(Family::Dvd)};
    // Playlists and clip information are listed in front of the first of them.
    const std::vector<std::string> bluray = {faults::kCannotEnumerate,
                                             faults::kCannotEnumerate,
                                             playlist("00800"),
                                             playlist("00801"),
                                             clip("00001"),
                                             clip("00002"),
                                             clip("00003"),
                                             faults::kWholeBluray};
    for (const Family family : {Family::Dvd, Family::Bluray}) {
        const std::vector<std::string>& answers = family == Family::Dvd ? dvd : bluray;
        for (std::size_t n = 0; n < answers.size(); ++n) {
            const DiscOnDisk disc(family, DiscForm::Directory);
            std::size_t number = 0;
            const std::string text = disc.readUnder([&](const FileRead&) {
                if (number++ == n) { fs::remove_all(disc.path()); }
                return 0;
            });
            EXPECT_EQ(text, faults::filledIn(answers[n], disc.path())) << "removed at read " << n;
            EXPECT_GT(number, n);
            if (!HasFailure()) {
                recordFault("Directory: a disc that is removed while it is read",
                            n + 1 == answers.size() ? "read: its last file is open already"
                                                    : "fails, with its message");
            }
        }
    }
}

TEST(ReadFaults, ADirectoryWhoseListingFailsHalfWay)
{
    const std::vector<BadFile> directories = {
        {Family::Bluray, "", 0, "'%s' has no BDMV directory"},
        {Family::Bluray, "/BDMV", 0, faults::kCannotEnumerate},
        {Family::Bluray, "/BDMV/PLAYLIST", 0, faults::kCannotEnumerate},
        {Family::Bluray, "/BDMV/CLIPINF", 0, faults::kCannotEnumerate},
        {Family::Bluray, "/BDMV/STREAM", 0, faults::warned(faults::kWithoutStreams)},
        {Family::Bluray, "/CERTIFICATE", 0, faults::warned(faults::kWithoutIdentity)},
    };
    for (const BadFile& directory : directories) {
        for (const int names : {0, 2, 3}) {
            const DiscOnDisk disc(Family::Bluray, DiscForm::Directory);
            const faults::InterposedListing meanwhile(disc.path() + directory.path, names);
            EXPECT_EQ(disc.read(), faults::filledIn(directory.expected, disc.path())) << directory.path;
            EXPECT_TRUE(faults::InterposedListing::isHit()) << directory.path;
            if (!HasFailure()) {
                recordFault("Directory: a listing that fails half way", answerTo(directory.expected));
            }
        }
    }
}

// However many names are looked for in it, and however long it is.
TEST(ReadFaults, TheDirectoryOfAnImageIsReadOnce)
{
    const TemporaryFolder folder;
    const std::string path = folder / "disc.iso";
    constexpr std::uint32_t kSize = 16U << 20U;
    testsupport::BuiltImage image = faults::dvdTree().image(testsupport::DiscForm::Iso);
    image.putLe(image.placeOf("VIDEO_TS").record + 10, kSize, 4).writeTo(path, 2 * kSize);
    std::uint64_t readBytes = 0;
    const InterposedReads meanwhile([&readBytes](const FileRead& read) {
        readBytes += read.sizeBytes;
        return 0;
    });
    EXPECT_EQ(faults::readDisc(Family::Dvd, path), faults::wholeDisc(Family::Dvd));
    EXPECT_GE(readBytes, kSize);
    EXPECT_LT(readBytes, 2 * kSize);
}

}  // namespace
