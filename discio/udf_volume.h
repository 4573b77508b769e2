// The volume of a UDF file system (ECMA-167): the places of its partitions in the image, and its root directory.
//
// Every descriptor begins with a tag of 16 bytes: 0 its identifier, 10 its CRC length (the bytes it describes). Numbers
// are little-endian. Checksums of tags are ignored.
//
// Anchor volume descriptor pointer, tag 2, sector 256
//    16  length of the volume descriptor sequence in bytes     20  its first sector, 3 bytes
// Partition descriptor, tag 5
//    22  partition number, 2 bytes                             188  first sector, 3 bytes
// Logical volume descriptor, tag 6 (its partition maps: udf_partition_maps.h)
//   252  logical block of the file set descriptor, 3 bytes     256  its partition reference, 1 byte
// File set descriptor, tag 256
//   404  logical block of the root's ICB, 3 bytes              408  its partition reference, 2 bytes
//
// Discs of UDF 2.50 keep their directories and file entries in a metadata partition, which consists of the blocks of a
// file in the physical partition, the metadata file. A second file entry, the mirror, has the same blocks or a copy.
#pragma once

#include "discio/disc_image.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace discio {

// A logical block of a partition.
struct UdfAddress {
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
};

// Blocks of a partition that are consecutive in the image. The default run is a whole physical partition.
struct UdfBlockRun {
    std::uint64_t firstBlock = 0;  // its number in the partition
    std::uint64_t blockCount = std::uint64_t{1} << 40U;
    std::uint64_t sector = 0;  // of the first block, relative to the partition's start sector
};

struct UdfPartition {
    std::uint32_t startSector = 0;
    // In ascending block. A metadata partition has the runs of the metadata file, relative to the start sector of the
    // physical partition. A partition that is not supported has none.
    std::vector<UdfBlockRun> runs = {UdfBlockRun()};
};

struct UdfVolume {
    std::vector<UdfPartition> partitions;  // by partition reference
    UdfAddress rootIcb;
};

// Follows the anchor to the file set descriptor. Empty if there is none.
//
// Deliberate: partition reference i is the i-th partition descriptor; the partition maps are ignored. Volumes with a
// metadata partition need findMappedUdfVolume().
[[nodiscard]] std::optional<UdfVolume> findUdfVolume(const DiscImage& image);

// Finds the file set descriptor by the partition maps of the last logical volume descriptor. A metadata partition is
// made from the metadata file, or from its mirror if the metadata file cannot be read or lacks the file set it should
// hold.
[[nodiscard]] std::optional<UdfVolume> findMappedUdfVolume(const DiscImage& image);

// Returns the byte offset of a logical block in the image; empty if there is no such partition or block.
[[nodiscard]] std::optional<std::uint64_t> udfByteOffset(const UdfVolume& volume, const UdfAddress& address);

// Appends the extents of `sizeBytes` bytes from a logical block on. Returns false if the partition lacks one of the
// blocks, or the pieces exceed the budget; `data` is then unusable.
[[nodiscard]] bool appendUdfExtent(const UdfVolume& volume, const UdfAddress& start, std::uint64_t sizeBytes,
                                   ReadBudget& budget, ExtentList& data);

}  // namespace discio
