#include "discio/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

namespace discio {

namespace {

static_assert(sizeof(off_t) == 8, "offsets in images are 64 bits wide");

PathKind kindOf(const struct stat& status)
{
    if (S_ISDIR(status.st_mode)) { return PathKind::Directory; }
    return S_ISREG(status.st_mode) ? PathKind::RegularFile : PathKind::Other;
}

void closeStream(std::FILE* stream)
{
    std::fclose(stream);  // only read from: nothing can be lost
}

}  // namespace

PathStatus queryPath(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) { return {PathKind::Missing, 0, errno}; }
    return {kindOf(status), static_cast<std::uint64_t>(status.st_size), 0};
}

OpenedFile openRegularFile(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) { return {nullptr, errno, errno == ENXIO, 0}; }

    struct stat status = {};
    std::FILE* stream = nullptr;
    int errorNumber = 0;
    bool isSpecial = false;
    if (::fstat(descriptor, &status) != 0) {
        errorNumber = errno;
    } else if (S_ISDIR(status.st_mode)) {
        errorNumber = EISDIR;
    } else if (!S_ISREG(status.st_mode)) {
        errorNumber = EINVAL;
        isSpecial = true;
    } else {
        stream = ::fdopen(descriptor, "rb");
        if (stream == nullptr) { errorNumber = errno; }
    }
    if (stream == nullptr) {
        ::close(descriptor);
        return {nullptr, errorNumber, isSpecial, 0};
    }
    return {FileStream(stream, closeStream), 0, false, static_cast<std::uint64_t>(status.st_size)};
}

std::optional<std::uint64_t> streamSize(std::FILE* stream)
{
    if (::fseeko(stream, 0, SEEK_END) != 0) { return std::nullopt; }
    const off_t end = ::ftello(stream);
    if (end < 0) { return std::nullopt; }
    return static_cast<std::uint64_t>(end);
}

// Deliberate: past the stream and its buffer. What is read stands anywhere in a file, so a buffer would read
// bytes that nobody asks for; this is one call to the system for each of ours.
std::size_t readUpTo(std::FILE* stream, std::uint64_t offset, std::span<std::uint8_t> out)
{
    constexpr auto kLastOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    const int descriptor = ::fileno(stream);
    std::size_t count = 0;
    while (count < out.size() && offset <= kLastOffset - count) {
        const auto rest = out.subspan(count);
        const ssize_t got = ::pread(descriptor, rest.data(), rest.size(), static_cast<off_t>(offset + count));
        if (got < 0 && errno == EINTR) { continue; }
        if (got <= 0) { break; }
        count += static_cast<std::size_t>(got);
    }
    return count;
}

}  // namespace discio
