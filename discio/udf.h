// The part of UDF (ECMA-167) that finding files in a Blu-ray image needs: sectors of 2,048 bytes and 8-bit names,
// in partitions as they lie in the image and, from UDF 2.50 on, in a metadata partition.
//
// File entry, tag 261; extended file entry, tag 266 (in brackets)
//    27  file type, 4: directory                     168 (208)  length of the extended attributes, 4 bytes
//    34  bits 0 to 2: kind of its descriptors        172 (212)  length of the allocation descriptors, 4 bytes
//    56  information length, 8 bytes                 176 (216)  extended attributes, then the
//                                                               allocation descriptors
// Allocation descriptor, short (kind 0, 8 bytes) or long (kind 1, 16 bytes);
// kind 3: the data stand in their place
//     0  length in the low 30 bits, above them how it is recorded, 0: with data
//     4  logical block                               8  long: partition reference, 2 bytes
//
// File identifier descriptor, tag 257, one for each name of a directory
//    18  characteristics, 0x02: a directory          28  partition reference of the ICB, 2 bytes
//    19  length of the identifier                    36  length of the implementation use, 2 bytes
//    24  logical block of the ICB, 4 bytes           38  implementation use, then the identifier
// The identifier's first byte tells its characters: 8 for 8-bit ones, 16 for 16-bit ones.
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
    ExtentList data;  // exactly the information length
};

// The file entry of either kind at `icb`. Empty where it cannot be read, its extents do not cover exactly the
// information length, or its descriptors and extents are more than the image's budget allows.
//
// Deliberate: descriptors that continue elsewhere are not followed, so such a file is not readable.
[[nodiscard]] std::optional<UdfFileEntry> readUdfFileEntry(const DiscImage& image, const UdfVolume& volume,
                                                           const UdfAddress& icb);

// The blocks of the metadata file, or of its mirror, whose file entry is in this block of the partition that begins in
// `startSector`. An extent counts by its whole blocks. One that is not recorded has a place among them and no data;
// such blocks belong to no run. Empty where the entry cannot be read, has other descriptors than short ones, or where
// they hold less than the information length. Whether the image holds the blocks is seen when they are read.
[[nodiscard]] std::vector<UdfBlockRun> readUdfMetadataFile(const DiscImage& image, std::uint32_t startSector,
                                                           std::uint32_t block);

// The names in a directory's data, each up to its first NUL, up to the first descriptor that makes no sense; the
// directory is listable when they end where the data end. Left out are names of 16-bit characters and the parent's entry, which has
// none.
//
// Deliberate: an entry marked as deleted is an entry like any other.
[[nodiscard]] DiscDirectory parseUdfDirectory(std::span<const std::uint8_t> data);

// The same for the directory with the given ICB: empty where that is no directory with a readable file entry,
// and without names where the data cannot be read.
[[nodiscard]] std::optional<DiscDirectory> readUdfDirectory(const DiscImage& image, const UdfVolume& volume,
                                                            const UdfAddress& icb);

}  // namespace discio
