// Where the files of a DVD's VIDEO_TS directory come from: a directory tree copied from a disc, or an
// ISO-9660 image. A source is opened once per read of a disc and used by one thread.
#pragma once

#include "discio/disc_directory.h"
#include "discio/file_stream.h"
#include "discio/iso9660.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace discio {

struct DvdDiscSource {
    bool isImage = false;
    std::shared_ptr<ReadBudget> budget;  // null before the source is opened
    std::string videoTsPath;             // directory: the VIDEO_TS directory as found
    FileStream image;                    // image: shared by every file handed out
    std::uint32_t blockSize = 0;         // image: always 2048
    IsoExtent videoTsExtent;             // image: the VIDEO_TS directory
    DiscDirectory videoTs;               // image: its records, read once when the image is opened
};

// One file of the disc: `sizeBytes` bytes from `offset` of `stream`. In an image the stream is the image's
// own, and nothing past the file's size belongs to it.
struct DiscFileRef {
    FileStream stream;
    std::uint64_t offset = 0;
    std::uint64_t sizeBytes = 0;
};

// A file's bytes in memory. Where an image or a file ends early, `bytes` holds its beginning and `sizeBytes` stays the
// length that the directory claims.
struct DiscFileBytes {
    std::vector<std::uint8_t> bytes;
    std::uint64_t sizeBytes = 0;

    [[nodiscard]] bool isComplete() const { return bytes.size() == sizeBytes; }
};

// Opens a directory that is called VIDEO_TS (in any letter case) or holds one, or an ISO-9660 image whose
// root holds one. 0 on success; -1 with a message on failure.
//
// Deliberate: a path without any separator is always taken as a parent, so a bare "VIDEO_TS" is probed for a
// VIDEO_TS inside it; and so is a path that ends in a separator.
[[nodiscard]] int openDvdSource(const char* path, DvdDiscSource& source, const ErrorText& error);

// Opens the file `name` of VIDEO_TS. In an image letter case does not matter; in a directory the file system
// decides. 0 on success; -1 with a message when it is absent or cannot be opened.
[[nodiscard]] int openDvdFile(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                              const ErrorText& error);

// The same for a file that may be absent: 1 opened; 0 absent, without a message; -1 with a message.
[[nodiscard]] int openDvdFileOptional(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                                      const ErrorText& error);

// The same with a buffer that the caller provides.
[[nodiscard]] inline int openDvdSource(const char* path, DvdDiscSource& source, char* errorText,
                                       std::size_t errorCapacity)
{
    return openDvdSource(path, source, ErrorText(errorText, errorCapacity));
}
[[nodiscard]] inline int openDvdFile(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                                     char* errorText, std::size_t errorCapacity)
{
    return openDvdFile(source, name, ref, ErrorText(errorText, errorCapacity));
}
[[nodiscard]] inline int openDvdFileOptional(const DvdDiscSource& source, const std::string& name,
                                             DiscFileRef& ref, char* errorText, std::size_t errorCapacity)
{
    return openDvdFileOptional(source, name, ref, ErrorText(errorText, errorCapacity));
}

// Reads a file's bytes, as many as are there; none where they are more than the budget allows. Memory is taken for
// what the stream holds, never for a size that only a directory record claims.
[[nodiscard]] DiscFileBytes readDiscFile(const DiscFileRef& ref, ReadBudget& budget);

}  // namespace discio
