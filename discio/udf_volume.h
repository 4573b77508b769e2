// The volume of a UDF file system (ECMA-167): where its partitions lie in the image, and its root directory.
//
// Every descriptor begins with a tag of 16 bytes: 0 its identifier, 10 its CRC length (the bytes
// it describes). Numbers are little-endian; checksums of descriptor tags are not looked at.
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
// Discs of UDF 2.50 keep their directories and file entries in a metadata partition: the blocks of a file, the
// metadata file, that lies in the real partition. A second file entry, the mirror, leads to the same blocks or to
// a copy of them.
#pragma once

#include "discio/disc_image.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace discio {

// A logical block of a partition: where an ICB or an extent is.
struct UdfAddress {
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
};

// Blocks of a partition that lie one behind the other in the image. Without values: all there can be, in place.
struct UdfBlockRun {
    std::uint64_t firstBlock = 0;  // as the partition counts
    std::uint64_t blockCount = std::uint64_t{1} << 40U;
    std::uint64_t sector = 0;  // of the first block, counted from the partition's start sector
};

struct UdfPartition {
    std::uint32_t startSector = 0;
    // In the order of their blocks. A metadata partition has those of the metadata file, counted in the partition
    // where that lies; one that is not followed has none.
    std::vector<UdfBlockRun> runs = {UdfBlockRun()};
};

struct UdfVolume {
    std::vector<UdfPartition> partitions;  // a partition reference is an index
    UdfAddress rootIcb;
};

// Follows the anchor to the file set descriptor. Empty where there is none.
//
// Deliberate: a partition reference counts the partition descriptors in their order, whatever the partition maps say,
// so volumes with a metadata partition are left to findMappedUdfVolume.
[[nodiscard]] std::optional<UdfVolume> findUdfVolume(const DiscImage& image);

// The same by the partition maps of the last logical volume descriptor. Whether a metadata partition is that of the
// metadata file or of its mirror is decided here: the mirror where the first cannot be read, or where the file set
// should be in it and is not.
[[nodiscard]] std::optional<UdfVolume> findMappedUdfVolume(const DiscImage& image);

// Where a logical block lies in the image; empty without such a partition or block. Everything that UDF keeps in
// partitions is found through this function and the next.
[[nodiscard]] std::optional<std::uint64_t> udfByteOffset(const UdfVolume& volume, const UdfAddress& address);

// Adds where the `sizeBytes` lie that begin with a logical block. False where not all of its blocks are there, or
// where they are in more pieces than the budget allows; what was added then is of no use.
[[nodiscard]] bool appendUdfExtent(const UdfVolume& volume, const UdfAddress& start, std::uint64_t sizeBytes,
                                   ReadBudget& budget, ExtentList& data);

}  // namespace discio
