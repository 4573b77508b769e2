// Paths are in the system's code page, as the runtime library's functions and the API's "A" functions take them. Files
// are opened by the runtime library, because its errno values are part of the messages.
#include "discio/file_stream.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

namespace discio {

struct NativeFile {
    NativeFile() = default;
    ~NativeFile()
    {
        if (descriptor >= 0) { ::_close(descriptor); }
    }
    NativeFile(const NativeFile&) = delete;
    NativeFile& operator=(const NativeFile&) = delete;

    int descriptor = -1;
};

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

// The older runtime library takes no separator after a directory's name, except a root's ("C:/").
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
    // The path is queried first: opening a directory gives "permission denied", opening a pipe connects to it.
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
    auto file = std::make_shared<NativeFile>();
    file->descriptor = ::_open(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
    if (file->descriptor < 0) { return {nullptr, errno, false, 0}; }
    // The status of "NUL" is that of a regular file.
    if (::GetFileType(handleOf(file->descriptor)) != FILE_TYPE_DISK) { return {nullptr, EINVAL, true, 0}; }
    struct _stat64 status = {};
    if (::_fstat64(file->descriptor, &status) != 0) { return {nullptr, errno, false, 0}; }
    return {std::move(file), 0, false, static_cast<std::uint64_t>(status.st_size)};
}

std::optional<std::uint64_t> streamSize(const NativeFile& file)
{
    const std::int64_t end = ::_lseeki64(file.descriptor, 0, SEEK_END);
    if (end < 0) { return std::nullopt; }
    return static_cast<std::uint64_t>(end);
}

std::size_t readUpTo(const NativeFile& file, std::uint64_t offset, std::span<std::uint8_t> out)
{
    constexpr auto kLastOffset = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    constexpr std::size_t kMaximumBytesAtOnce = std::size_t{1} << 30U;
    const HANDLE handle = handleOf(file.descriptor);
    std::size_t count = 0;
    while (count < out.size() && offset <= kLastOffset - count) {
        const auto rest = out.subspan(count, std::min(out.size() - count, kMaximumBytesAtOnce));
        const std::uint64_t position = offset + count;
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(position & std::numeric_limits<DWORD>::max());
        at.OffsetHigh = static_cast<DWORD>(position >> 32U);
        DWORD got = 0;
        if (::ReadFile(handle, rest.data(), static_cast<DWORD>(rest.size()), &got, &at) == FALSE ||
            got == 0) {
            break;
        }
        count += got;
    }
    return count;
}

}  // namespace discio
