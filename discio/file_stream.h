// Opening, measuring and reading files of the host system with 64-bit offsets, by the system's own means
// (file_stream_posix.cpp, file_stream_windows.cpp). Files are opened without blocking and must be regular: a
// FIFO or a device in place of a disc file must not hang the reader. Paths are in the system's 8-bit encoding
// (Windows: the process's code page, as in a directory's listing).
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace discio {

// Shared, since the files handed out from an image all read through the image's one stream. Whoever holds a
// copy keeps it open; the last one closes it. Every read positions the stream itself.
using FileStream = std::shared_ptr<std::FILE>;

enum class PathKind { Missing, Directory, RegularFile, Other };

struct PathStatus {
    PathKind kind = PathKind::Missing;
    std::uint64_t sizeBytes = 0;  // of a regular file
    int errorNumber = 0;          // when Missing: why the query failed
};

// Links are followed.
[[nodiscard]] PathStatus queryPath(const std::string& path);

struct OpenedFile {
    FileStream stream;            // null on failure
    int errorNumber = 0;          // why opening failed; a directory gives the system's number for one
    bool isSpecial = false;       // failed because it is a FIFO, a socket or a device
    std::uint64_t sizeBytes = 0;  // its length when it was opened
};

// Opens a regular file for binary reading.
[[nodiscard]] OpenedFile openRegularFile(const std::string& path);

// The file's length, by seeking to its end.
[[nodiscard]] std::optional<std::uint64_t> streamSize(std::FILE* stream);

// Reads at `offset` until `out` is full or the file ends; the count of bytes read. A failed seek or read
// counts as the end.
[[nodiscard]] std::size_t readUpTo(std::FILE* stream, std::uint64_t offset, std::span<std::uint8_t> out);

// Whether all of `out` could be read at `offset`.
[[nodiscard]] inline bool readExactly(std::FILE* stream, std::uint64_t offset, std::span<std::uint8_t> out)
{
    return readUpTo(stream, offset, out) == out.size();
}

}  // namespace discio
