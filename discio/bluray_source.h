// Reads the files of a Blu-ray disc from a directory tree, an ISO-9660 image or a UDF image. A source is opened once
// per read of a disc and used by one thread. Paths are relative to the disc root (the directory that holds BDMV) and
// use "/"; letter case is ignored in all three.
//
// All functions throw std::bad_alloc if memory runs out. If they returned -1, an optional file would count as absent,
// and the disc would get another signature. For the same reason the reader of a disc checks budget->reached() at the
// end: after a bound is reached, every function fails.
//
// Each directory of the disc is read once and then kept. In an image a path has 1 to 64 components, and no read begins
// at 2 GiB or later (disc_image.h).
#pragma once

#include "discio/disc_directory.h"
#include "discio/disc_image.h"
#include "discio/error_text.h"
#include "discio/iso9660.h"
#include "discio/udf.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

enum class BluraySourceMode : std::uint32_t { Directory = 0, Iso = 1, Udf = 2 };

// Directories by path; a directory that is missing or unreadable has no value.
using DirectoryCache = std::map<std::string, std::optional<DiscDirectory>, std::less<>>;

struct BlurayDiscSource {
    BluraySourceMode mode = BluraySourceMode::Directory;
    std::shared_ptr<ReadBudget> budget;  // null if the source is not open
    std::string rootPath;                // directory: the disc root as given
    DiscImage image;                     // images
    std::uint32_t blockSize = 0;         // ISO-9660: as the volume descriptor has it, unchecked
    IsoExtent isoRootExtent;             // ISO-9660
    UdfVolume udf;                       // UDF
    std::string volumeId;                // of the ISO-9660 side, without the blanks that pad it
    mutable DirectoryCache directories;
};

// Opens a directory called BDMV (in any letter case), a directory that holds a BDMV, or an image. An image that is both
// ISO-9660 and UDF opens as UDF and keeps the volume identifier of the ISO-9660 side. Returns 0, or -1 with a message;
// the message is empty only if the path of the disc root has 4,096 bytes or more.
//
// Deliberate: only "/" separates components. A path without "/" or with "/" at its end is always a disc root: a bare
// "BDMV" must hold a BDMV.
[[nodiscard]] int openBluraySource(const char* path, BlurayDiscSource& source, const ErrorText& error);
[[nodiscard]] inline int openBluraySource(const char* path, BlurayDiscSource& source, char* errorText,
                                          std::size_t errorCapacity)
{
    return openBluraySource(path, source, ErrorText(errorText, errorCapacity));
}

// Directory mode: sets `path` to the real path on disk. An entry in the wanted letter case is preferred to the first in
// another case. Returns 0, or -1 if a component is missing or cannot be listed.
[[nodiscard]] int resolveDirectoryPath(const BlurayDiscSource& source, std::string_view relativePath,
                                       std::string& path);

// Image modes: finds the extents of a file or directory in the image. Returns 0, or -1 if the path is missing or its
// file entry cannot be read.
[[nodiscard]] int resolveImagePath(const BlurayDiscSource& source, std::string_view relativePath,
                                   ExtentList& data, bool& isDirectory);

// Any mode: reads a whole file. Returns 0, or -1 on any failure, also if the file is longer than the source's budget
// allows. Allocates no more than the file or the image holds.
[[nodiscard]] int readWholeFile(const BlurayDiscSource& source, std::string_view relativePath,
                                std::vector<std::uint8_t>& bytes);

// Any mode: returns a file's size without reading it; 0 if the path is missing or not a file.
[[nodiscard]] std::uint64_t blurayFileSize(const BlurayDiscSource& source, std::string_view relativePath);

// The use of a path that failed: reading the whole file, taking the file's size, or listing the directory.
enum class BlurayUse { File, Size, Directory };

struct UnreadableEntry {
    Message message;             // names the file, or the parent directory that cannot be read
    bool isBeyondLimit = false;  // the file or directory begins after the image's first 2 GiB
};

inline constexpr char kBeyondImageLimit[] = MESSAGE_NOOP(
    "Messages", "the file lies behind the image's first 2 GiB; mount the image and open the directory");

// Any mode: returns what cannot be read of a path whose use has failed, and why. Empty if the path is absent: no
// directory lists it, or the system reports that there is no such file.
[[nodiscard]] std::optional<UnreadableEntry> findUnreadable(const BlurayDiscSource& source,
                                                            std::string_view relativePath, BlurayUse use);

// Any mode: sets `names` to the names in a directory that end with `suffix` (in any letter case) and are longer than
// it, without the suffix. In an image they have the directory's order, without subdirectories; in a directory tree they
// have byte-wise order and include subdirectories. Returns 0, or -1 if the directory is missing, unreadable or contains
// a malformed record.
[[nodiscard]] int listFilesWithSuffix(const BlurayDiscSource& source, std::string_view directoryPath,
                                      std::string_view suffix, std::vector<std::string>& names);

}  // namespace discio
