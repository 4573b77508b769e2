// The part of UDF (ECMA-167) that finding files in a Blu-ray image needs: sectors of 2,048 bytes, partitions
// as they lie in the image, 8-bit names. Numbers are little-endian; checksums of descriptor tags are not
// looked at.
//
// Every descriptor begins with a tag of 16 bytes: 0 its identifier, 10 its CRC length (the bytes
// it describes).
//
// Anchor volume descriptor pointer, tag 2, sector 256
//    16  length of the volume descriptor sequence in bytes     20  its first sector, 3 bytes
// Partition descriptor, tag 5                                  188  first sector, 3 bytes
// Logical volume descriptor, tag 6
//   252  logical block of the file set descriptor, 3 bytes     256  its partition reference, 1 byte
// File set descriptor, tag 256
//   404  logical block of the root's ICB, 3 bytes              408  its partition reference, 2 bytes
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

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace discio {

inline constexpr std::size_t kUdfSectorSize = 2048;
inline constexpr std::size_t kUdfPartitionLimit = 16;
inline constexpr std::uint32_t kUdfDescriptorAreaLimit = 1U << 20U;  // of one file's allocation descriptors

// Deliberate: a longer directory is not read. It would hold more than 400,000 names, and its extents may lie
// over each other in the image.
inline constexpr std::uint64_t kUdfDirectoryLimit = 16U << 20U;

// Deliberate: no more of the volume descriptor sequence is searched. Discs have 16 sectors of it; an anchor can claim
// two million.
inline constexpr std::uint64_t kUdfSequenceLimit = 1U << 20U;

// A logical block of a partition: where an ICB or an extent is.
struct UdfAddress {
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
};

struct UdfPartition {
    std::uint32_t startSector = 0;
};

struct UdfVolume {
    std::vector<UdfPartition>
        partitions;  // in the order of their descriptors; a partition reference is an index
    UdfAddress rootIcb;
};

struct UdfFileEntry {
    bool isDirectory = false;
    ExtentList data;  // exactly the information length
};

// Follows the anchor to the file set descriptor. Empty where there is none.
[[nodiscard]] std::optional<UdfVolume> findUdfVolume(const DiscImage& image);

// Where a logical block lies in the image; empty without such a partition. Everything that UDF keeps in
// partitions is found through this function.
[[nodiscard]] std::optional<std::uint64_t> udfByteOffset(const UdfVolume& volume, const UdfAddress& address);

// The file entry of either kind at `icb`. Empty where it cannot be read or its extents do not cover exactly
// the information length.
//
// Deliberate: descriptors that continue elsewhere are not followed, so such a file is not readable.
[[nodiscard]] std::optional<UdfFileEntry> readUdfFileEntry(const DiscImage& image, const UdfVolume& volume,
                                                           const UdfAddress& icb);

// The names in a directory's data, up to the first descriptor that makes no sense; the directory is listable
// when they end where the data end. Left out are names of 16-bit characters and the parent's entry, which has
// none.
//
// Deliberate: an entry marked as deleted is an entry like any other.
[[nodiscard]] DiscDirectory parseUdfDirectory(std::span<const std::uint8_t> data);

// The same for the directory with the given ICB: empty where that is no directory with a readable file entry,
// and without names where the data cannot be read.
[[nodiscard]] std::optional<DiscDirectory> readUdfDirectory(const DiscImage& image, const UdfVolume& volume,
                                                            const UdfAddress& icb);

}  // namespace discio
