// What is no file, or holds nothing but a size, in place of a disc or of one of its files.
#include "tests/faults/bounded_read.h"
#include "tests/support/fault_table.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using faults::Family;
namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kTiB = 1ULL << 40U;

// A way to put something else in a file's place, and what an attempt to open it gives.
struct Special {
    std::string name;
    void (*make)(const std::string& path);
    // Of a DVD's file, with %s for its path. A Blu-ray disc's file cannot be read, whatever the reason.
    std::string dvdMessage;
};

void makeSocket(const std::string& path)
{
    // The path of a socket must be short.
    const fs::path before = fs::current_path();
    fs::current_path(fs::path(path).parent_path());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    fs::path(path).filename().string().copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ::close(socket);
    fs::current_path(before);
}

const std::string kNoSize = "cannot determine size of '%s'";

const Special kSpecials[] = {
    {"a FIFO", [](const std::string& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }, kNoSize},
    {"a socket", makeSocket, kNoSize},
    {"/dev/zero", [](const std::string& path) { fs::create_symlink("/dev/zero", path); }, kNoSize},
    {"/dev/full", [](const std::string& path) { fs::create_symlink("/dev/full", path); }, kNoSize},
    {"/dev/null", [](const std::string& path) { fs::create_symlink("/dev/null", path); }, kNoSize},
    {"a link to itself", [](const std::string& path) { fs::create_symlink(fs::path(path).filename(), path); },
     "cannot open '%s': Too many levels of symbolic links"},
    {"a directory", [](const std::string& path) { fs::create_directory(path); },
     "cannot open '%s': Is a directory"},
};

// A file of a disc, and what reading the disc gives where the file cannot be read; empty: kSpecials says it.
struct DiscFile {
    Family family = Family::Dvd;
    std::string path;
    std::string withoutIt;
    std::string sparse;  // where it is a TiB of zeros
};

constexpr char kTooLarge[] = "the navigation files are larger than 512 MiB";

const DiscFile kFiles[] = {
    {Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO", "", kTooLarge},
    {Family::Dvd, "VIDEO_TS/VTS_01_0.IFO", "", kTooLarge},
    {Family::Bluray, "BDMV/index.bdmv", faults::warned(faults::kWithoutIndex), kTooLarge},
    {Family::Bluray, "CERTIFICATE/id.bdmv", faults::warned(faults::kWithoutIdentity), kTooLarge},
    {Family::Bluray, "BDMV/PLAYLIST/00800.mpls", "cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'",
     kTooLarge},
    {Family::Bluray, "BDMV/CLIPINF/00002.clpi", "cannot parse clip information 'BDMV/CLIPINF/00002.clpi'",
     kTooLarge},
    {Family::Bluray, "BDMV/STREAM/00002.m2ts", faults::warned(faults::kWithoutOneStream),
     "id 0001 titles 2 playlists 3 clips 3 bytes 1502 streams 1099511640064"},
};

TEST(SpecialFiles, InPlaceOfAFileOfTheDisc)
{
    for (const DiscFile& file : kFiles) {
        for (const Special& special : kSpecials) {
            const testsupport::TemporaryFolder folder;
            const std::string disc =
                faults::treeOf(file.family).write(testsupport::DiscForm::Directory, folder);
            const std::string path = disc + '/' + file.path;
            fs::remove(path);
            special.make(path);
            const std::string expected = file.withoutIt.empty() ? special.dvdMessage : file.withoutIt;
            EXPECT_EQ(faults::boundedRead(file.family, disc), faults::filledIn(expected, path))
                << special.name << " as " << file.path;
        }
    }
    if (!HasFailure()) {
        for (const Special& special : kSpecials) {
            const std::string fault = "Directory: " + special.name + " in place of a file";
            testsupport::recordFault(fault, "fails at once, with its message", 4);
            testsupport::recordFault(fault, "read at once, without what the file would have said", 3);
        }
    }
}

TEST(SpecialFiles, OfAnySizeAndWithoutContents)
{
    for (const DiscFile& file : kFiles) {
        const testsupport::TemporaryFolder folder;
        const std::string disc = faults::treeOf(file.family).write(testsupport::DiscForm::Directory, folder);
        fs::resize_file(disc + '/' + file.path, 0);
        fs::resize_file(disc + '/' + file.path, kTiB);
        EXPECT_EQ(faults::boundedRead(file.family, disc), file.sparse) << file.path;
    }
    if (!HasFailure()) {
        const std::string fault = "Directory: a sparse file of 1 TiB in place of a file";
        testsupport::recordFault(fault, "fails within a second, with the limit's message", 6);
        testsupport::recordFault(fault, "read within a second, with that size as the stream's", 1);
    }
}

TEST(SpecialFiles, InPlaceOfTheDisc)
{
    for (const Special& special : kSpecials) {
        const testsupport::TemporaryFolder folder;
        const std::string path = folder / "disc";
        special.make(path);
        const bool isLoop = special.name == "a link to itself";
        const bool isDirectory = special.name == "a directory";
        const std::string loop = "cannot stat '" + path + "': Too many levels of symbolic links";
        const std::string dvd = isDirectory ? "'" + path + "' has no VIDEO_TS directory"
                                            : "'" + path + "' is neither a directory nor an ISO image";
        EXPECT_EQ(faults::boundedRead(Family::Dvd, path), isLoop ? loop : dvd) << special.name;
        const std::string bluray = faults::boundedRead(Family::Bluray, path);
        if (isLoop || isDirectory) {
            EXPECT_EQ(bluray, isLoop ? loop : "'" + path + "' has no BDMV directory");
        } else {  // with the text of whatever failed last
            EXPECT_EQ(bluray.rfind("cannot open '" + path + "': ", 0), 0U) << bluray;
        }
    }
    const testsupport::TemporaryFolder folder;
    const std::string sparse = folder / "disc.iso";
    testsupport::writeFile(sparse, {});
    fs::resize_file(sparse, kTiB);
    EXPECT_EQ(faults::boundedRead(Family::Dvd, sparse), "'" + sparse + "' is not a supported ISO-9660 image");
    EXPECT_EQ(faults::boundedRead(Family::Bluray, sparse),
              "'" + sparse + "' is not a supported ISO-9660 or UDF image");
    if (!HasFailure()) {
        for (const Special& special : kSpecials) {
            testsupport::recordFault("Disc: " + special.name + " in its place",
                                     "fails at once, with its message", 2);
        }
        testsupport::recordFault("Disc: a sparse file of 1 TiB in its place",
                                 "fails at once, with its message", 2);
    }
}

}  // namespace
