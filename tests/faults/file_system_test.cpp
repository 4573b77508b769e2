// What a file system refuses, and the paths and names that it allows.
#include "tests/faults/disc_reading.h"
#include "tests/support/fault_table.h"
#include "tests/support/unprivileged_user.h"

#include <gtest/gtest.h>

using faults::Family;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::recordFault;
using testsupport::TemporaryFolder;
namespace fs = std::filesystem;

namespace {

constexpr Family kFamilies[] = {Family::Dvd, Family::Bluray};

// What may not be read of a disc below "folder", and what reading the disc gives; %s stands for the locked path.
struct Locked {
    Family family = Family::Dvd;
    DiscForm form = DiscForm::Directory;
    std::string path;
    std::string expected;
};

const Locked kLocked[] = {
    {Family::Dvd, DiscForm::Iso, "disc.iso", "cannot open '%s': Permission denied"},
    {Family::Dvd, DiscForm::Directory, "disc", "'%s' has no VIDEO_TS directory"},
    {Family::Dvd, DiscForm::Directory, "disc/VIDEO_TS", "cannot open '%s/VIDEO_TS.IFO': Permission denied"},
    {Family::Dvd, DiscForm::Directory, "disc/VIDEO_TS/VIDEO_TS.IFO", "cannot open '%s': Permission denied"},
    {Family::Dvd, DiscForm::Directory, "disc/VIDEO_TS/VTS_02_0.IFO", "cannot open '%s': Permission denied"},
    {Family::Bluray, DiscForm::Iso, "disc.iso", "cannot open '%s': Permission denied"},
    {Family::Bluray, DiscForm::Udf, "disc.iso", "cannot open '%s': Permission denied"},
    {Family::Bluray, DiscForm::Directory, "disc", "'%s' has no BDMV directory"},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV", faults::kCannotEnumerate},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/PLAYLIST", faults::kCannotEnumerate},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/CLIPINF", faults::kCannotEnumerate},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/STREAM", faults::warned(faults::kWithoutStreams)},
    {Family::Bluray, DiscForm::Directory, "disc/CERTIFICATE", faults::warned(faults::kWithoutIdentity)},
    {Family::Bluray, DiscForm::Directory, "disc/CERTIFICATE/id.bdmv",
     faults::warned(faults::kWithoutIdentity)},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/index.bdmv", faults::warned(faults::kWithoutIndex)},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/PLAYLIST/00801.mpls",
     "cannot parse playlist 'BDMV/PLAYLIST/00801.mpls'"},
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/CLIPINF/00003.clpi",
     "cannot parse clip information 'BDMV/CLIPINF/00003.clpi'"},
    // A size needs no permission.
    {Family::Bluray, DiscForm::Directory, "disc/BDMV/STREAM/00001.m2ts", faults::kWholeBluray},
};

TEST(FileSystem, PermissionDenied)
{
    for (const Locked& locked : kLocked) {
        const TemporaryFolder folder;
        fs::permissions(folder.path(), fs::perms(0755));
        const std::string disc = faults::treeOf(locked.family).write(locked.form, folder);
        const std::string path = folder / locked.path;
        fs::permissions(path, fs::perms::none);
        {
            const testsupport::UnprivilegedUser meanwhile;
            EXPECT_EQ(faults::readDisc(locked.family, disc), faults::filledIn(locked.expected, path));
        }
        fs::permissions(path, fs::perms::owner_all);  // to be removed
        if (!HasFailure()) {
            const bool isRead = faults::isSummary(locked.expected);
            recordFault("Permission denied, for a disc, a directory or a file",
                        isRead ? "read, without what the file would have said" : "fails, with its message");
        }
    }
}

