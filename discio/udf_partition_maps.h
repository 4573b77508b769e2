// The partition maps of a UDF logical volume (ECMA-167 and UDF 2.50): what the partition references in its
// other descriptors stand for. The first map is reference 0.
//
// Logical volume descriptor, tag 6
//   268  number of partition maps, 4 bytes       440  the maps, one behind the other
// Partition map
//     0  type     1  length of the map
//   of type 1, a partition as it lies in the image
//     4  partition number, 2 bytes
//   of type 2, what its identifier says
//     5  identifier, 23 bytes                     38  partition number, 2 bytes
//   of type 2, with the identifier "*UDF Metadata Partition"
//    40  logical block of the metadata file's     44  of the metadata mirror file's entry, 4 bytes
//        entry, 4 bytes
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace discio {

struct UdfPartitionMap {
    // Other: virtual and sparable partitions, which are not followed, and what is unknown or too short.
    enum class Kind { Physical, Metadata, Other };

    Kind kind = Kind::Other;
    std::uint16_t partitionNumber = 0;
    std::uint32_t metadataFileBlock = 0;  // both in the partition of that number
    std::uint32_t metadataMirrorFileBlock = 0;
};

// The maps of the logical volume descriptor in this sector: as many as it says and lie whole in the sector, at
// most 16. A map of no length ends them.
[[nodiscard]] std::vector<UdfPartitionMap> parseUdfPartitionMaps(std::span<const std::uint8_t> sector);

}  // namespace discio
