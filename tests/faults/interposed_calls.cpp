#include "tests/faults/interposed_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace faults {

namespace {

ReadHook readHook;
std::size_t readCount = 0;
std::string listedPath;
int namesLeft = 0;
bool isListingHit = false;

std::string pathOf(int descriptor)
{
    std::array<char, 4096> path = {};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
    return {path.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
}

}  // namespace

InterposedReads::InterposedReads(ReadHook hook)
{
    readCount = 0;
    readHook = std::move(hook);
}

InterposedReads::~InterposedReads()
{
    readHook = nullptr;
}

std::size_t InterposedReads::count()
{
    return readCount;
}

InterposedListing::InterposedListing(std::string path, int names)
{
    listedPath = std::move(path);
    namesLeft = names;
    isListingHit = false;
}

InterposedListing::~InterposedListing()
{
    listedPath.clear();
}

bool InterposedListing::isHit()
{
    return isListingHit;
}

}  // namespace faults

// Both have the name that the program's own calls are given: where offsets have 64 bits it is another than here.

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t offset)
{
    if (faults::readHook) {
        ++faults::readCount;
        faults::FileRead read = {faults::pathOf(descriptor), static_cast<std::uint64_t>(offset), size};
        const int errorNumber = faults::readHook(read);
        if (errorNumber != 0) {
            errno = errorNumber;
            return -1;
        }
        size = read.sizeBytes;
    }
    const iovec piece = {buffer, size};
    return ::preadv(descriptor, &piece, 1, offset);
}

extern "C" dirent* readdir(DIR* directory)
{
    static const auto next = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir64"));
    if (!faults::listedPath.empty() && faults::pathOf(::dirfd(directory)) == faults::listedPath &&
        faults::namesLeft-- <= 0) {
        faults::isListingHit = true;
        errno = EIO;
        return nullptr;
    }
    return next(directory);
}