TEST(FileSystem, PathsAreBytes)
{
    for (const Family family : kFamilies) {
        for (const DiscForm form : {DiscForm::Directory, DiscForm::Iso}) {
            const TemporaryFolder folder;
            const std::string path = folder / "\xFF\xFE \xC3 disc\n%s'";
            fs::rename(faults::treeOf(family).write(form, folder), path);
            EXPECT_EQ(faults::readDisc(family, path), faults::wholeDisc(family));
            EXPECT_EQ(faults::readDisc(family, path + "\x80"),
                      "cannot stat '" + path + "\x80': No such file or directory");
        }
    }
    if (!HasFailure()) { recordFault("Path: not UTF-8", "read", 4); }
}

TEST(FileSystem, NamesOnTheDiscAreBytes)
{
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const TemporaryFolder folder;
        const DiscTree tree = faults::blurayTree()
                                  .add("BDMV/\xFF\xFE", {1})
                                  .add("BDMV/CLIPINF/\xC3.clpi", testsupport::ClpiSpec().build())
                                  .add("BDMV/PLAYLIST/\xC3(\x80.mpls", {1});
        EXPECT_EQ(faults::readDisc(Family::Bluray, tree.write(form, folder)),
                  "cannot parse playlist 'BDMV/PLAYLIST/\xC3(\x80.mpls'");
    }
    const TemporaryFolder folder;
    DiscTree tree = faults::blurayTree();
    tree.add("BDMV/CLIPINF/\xC3.clpi", testsupport::ClpiSpec().build()).add("BDMV/STREAM/\xC3.m2ts", {1});
    const std::string text = faults::readDisc(Family::Bluray, tree.write(DiscForm::Directory, folder));
    EXPECT_NE(text.find("clips 4"), std::string::npos) << text;
    EXPECT_NE(text.find("streams 18433"), std::string::npos) << text;
    if (!HasFailure()) { recordFault("Name on the disc: not UTF-8", "read, or named in the message", 7); }
}

TEST(FileSystem, LongPaths)
{
    const TemporaryFolder folder;
    for (const std::string& tooLong :
         {"/" + std::string(5000, 'x'), folder / std::string(256, 'x'),
          folder.path().string() + std::string(2100, '/') + std::string(2100, '.')}) {
        for (const Family family : kFamilies) {
            EXPECT_EQ(faults::readDisc(family, tooLong), "cannot stat '" + tooLong + "': File name too long");
        }
    }
    for (const Family family : kFamilies) {
        const std::string longest = folder / std::string(255, 'x');
        faults::treeOf(family).writeDirectory(longest);
        EXPECT_EQ(faults::readDisc(family, longest), faults::wholeDisc(family));
    }
    if (!HasFailure()) {
        recordFault("Path: longer than the system allows", "fails, with its message", 6);
        recordFault("Path: a name of 255 bytes", "read", 2);
    }
}

// A path that the system takes, of a disc whose files' paths it does not.
TEST(FileSystem, DeepDirectories)
{
    const fs::path before = fs::current_path();
    for (const std::size_t length : {std::size_t{3500}, std::size_t{4090}}) {
        const TemporaryFolder folder;
        std::string path = folder / "deep";
        while (path.size() + 42 < length) {
            path += '/' + std::string(20, 'd');
        }
        path += '/' + std::string(length - path.size() - 1, 'd');
        fs::create_directories(path);
        fs::current_path(path);
        faults::dvdTree().writeDirectory(".");
        faults::blurayTree().writeDirectory(".");
        fs::current_path(before);
        const bool isShort = length < 4000;
        EXPECT_EQ(faults::readDisc(Family::Dvd, path),
                  isShort ? faults::wholeDisc(Family::Dvd) : "'" + path + "' has no VIDEO_TS directory");
        EXPECT_EQ(faults::readDisc(Family::Bluray, path),
                  isShort ? faults::wholeDisc(Family::Bluray) : faults::kCannotEnumerate);
    }
    if (!HasFailure()) {
        recordFault("Path: a disc 160 directories deep", "read", 2);
        recordFault("Path: a disc whose files' paths the system does not take", "fails, with its message", 2);
    }
}

}  // namespace
