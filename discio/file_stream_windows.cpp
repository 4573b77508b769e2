// The runtime library's functions and the file functions of the "A" kind take paths in the system's code page, as
// the callers have them.
#include "discio/file_stream.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace discio {

namespace {

PathKind kindOf(const struct _stat64& status)
{
    switch (status.st_mode & _S_IFMT) {
    case _S_IFDIR:
        return PathKind::Directory;
    case _S_IFREG:
        return PathKind::RegularFile;
    default:
        return PathKind::Other;
    }
}

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

// Behind a directory's name the older runtime library takes no separator, but for a root's ("C:/").
std::string withoutTrailingSeparators(std::string path)
{
    while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != ':') {
        path.pop_back();
    }
    return path;
}

HANDLE handleOf(int descriptor)
{
    // The runtime library keeps handles as numbers: NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

void closeStream(std::FILE* stream)
{
    std::fclose(stream);  // only read from: nothing can be lost
}

}  // namespace

PathStatus queryPath(const std::string& path)
{
    const std::string name = withoutTrailingSeparators(path);
    struct _stat64 status = {};
    if (::_stat64(name.c_str(), &status) != 0) { return {PathKind::Missing, 0, errno}; }
    const PathKind kind = kindOf(status);
    if (kind != PathKind::Directory && name.size() < path.size()) { return {PathKind::Missing, 0, ENOTDIR}; }
    return {kind, static_cast<std::uint64_t>(status.st_size), 0};
}

OpenedFile openRegularFile(const std::string& path)
{
    // First the name alone: opening a directory gives "permission denied", opening a pipe connects to it.
    const PathStatus found = queryPath(path);
    switch (found.kind) {
    case PathKind::Missing:
        return {nullptr, found.errorNumber, false, 0};
    case PathKind::Directory:
        return {nullptr, EISDIR, false, 0};
    case PathKind::Other:
        return {nullptr, EINVAL, true, 0};
    case PathKind::RegularFile:
        break;
    }
    const int descriptor = ::_open(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) { return {nullptr, errno, false, 0}; }

    struct _stat64 status = {};
    std::FILE* stream = nullptr;
    int errorNumber = 0;
    bool isSpecial = false;
    if (::GetFileType(handleOf(descriptor)) != FILE_TYPE_DISK) {  // as "NUL", whose status is a file's
        errorNumber = EINVAL;
        isSpecial = true;
    } else if (::_fstat64(descriptor, &status) != 0) {
        errorNumber = errno;
    } else {
        stream = ::_fdopen(descriptor, "rb");
        if (stream == nullptr) { errorNumber = errno; }
    }
    if (stream == nullptr) {
        ::_close(descriptor);
        return {nullptr, errorNumber, isSpecial, 0};
    }
    return {FileStream(stream, closeStream), 0, false, static_cast<std::uint64_t>(status.st_size)};
}

std::optional<std::uint64_t> streamSize(std::FILE* stream)
{
    if (::_fseeki64(stream, 0, SEEK_END) != 0) { return std::nullopt; }
    const std::int64_t end = ::_ftelli64(stream);
    if (end < 0) { return std::nullopt; }
    return static_cast<std::uint64_t>(end);
}

// Deliberate: past the stream and its buffer. What is read stands anywhere in a file, so a buffer would read
// bytes that nobody asks for; this is one call to the system for each of ours.
std::size_t readUpTo(std::FILE* stream, std::uint64_t offset, std::span<std::uint8_t> out)
{
    constexpr auto kLastOffset = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    constexpr std::size_t kMaximumBytesAtOnce = std::size_t{1} << 30U;
    const HANDLE file = handleOf(::_fileno(stream));
    std::size_t count = 0;
    while (count < out.size() && offset <= kLastOffset - count) {
        const auto rest = out.subspan(count, std::min(out.size() - count, kMaximumBytesAtOnce));
        const std::uint64_t position = offset + count;
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(position & std::numeric_limits<DWORD>::max());
        at.OffsetHigh = static_cast<DWORD>(position >> 32U);
        DWORD got = 0;
        if (::ReadFile(file, rest.data(), static_cast<DWORD>(rest.size()), &got, &at) == FALSE || got == 0) {
            break;
        }
        count += got;
    }
    return count;
}

}  // namespace discio
