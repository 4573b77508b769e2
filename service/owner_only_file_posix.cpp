#include "base/native/descriptor_posix.h"
#include "service/owner_only_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace service {

namespace {

constexpr mode_t kOwnerOnlyFile = 0600;
constexpr mode_t kOwnerOnlyDirectory = 0700;
constexpr mode_t kRights = 07777;
constexpr mode_t kOthersAccess = 0077;
constexpr mode_t kOthersWrite = 0022;

OwnerOnlyResult failure(OwnerOnlyStep step, int number)
{
    return {.failed = step, .errorNumber = static_cast<std::uint32_t>(number)};
}

bool isAbsence(int number)
{
    return number == ENOENT || number == ENOTDIR;
}

bool isPlainFileOfUser(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

bool isOwnerOnlyFileOfUser(const struct stat& status)
{
    return isPlainFileOfUser(status) && (status.st_mode & kOthersAccess) == 0;
}

// Works on the name, not on an open file: a file whose rights exclude even its owner cannot be opened yet.
OwnerOnlyResult narrow(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) {
        return failure(isAbsence(errno) ? OwnerOnlyStep::Absent : OwnerOnlyStep::Owner, errno);
    }
    if (!S_ISREG(status.st_mode)) { return failure(OwnerOnlyStep::NotPlain, 0); }
    if (!isPlainFileOfUser(status)) { return failure(OwnerOnlyStep::Restrict, EPERM); }
    if ((status.st_mode & kRights) == kOwnerOnlyFile) { return {}; }  // a read-only file system would refuse
    if (::fchmodat(AT_FDCWD, path.c_str(), kOwnerOnlyFile, AT_SYMLINK_NOFOLLOW) != 0) {
        return failure(OwnerOnlyStep::Restrict, errno);
    }
    return {};
}

bool readAtMost(const native::Descriptor& file, std::size_t limit, std::string& content)
{
    char chunk[4096];
    for (;;) {
        const ssize_t count = ::read(file.number(), chunk, sizeof chunk);
        if (count == 0) { return true; }
        if (count < 0) {
            if (errno == EINTR) { continue; }
            return false;
        }
        if (static_cast<std::size_t>(count) > limit - content.size()) {
            errno = EFBIG;
            return false;
        }
        content.append(chunk, static_cast<std::size_t>(count));
    }
}

bool writeAll(const native::Descriptor& file, const std::string& content)
{
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = ::write(file.number(), content.data() + written, content.size() - written);
        if (count < 0 && errno != EINTR) { return false; }
        if (count > 0) { written += static_cast<std::size_t>(count); }
    }
    return ::fsync(file.number()) == 0;
}

std::string parentDirectory(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

bool usesWindowsErrorNumbers()
{
    return false;
}

OwnerOnlyResult readOwnerOnlyFile(const std::string& path, std::size_t limit, std::string& content)
{
    content.clear();
    const OwnerOnlyResult narrowed = narrow(path);
    if (!narrowed.ok()) { return narrowed; }
    // Another file can have taken the name since: opening a pipe must not wait for its writer.
    const native::Descriptor file(
        ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) { return failure(OwnerOnlyStep::Read, errno); }
    struct stat status = {};
    if (::fstat(file.number(), &status) != 0) { return failure(OwnerOnlyStep::Owner, errno); }
    if (!isOwnerOnlyFileOfUser(status)) { return failure(OwnerOnlyStep::Restrict, EPERM); }
    if (!readAtMost(file, limit, content)) {
        content.clear();
        return failure(OwnerOnlyStep::Read, errno);
    }
    return {};
}

OwnerOnlyResult replaceOwnerOnlyFile(const std::string& path, const std::string& content)
{
    std::string temporary = path + ".XXXXXX";
    const native::Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen()) { return failure(OwnerOnlyStep::Write, errno); }
    OwnerOnlyResult result;
    if (::fchmod(file.number(), kOwnerOnlyFile) != 0) {
        result = failure(OwnerOnlyStep::Restrict, errno);
    } else if (!writeAll(file, content) || std::rename(temporary.c_str(), path.c_str()) != 0) {
        result = failure(OwnerOnlyStep::Write, errno);
    }
    if (!result.ok()) { ::unlink(temporary.c_str()); }
    return result;
}

bool makeOwnerOnlyDirectory(const std::string& path)
{
    if (::mkdir(path.c_str(), kOwnerOnlyDirectory) == 0) { return true; }
    struct stat status = {};
    if (errno != EEXIST || ::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) { return false; }
    if (status.st_uid == ::geteuid() && (status.st_mode & kOthersWrite) != 0) {
        return ::chmod(path.c_str(), status.st_mode & 07777U & ~kOthersWrite) == 0;
    }
    return true;
}

bool isOwnerOnly(const std::string& path)
{
    struct stat file = {};
    if (::lstat(path.c_str(), &file) != 0) { return isAbsence(errno); }
    struct stat directory = {};
    if (::stat(parentDirectory(path).c_str(), &directory) != 0) { return false; }
    const bool isTrustedDirectory = directory.st_uid == ::geteuid() || directory.st_uid == 0;
    return isOwnerOnlyFileOfUser(file) && isTrustedDirectory && (directory.st_mode & kOthersWrite) == 0;
}

}  // namespace service
