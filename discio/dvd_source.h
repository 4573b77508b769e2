// Reads the files of a DVD's VIDEO_TS directory from a directory tree or an ISO-9660 image. A source is opened once per
// read of a disc and used by one thread. All functions but readDiscFile() throw std::bad_alloc if memory runs out.
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
    std::string videoTsPath;             // directory: path of the VIDEO_TS directory
    FileStream image;                    // image: shared by all its DiscFileRefs
    std::uint32_t blockSize = 0;         // image: always 2048
    IsoExtent videoTsExtent;             // image: the VIDEO_TS directory
    DiscDirectory videoTs;               // image: the records of VIDEO_TS, read at opening
};

// One file of the disc: `sizeBytes` bytes from `offset` of `stream`. In an image the stream is that of the whole image.
struct DiscFileRef {
    FileStream stream;
    std::uint64_t offset = 0;
    std::uint64_t sizeBytes = 0;
};

// A file's bytes in memory. If the image or the file ends early, `bytes` holds the file's beginning, and `sizeBytes` is
// the length in its directory record.
struct DiscFileBytes {
    std::vector<std::uint8_t> bytes;
    std::uint64_t sizeBytes = 0;

    [[nodiscard]] bool isComplete() const { return bytes.size() == sizeBytes; }
};

// Opens a directory that is called VIDEO_TS (in any letter case), a directory that holds a VIDEO_TS, or an ISO-9660
// image whose root holds one. Returns 0, or -1 with a message.
//
// Deliberate: a path without a separator or with one at its end is always the parent: a bare "VIDEO_TS" must hold a
// VIDEO_TS.
[[nodiscard]] int openDvdSource(const char* path, DvdDiscSource& source, const ErrorText& error);

// Opens the file `name` of VIDEO_TS. Letter case is ignored in an image; in a directory the file system decides.
// Returns 0, or -1 with a message if the file is absent or cannot be opened.
[[nodiscard]] int openDvdFile(const DvdDiscSource& source, const std::string& name, DiscFileRef& ref,
                              const ErrorText& error);

// Opens a file that may be absent. Returns 1 if it is open, 0 without a message if it is absent, -1 with a message if
// it cannot be opened.
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

// Reads the bytes that the stream holds of a file; none if they are more than the budget allows or memory runs out. No
// more than that is allocated, whatever size the directory record claims.
[[nodiscard]] DiscFileBytes readDiscFile(const DiscFileRef& ref, ReadBudget& budget);

}  // namespace discio
