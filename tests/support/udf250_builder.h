// Images of UDF 2.50 as Blu-ray discs have it, after ECMA-167 and the OSTA text: all that a strict reader asks
// for, with the checksums of the descriptor tags. The directories and file entries are in a metadata partition.
//
//   sector 16   volume recognition sequence        256   anchor, and again in the last sector
//          32   main volume descriptor sequence    288   the partition: the metadata file's entry, its mirror's,
//          48   the reserve one                          the metadata, their copy, and the files' data
//          64   logical volume integrity
#pragma once

#include "tests/support/bytes.h"
#include "tests/support/iso_builder.h"
#include "tests/support/sparse_image.h"
#include "tests/support/udf_builder.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

// A partition map of type 1, or of type 2 with the fields of a metadata partition. The lengths follow from the type
// unless one is set.
struct UdfPartitionMapSpec {
    std::uint8_t partitionMapType = 1;
    std::optional<std::uint8_t> partitionMapLength = std::nullopt;
    std::uint16_t partitionNumber = 0;
    std::string partitionTypeIdentifier = "*UDF Metadata Partition";
    std::uint32_t metadataFileLocation = 0;
    std::uint32_t metadataMirrorFileLocation = 1;
    std::uint32_t metadataBitmapFileLocation = 0xFFFFFFFF;  // none: the partition is read-only
    std::uint32_t allocationUnitSize = 32;
    std::uint16_t alignmentUnitSize = 32;
    std::uint8_t flags = 1;  // the duplicate metadata flag
};

[[nodiscard]] Bytes udfPartitionMap(const UdfPartitionMapSpec& spec);

struct Udf250Spec {
    // Whether the mirror leads to a copy of the metadata, or to the very blocks of the metadata file.
    bool duplicateMetadata = true;
    // The metadata map is reference 0 and the partition in which the files' data lie 1, in place of the other way.
    bool isMetadataMapFirst = false;
    std::size_t metadataBlocksPerExtent = SIZE_MAX;  // the metadata are cut, with a block between the extents
    std::uint32_t unrecordedBlocks = 0;  // that the metadata partition counts in front of the root directory
    std::uint8_t directoryKind = 0;      // of its descriptors; 0: short, 1: long, 3: embedded data
    std::uint16_t partitionNumber = 0;
    std::optional<std::vector<UdfPartitionMapSpec>> partitionMaps = std::nullopt;
    std::map<std::string, UdfNodeOverride> nodes = {};  // by path; the root's is ""; `block` is not looked at
};

// Where in the image what a test may overwrite stands.
struct Udf250Image {
    SparseImage image;
    std::uint32_t logicalVolumeSector = 0;
    std::uint32_t partitionSector = 0;
    std::uint32_t metadataFileSector = 0;  // of its file entry
    std::uint32_t metadataMirrorFileSector = 0;
    std::uint32_t metadataSector = 0;  // of the metadata's first block: the file set descriptor
    std::uint32_t metadataMirrorSector = 0;
    std::uint32_t metadataBlockCount = 0;
    std::map<std::string, std::uint32_t> dataSectors = {};  // where each file's data begin
    std::map<std::string, std::uint32_t> entryBlocks = {};  // of the metadata partition

    // Nothing in place of a sector.
    Udf250Image& wipe(std::uint32_t sector)
    {
        image.put(std::uint64_t{sector} * kUdfSector, Bytes(kUdfSector));
        return *this;
    }
    // Another file entry in place of the metadata file's or its mirror's.
    Udf250Image& putEntry(std::uint32_t sector, const UdfFileEntrySpec& entry)
    {
        Bytes bytes = udfFileEntry(entry);
        bytes.resize(roundedUp(bytes.size(), kUdfSector));
        image.put(std::uint64_t{sector} * kUdfSector, std::move(bytes));
        return *this;
    }
};

[[nodiscard]] Udf250Image buildUdf250(const std::vector<TreeFile>& files, const Udf250Spec& spec = {});

}  // namespace testsupport
