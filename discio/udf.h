// The part of UDF (ECMA-167) that is needed to find files in a Blu-ray image: sectors of 2,048 bytes and 8-bit names,
// in physical partitions and, from UDF 2.50 on, in a metadata partition.
//
// File entry, tag 261; extended file entry, tag 266 (in brackets)
//    27  file type, 4: directory                     168 (208)  length of the extended attributes, 4 bytes
//    34  bits 0 to 2: kind of its descriptors        172 (212)  length of the allocation descriptors, 4 bytes
//    56  information length, 8 bytes                 176 (216)  extended attributes, then the
//                                                               allocation descriptors
// Allocation descriptor, short (kind 0, 8 bytes) or long (kind 1, 16 bytes);
// kind 3: none, the area holds the file's data
//     0  length in the low 30 bits; high 2 bits: type, 0: recorded
//     4  logical block                               8  long: partition reference, 2 bytes
//
// File identifier descriptor, tag 257, one for each name of a directory
//    18  characteristics, 0x02: a directory          28  partition reference of the ICB, 2 bytes
//    19  length of the identifier                    36  length of the implementation use, 2 bytes
//    24  logical block of the ICB, 4 bytes           38  implementation use, then the identifier
// The identifier's first byte is the size of its characters in bits, 8 or 16.
#pragma once

#include "discio/disc_directory.h"
#include "discio/disc_image.h"
#include "discio/udf_volume.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace discio {

inline constexpr std::uint32_t kUdfDescriptorAreaLimit = 1U << 20U;  // of one file's allocation descriptors

struct UdfFileEntry {
    bool isDirectory = false;
    ExtentList data;  // as long as the information length
};

// Reads the file entry of either kind at `icb`. Empty if it cannot be read, its extents are shorter than the
// information length, or its descriptors and extents exceed the image's budget.
//
// Deliberate: allocation descriptors that continue in another extent are not followed; such a file is not readable.
[[nodiscard]] std::optional<UdfFileEntry> readUdfFileEntry(const DiscImage& image, const UdfVolume& volume,
                                                           const UdfAddress& icb);

// Returns the runs of blocks of the metadata file, or of its mirror. `block` holds its file entry, in the partition
// that begins at `startSector`. Only whole blocks of an extent count. Blocks of an extent that is not recorded are
// numbered, but belong to no run. Empty if the entry cannot be read, its descriptors are not short ones, or they are
// shorter than the information length. The image may lack the blocks; reading them fails then.
[[nodiscard]] std::vector<UdfBlockRun> readUdfMetadataFile(const DiscImage& image, std::uint32_t startSector,
                                                           std::uint32_t block);

// Parses a directory's data up to the first malformed descriptor. Each name ends at its first NUL. Names of 16-bit
// characters, and the parent's entry, which has no name, are left out. The directory is listable if the descriptors end
// exactly where the data end.
//
// Deliberate: an entry that is marked as deleted counts like any other.
[[nodiscard]] DiscDirectory parseUdfDirectory(std::span<const std::uint8_t> data);

// Reads and parses the directory with the given ICB. Empty if its file entry is unreadable or not a directory's;
// without names and not listable if its data cannot be read.
[[nodiscard]] std::optional<DiscDirectory> readUdfDirectory(const DiscImage& image, const UdfVolume& volume,
                                                            const UdfAddress& icb);

}  // namespace discio
