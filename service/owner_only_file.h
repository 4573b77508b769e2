// Files that only their owner may read (owner_only_file_posix.cpp, owner_only_file_windows.cpp). Without Qt; the key
// store makes the messages. Paths are UTF-8 and absolute.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace service {

// The step that failed.
enum class OwnerOnlyStep {
    None,      // success
    Absent,    // there is no such file
    NotPlain,  // a link, a directory, a pipe or a device
    Read,      // opening or reading
    Write,     // creating, writing, flushing or replacing
    Owner,     // querying the owner
    Restrict   // narrowing the rights; also if the file is another user's
};

struct OwnerOnlyResult {
    OwnerOnlyStep failed = OwnerOnlyStep::None;
    std::uint32_t errorNumber = 0;  // the system's; 0 if there is none

    [[nodiscard]] bool ok() const { return failed == OwnerOnlyStep::None; }
};

// Returns whether errorNumber is a code of the Windows API; otherwise it is an errno value.
[[nodiscard]] bool usesWindowsErrorNumbers();

// Restricts an existing regular file of the user to its owner, then reads it into `content`. A file of more than
// `limit` bytes fails as Read, a file of another user as Restrict, a link as NotPlain.
[[nodiscard]] OwnerOnlyResult readOwnerOnlyFile(const std::string& path, std::size_t limit,
                                                std::string& content);

// Writes `content` to a new owner-only file in the same directory and renames it to `path`. On failure the new file is
// deleted and `path` is unchanged.
[[nodiscard]] OwnerOnlyResult replaceOwnerOnlyFile(const std::string& path, const std::string& content);

// Creates one directory for its owner alone. If the user's directory exists already, takes the right to write it from
// others, who could replace the key file. Returns false on failure.
[[nodiscard]] bool makeOwnerOnlyDirectory(const std::string& path);

// Returns whether the user owns the file, only the owner can access it, and only trusted users can write its directory.
// True also if the file does not exist.
[[nodiscard]] bool isOwnerOnly(const std::string& path);

}  // namespace service
