// The partition maps of a UDF logical volume (ECMA-167 and UDF 2.50). Map i is the partition that other descriptors
// name by the partition reference i.
//
// Logical volume descriptor, tag 6
//   268  number of partition maps, 4 bytes       440  the maps, in sequence
// Partition map
//     0  type     1  length of the map
//   type 1: a physical partition
//     4  partition number, 2 bytes
//   type 2: a partition of the kind that its identifier names
//     5  identifier, 23 bytes                     38  partition number, 2 bytes
//   type 2 with the identifier "*UDF Metadata Partition"
//    40  logical block of the metadata file's     44  of the metadata mirror file's entry, 4 bytes
//        entry, 4 bytes
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace discio {

struct UdfPartitionMap {
    // Other: virtual and sparable partitions, which are not supported, and maps that are unknown or too short.
    enum class Kind { Physical, Metadata, Other };

    Kind kind = Kind::Other;
    std::uint16_t partitionNumber = 0;
    std::uint32_t metadataFileBlock = 0;  // both blocks are in partition `partitionNumber`
    std::uint32_t metadataMirrorFileBlock = 0;
};

// Parses the maps of the logical volume descriptor in `sector`: those that it counts and that lie whole in the sector,
// at most 16. A map shorter than its header ends them.
[[nodiscard]] std::vector<UdfPartitionMap> parseUdfPartitionMaps(std::span<const std::uint8_t> sector);

}  // namespace discio
