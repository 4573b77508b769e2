// Opens, measures and reads files of the host system with 64-bit offsets (file_stream_posix.cpp,
// file_stream_windows.cpp). Only regular files are opened, and without blocking: a FIFO or a device in place of a disc
// file must not hang the reader. Paths are in the system's 8-bit encoding (Windows: the process's code page, as in a
// directory's listing).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace discio {

// A file that is open for reading, by its number in the C library.
struct NativeFile;

// Shared, because the files of an image all read through the image's one file. The last copy closes it. Reads take an
// offset, so copies do not disturb each other.
using FileStream = std::shared_ptr<const NativeFile>;

enum class PathKind { Missing, Directory, RegularFile, Other };

struct PathStatus {
    PathKind kind = PathKind::Missing;
    std::uint64_t sizeBytes = 0;  // of a regular file
    int errorNumber = 0;          // Missing: why the query failed
};

// Queries a path. Follows links.
[[nodiscard]] PathStatus queryPath(const std::string& path);

struct OpenedFile {
    FileStream stream;            // null on failure
    int errorNumber = 0;          // why opening failed; EISDIR for a directory
    bool isSpecial = false;       // opening failed because the path is a FIFO, a socket or a device
    std::uint64_t sizeBytes = 0;  // the file's length when it was opened
};

// Opens a regular file for reading.
[[nodiscard]] OpenedFile openRegularFile(const std::string& path);

// Returns the file's present length, which is found by seeking to its end.
[[nodiscard]] std::optional<std::uint64_t> streamSize(const NativeFile& file);

// Reads at `offset` until `out` is full or the file ends, and returns the number of bytes read. A failed read counts as
// the end.
[[nodiscard]] std::size_t readUpTo(const NativeFile& file, std::uint64_t offset, std::span<std::uint8_t> out);

// Reads all of `out` at `offset`; false if fewer bytes could be read.
[[nodiscard]] inline bool readExactly(const NativeFile& file, std::uint64_t offset,
                                      std::span<std::uint8_t> out)
{
    return readUpTo(file, offset, out) == out.size();
}

}  // namespace discio
