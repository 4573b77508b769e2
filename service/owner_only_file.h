// Files that only their owner may read, by the system's own means (owner_only_file_posix.cpp,
// owner_only_file_windows.cpp). Native calls and standard types only: the key store words the failures. Paths
// are UTF-8 and absolute.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace service {

// Which act failed, and the system's error number.
enum class OwnerOnlyStep {
    None,      // success
    Absent,    // there is no such file
    NotPlain,  // a link, a directory, a pipe or a device
    Read,      // opening or reading
    Write,     // creating, writing, flushing or replacing
    Owner,     // finding out who owns the file
    Restrict   // narrowing the rights
};

struct OwnerOnlyResult {
    OwnerOnlyStep failed = OwnerOnlyStep::None;
    std::uint32_t errorNumber = 0;

    [[nodiscard]] bool ok() const { return failed == OwnerOnlyStep::None; }
};

// Whether errorNumber holds codes of the Windows API; errno values otherwise.
[[nodiscard]] bool usesWindowsErrorNumbers();

// Narrows an existing regular file of the user's own to its owner, then reads it, at most `limit` bytes (a
// longer file fails as Read). Links are not followed. A file of another user fails as Restrict.
[[nodiscard]] OwnerOnlyResult readOwnerOnlyFile(const std::string& path, std::size_t limit,
                                                std::string& content);

// Writes `content` to a new owner-only file beside `path` and lets it replace `path`. On failure the new file
// is deleted and whatever stood at `path` is as it was.
[[nodiscard]] OwnerOnlyResult replaceOwnerOnlyFile(const std::string& path, const std::string& content);

// Creates one directory for its owner alone. From an existing one of the user's own, the right of others to
// write is taken away: they could put another file in the key's place.
[[nodiscard]] bool makeOwnerOnlyDirectory(const std::string& path);

// Whether nobody but the owner can access the file, the owner is the user, and nobody else can write its
// directory. True also when there is no such file.
[[nodiscard]] bool isOwnerOnly(const std::string& path);

}  // namespace service
