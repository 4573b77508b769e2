// Discs whose reads and listings fail, and discs that shrink or go away while they are read. The test answers the
// program's system calls in the system's place.
#include "tests/faults/small_disc.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

using namespace faults;
using namespace testsupport;
namespace fs = std::filesystem;

namespace {

// Called at each read: returns the error number with which it fails, or 0. The size may be reduced.
std::function<int(const std::string& path, std::size_t& sizeBytes)> onRead;
std::size_t reads = 0;  // since there is such a function
std::string failingDirectory;
int namesLeft = 0;  // before the failure, "." and ".." among them; below 0: it has failed

std::string pathOf(int descriptor)
{
    return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
}

}  // namespace

// The program's own calls lead here: both are compiled with offsets of 64 bits, so the headers give them the same names.

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t offset)
{
    if (onRead) {
        ++reads;
        errno = onRead(pathOf(descriptor), size);
        if (errno != 0) { return -1; }
    }
    const iovec piece = {buffer, size};
    return ::preadv(descriptor, &piece, 1, offset);
}

extern "C" dirent* readdir(DIR* directory)
{
    static const auto next = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir64"));
    if (failingDirectory.empty() || pathOf(::dirfd(directory)) != failingDirectory || namesLeft-- > 0) {
        return next(directory);
    }
    errno = EIO;
    return nullptr;
}

namespace {

constexpr std::pair<Family, DiscForm> kForms[] = {
    {Family::Dvd, DiscForm::Directory},    {Family::Dvd, DiscForm::Iso},
    {Family::Bluray, DiscForm::Directory}, {Family::Bluray, DiscForm::Iso},
    {Family::Bluray, DiscForm::Udf},       {Family::Bluray, DiscForm::Udf250}};

// What reading the small disc gives under the function; no descriptor may be left open.
std::string readUnder(Family family, DiscForm form, decltype(onRead) hook)
{
    const auto descriptors = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
    const auto before = descriptors();
    const TemporaryFolder folder;
    const std::string disc = treeOf(family).write(form, folder);
    reads = 0;
    onRead = std::move(hook);
    std::string text = readDisc(family, disc);
    onRead = nullptr;
    EXPECT_EQ(descriptors(), before) << "left open";
    return text;
}

TEST(ReadFaults, ShortAndInterruptedReadsAreRepeated)
{
    for (const auto& [family, form] : kForms) {
        EXPECT_EQ(wholeDisc(family),
                  readUnder(family, form, [](auto&, auto& size) { return (size = 1) == 0; }));
        EXPECT_GT(reads, 1000U);
        EXPECT_EQ(wholeDisc(family),
                  readUnder(family, form, [](auto&, auto&) { return reads % 2 == 1 ? EINTR : 0; }));
    }
}

enum class Fault { ReadsFail, RestFails, FileIsEmptied, DiscIsRemoved };

TEST(ReadFaults, OfEveryKindAtEveryRead)
{
    for (const auto& [family, form] : kForms) {
        const std::string whole = readUnder(family, form, [](auto&, auto&) { return 0; });
        EXPECT_EQ(whole, wholeDisc(family));
        const bool isImage = form != DiscForm::Directory;
        for (std::size_t n = 1, last = reads; n <= last; ++n) {
            for (const Fault fault :
                 {Fault::ReadsFail, Fault::RestFails, Fault::FileIsEmptied, Fault::DiscIsRemoved}) {
                const std::string text = readUnder(family, form, [&](auto& path, auto& size) {
                    if (reads == n && fault == Fault::RestFails) { size = (size + 1) / 2; }
                    if (reads == n && fault == Fault::FileIsEmptied) { fs::resize_file(path, 0); }
                    if (reads == n && fault == Fault::DiscIsRemoved) {
                        fs::remove_all(isImage ? path : path.substr(0, path.find("/disc/") + 5));
                    }
                    return (fault == Fault::ReadsFail && reads >= n) ||
                                   (fault == Fault::RestFails && reads == n + 1)
                               ? EIO
                               : 0;
                });
                // A file that is open can be read whatever becomes of its name. The label of a DVD's volume, the last
                // that is read of an image, is not missed. The rest of a block may hold nothing of use.
                const bool isUnharmed = fault == Fault::RestFails ? isWhole(text)
                                        : fault == Fault::DiscIsRemoved
                                            ? isImage || n == last
                                            : isImage && family == Family::Dvd && n == last;
                EXPECT_TRUE(isUnharmed ? text == whole : isRefusalOrWarning(text))
                    << "fault " << static_cast<int>(fault) << " at read " << n << " of " << last << ": "
                    << text;
            }
        }
    }
}

TEST(ReadFaults, ADirectoryWhoseListingFailsHalfWay)
{
    for (const char* name : {"disc", "disc/BDMV", "disc/BDMV/PLAYLIST", "disc/BDMV/CLIPINF",
                             "disc/BDMV/STREAM", "disc/CERTIFICATE"}) {
        for (const int names : {0, 2, 3}) {
            const TemporaryFolder folder;
            const std::string disc = treeOf(Family::Bluray).write(DiscForm::Directory, folder);
            namesLeft = names;
            failingDirectory = folder / name;
            EXPECT_PRED1(isRefusalOrWarning, readDisc(Family::Bluray, disc));
            failingDirectory.clear();
            EXPECT_LT(namesLeft, 0) << name;
        }
    }
}

}  // namespace
