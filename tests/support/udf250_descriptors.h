// Single descriptors of UDF 2.50 with every field that ECMA-167 and the OSTA text ask for. Those of one sector are
// sealed where they are put.
#pragma once

#include "tests/support/udf250_builder.h"

#include <optional>
#include <string_view>
#include <vector>

namespace testsupport {

// A descriptor of nothing but its tag.
[[nodiscard]] Bytes udfDescriptor(std::uint16_t tagIdentifier, std::size_t size);

// Fills in the rest of the tag: version, CRC over all that follows it, location and checksum.
void sealUdfTag(Bytes& descriptor, std::uint32_t tagLocation);

// A structure of the volume recognition sequence.
[[nodiscard]] Bytes udfRecognitionDescriptor(std::string_view standardIdentifier);

[[nodiscard]] Bytes udfPrimaryVolumeDescriptor();
[[nodiscard]] Bytes udfImplementationUseDescriptor();

struct UdfPartitionFields {
    std::uint16_t partitionNumber = 0;
    std::uint32_t startingLocation = 0;
    std::uint32_t length = 0;
};
[[nodiscard]] Bytes udfPartitionDescriptor(const UdfPartitionFields& fields);

struct UdfLogicalVolumeFields {
    std::uint16_t fileSetReference = 0;  // the file set is in block 0
    std::uint32_t integritySector = 0;
    std::vector<UdfPartitionMapSpec> partitionMaps = {};
    std::optional<std::uint32_t> numberOfPartitionMaps = std::nullopt;
};
[[nodiscard]] Bytes udfLogicalVolumeDescriptor(const UdfLogicalVolumeFields& fields);

// Of partitions without free space.
[[nodiscard]] Bytes udfIntegrityDescriptor(std::uint32_t partitionCount, std::uint32_t partitionLength);

[[nodiscard]] Bytes udfAnchor(std::uint32_t mainSequenceSector, std::uint32_t reserveSequenceSector);

struct UdfFileSetFields {
    std::uint32_t rootBlock = 0;
    std::uint16_t partitionReference = 0;
};
// Sealed, for block 0.
[[nodiscard]] Bytes udfFileSetDescriptor(const UdfFileSetFields& fields);

// The extended file entry of the fields, with the others around them, sealed for its block.
[[nodiscard]] Bytes udf250FileEntry(const UdfFileEntrySpec& spec, std::uint32_t block);

}  // namespace testsupport
