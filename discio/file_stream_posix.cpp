#include "base/native/descriptor_posix.h"
#include "discio/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

namespace discio {

struct NativeFile {
    native::Descriptor descriptor;
};

namespace {

static_assert(sizeof(off_t) == 8, "offsets in images are 64 bits wide");

PathKind kindOf(const struct stat& status)
{
    if (S_ISDIR(status.st_mode)) { return PathKind::Directory; }
    return S_ISREG(status.st_mode) ? PathKind::RegularFile : PathKind::Other;
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
    native::Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!descriptor.isOpen()) { return {nullptr, errno, errno == ENXIO, 0}; }
    struct stat status = {};
    if (::fstat(descriptor.number(), &status) != 0) { return {nullptr, errno, false, 0}; }
    switch (kindOf(status)) {
    case PathKind::RegularFile:
        break;
    case PathKind::Directory:
        return {nullptr, EISDIR, false, 0};
    default:
        return {nullptr, EINVAL, true, 0};
    }
    return {std::make_shared<NativeFile>(NativeFile{std::move(descriptor)}), 0, false,
            static_cast<std::uint64_t>(status.st_size)};
}

std::optional<std::uint64_t> streamSize(const NativeFile& file)
{
    const off_t end = ::lseek(file.descriptor.number(), 0, SEEK_END);
    if (end < 0) { return std::nullopt; }
    return static_cast<std::uint64_t>(end);
}

std::size_t readUpTo(const NativeFile& file, std::uint64_t offset, std::span<std::uint8_t> out)
{
    constexpr auto kLastOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    std::size_t count = 0;
    while (count < out.size() && offset <= kLastOffset - count) {
        const auto rest = out.subspan(count);
        const ssize_t got =
            ::pread(file.descriptor.number(), rest.data(), rest.size(), static_cast<off_t>(offset + count));
        if (got < 0 && errno == EINTR) { continue; }
        if (got <= 0) { break; }
        count += static_cast<std::size_t>(got);
    }
    return count;
}

}  // namespace discio
