// Where the files of a Blu-ray disc come from: a directory tree, an ISO-9660 image or a UDF image. A source
// is opened once per read of a disc and used by one thread. Paths are relative to the disc root (the
// directory that holds BDMV) and use "/"; letter case does not matter in any form.
//
// All functions throw std::bad_alloc if memory runs out: a file that was not read for want of memory must
// not pass for one that the disc lacks, which would give the disc another signature.
//
// A directory of the disc is read once, however many of its files are asked for, and once read it is
// remembered as it was. In an image a path has 1 to 64 components, and nothing is read from 2 GiB on (see
// disc_image.h).
//
// Once a bound of the source's budget is reached, nothing more is found or read. A file that is missing for that reason
// must not pass for one that the disc lacks either: whoever reads a disc asks the budget at the end.
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

// Directories by the path they were asked for; empty ones are not there.
using DirectoryCache = std::map<std::string, std::optional<DiscDirectory>, std::less<>>;

struct BlurayDiscSource {
    BluraySourceMode mode = BluraySourceMode::Directory;
    std::shared_ptr<ReadBudget> budget;  // null where the source is not open
    std::string rootPath;                // directory: the disc root as given
    DiscImage image;                     // images
    std::uint32_t blockSize = 0;         // ISO-9660: as the volume descriptor has it, unchecked
    IsoExtent isoRootExtent;             // ISO-9660
    UdfVolume udf;                       // UDF
    std::string volumeId;                // of the ISO-9660 side, without the blanks that pad it
    mutable DirectoryCache directories;
};

// Opens a directory called BDMV (in any letter case) or one that holds a BDMV, or an image. An image that is
// both ISO-9660 and UDF opens as UDF and keeps the volume identifier of the ISO-9660 side. 0 on success; -1
// with a message (empty only where the root of a directory is longer than any path may be).
//
// Deliberate: only "/" separates, a path without any is always taken as a root, so a bare "BDMV" is probed
// for a BDMV inside it; and so is a path that ends in "/".
[[nodiscard]] int openBluraySource(const char* path, BlurayDiscSource& source, const ErrorText& error);
[[nodiscard]] inline int openBluraySource(const char* path, BlurayDiscSource& source, char* errorText,
                                          std::size_t errorCapacity)
{
    return openBluraySource(path, source, ErrorText(errorText, errorCapacity));
}

// Directory mode: the real path on disk. In each component an entry of exactly the wanted case comes before
// the first one in another case. 0, or -1 where a component is missing or cannot be listed.
[[nodiscard]] int resolveDirectoryPath(const BlurayDiscSource& source, std::string_view relativePath,
                                       std::string& path);

// Image modes: where the data of a file or directory lie. 0, or -1.
[[nodiscard]] int resolveImagePath(const BlurayDiscSource& source, std::string_view relativePath,
                                   ExtentList& data, bool& isDirectory);

// Any mode: reads a file whole. 0, or -1 on any failure, which is also that the file is longer than the source's
// budget allows. Memory is taken only for bytes that are there.
[[nodiscard]] int readWholeFile(const BlurayDiscSource& source, std::string_view relativePath,
                                std::vector<std::uint8_t>& bytes);

// Any mode: a file's size without reading it; 0 where the path does not resolve or is no file.
[[nodiscard]] std::uint64_t blurayFileSize(const BlurayDiscSource& source, std::string_view relativePath);

// How a reader uses what a path of the disc leads to: it reads a file whole, asks a file's size alone, or lists a
// directory.
enum class BlurayUse { File, Size, Directory };

struct UnreadableEntry {
    Message message;            // names the file, or the directory on the way to it that cannot be read
    bool isAfterLimit = false;  // the file or directory begins after the image's first 2 GiB
};

inline constexpr char kAfterImageLimit[] = MESSAGE_NOOP(
    "Messages", "the file lies behind the image's first 2 GiB; mount the image and open the directory");

// Any mode, for a path of which the use has failed: what cannot be read there, and why. Empty where nothing is there:
// no directory lists it, or the system says that there is no such file.
[[nodiscard]] std::optional<UnreadableEntry> findUnreadable(const BlurayDiscSource& source,
                                                            std::string_view relativePath, BlurayUse use);

// Any mode: the names in a directory that end with `suffix` (in any letter case) and are longer, without it.
// In an image they are in the directory's order, and its directories are left out; in a directory tree they
// are in byte-wise order, whatever they name. 0, or -1 where the directory is not there, cannot be read or
// ends in what makes no sense.
[[nodiscard]] int listFilesWithSuffix(const BlurayDiscSource& source, std::string_view directoryPath,
                                      std::string_view suffix, std::vector<std::string>& names);

}  // namespace discio
