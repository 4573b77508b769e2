// Single structures of ISO-9660 and UDF. Lengths follow from the contents. A test that wants a lie patches the bytes;
// the offsets of the fields are given here.
#pragma once

#include "tests/support/bytes.h"

#include <string>
#include <vector>

namespace testsupport {

inline constexpr std::size_t kSector = 2048;  // also a block of both file systems

// A directory record of ISO-9660:
//      0  record length     2  block, 4 bytes, little-endian, then big-endian     32  identifier length
//     25  flags            10  size in bytes, likewise                            33  identifier
struct IsoRecordSpec {
    std::string identifier = {};
    std::uint32_t block = 0;
    std::uint32_t sizeBytes = 0;
    std::uint8_t flags = 0;  // 0x02: a directory
};
[[nodiscard]] Bytes isoRecord(const IsoRecordSpec& spec);

// An allocation descriptor. The length's two highest bits say how the extent is recorded, 0: with data.
struct UdfExtent {
    std::uint32_t length = 0;
    std::uint32_t block = 0;
    std::uint16_t partition = 0;  // long descriptors only
};

// A file entry (tag 261) or extended file entry (266, in brackets):
//      0  tag                  56  information length, 8 bytes           168 (208)  length of the attributes, 4 bytes
//     27  file type            172 (212)  length of the descriptors, 4   176 (216)  attributes, then the descriptors
//     34  descriptor kind
struct UdfFileEntrySpec {
    std::uint16_t tag = 261;
    std::uint8_t fileType = 5;        // 4: a directory
    std::uint8_t descriptorKind = 0;  // 0: short, 1: long, 3: embedded data
    std::uint64_t informationLength = 0;
    std::vector<UdfExtent> descriptors = {};
    Bytes embedded = {};                    // in place of the descriptors
    std::size_t extendedAttributeSize = 0;  // zeros
};
[[nodiscard]] Bytes udfFileEntry(const UdfFileEntrySpec& spec);

// A file identifier descriptor:
//      0  tag, 10 CRC length      24  block of the file entry, 28 its partition    38  implementation use, then the
//     18  characteristics         36  length of the implementation use                 identifier; its first byte is
//     19  identifier length                                                            the compression ID
struct UdfFileIdentifierSpec {
    std::string name = {};  // empty: the parent's entry
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
    std::uint8_t characteristics = 0;  // 0x02: a directory, 0x04: deleted, 0x08: the parent
    std::uint8_t compressionId = 8;    // 16: the name in 16-bit characters
    std::size_t implementationUseSize = 0;
};
[[nodiscard]] Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec);

// A descriptor of `size` bytes: tag identifier at 0, CRC length at 10, and little-endian fields.
[[nodiscard]] Bytes udfDescriptor(std::uint16_t tag, std::size_t size, const std::vector<Patch>& fields = {});

// A partition descriptor: 22 number, 188 first sector.
[[nodiscard]] Bytes udfPartition(std::uint16_t number, std::uint32_t startSector,
                                 std::uint32_t length = 1000);

// A file set descriptor: 404 block of the root's file entry, 408 its partition.
[[nodiscard]] Bytes udfFileSet(std::uint32_t rootBlock, std::uint16_t partition);

// A partition map of type 1 (4 partition number) or 2, a metadata partition: 0 type, 1 length, 5 identifier,
// 38 partition number, 40 block of the metadata file's entry, 44 of its mirror's.
[[nodiscard]] Bytes udfPartitionMap(std::uint8_t type, std::uint16_t partitionNumber = 0);

// A logical volume descriptor: 252 block of the file set, 256 its partition, 268 number of maps, 440 the maps.
[[nodiscard]] Bytes udfLogicalVolume(std::uint16_t fileSetPartition, const std::vector<Bytes>& maps);

// Completes the tag with the location, CRC and checksum, as strict readers want them.
void sealUdfTag(Bytes& descriptor, std::uint32_t location);

}  // namespace testsupport
