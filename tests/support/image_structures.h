// Single structures of ISO-9660 and UDF. Lengths follow from the contents. A test that wants a lie patches the bytes;
// the offsets of the fields are given here.
#pragma once

#include "tests/support/bytes.h"

#include <numeric>
#include <string>
#include <vector>

namespace testsupport {

inline constexpr std::size_t kSector = 2048;  // also a block of both file systems
inline constexpr std::size_t kUdfTagSize = 16;

// A directory record of ISO-9660:
//      0  record length     2  block, 4 bytes, little-endian, then big-endian     32  identifier length
//     25  flags            10  size in bytes, likewise                            33  identifier
struct IsoRecordSpec {
    std::string identifier = {};
    std::uint32_t block = 0;
    std::uint32_t sizeBytes = 0;
    std::uint8_t flags = 0;  // 0x02: a directory
};
[[nodiscard]] inline Bytes isoRecord(const IsoRecordSpec& spec)
{
    const std::size_t size = roundedUp(33 + spec.identifier.size(), 2);
    Bytes record = patched(Bytes(size), {{0, 1, size},
                                         {6, 4, spec.block},
                                         {14, 4, spec.sizeBytes},
                                         {25, 1, spec.flags},
                                         {32, 1, spec.identifier.size()}});
    putLe(record, 2, spec.block, 4);
    putLe(record, 10, spec.sizeBytes, 4);
    putText(record, 33, spec.identifier);
    return record;
}

// A descriptor of `size` bytes: tag identifier at 0, CRC length at 10, and little-endian fields.
[[nodiscard]] inline Bytes udfDescriptor(std::uint16_t tag, std::size_t size,
                                         const std::vector<Patch>& fields = {})
{
    Bytes bytes(size);
    putLe(bytes, 0, tag, 2);
    putLe(bytes, 10, size - kUdfTagSize, 2);
    for (const Patch& field : fields) {
        putLe(bytes, field.offset, field.value, field.width);
    }
    return bytes;
}

// Completes the tag with the location, CRC and checksum, as strict readers want them.
inline void sealUdfTag(Bytes& descriptor, std::uint32_t location)
{
    std::uint32_t crc = 0;  // of ECMA-167: x^16 + x^12 + x^5 + 1
    for (std::size_t bit = 8 * kUdfTagSize; bit < 8 * descriptor.size(); ++bit) {
        const std::uint32_t next = std::uint32_t{descriptor[bit / 8]} >> (7 - bit % 8) & 1U;
        crc = (crc << 1U & 0xFFFFU) ^ ((crc >> 15U ^ next) != 0 ? 0x1021U : 0);
    }
    putLe(descriptor, 2, 3, 2);  // descriptor version
    putLe(descriptor, 4, 0, 1);
    putLe(descriptor, 8, crc, 2);
    putLe(descriptor, 10, descriptor.size() - kUdfTagSize, 2);
    putLe(descriptor, 12, location, 4);
    putLe(descriptor, 4, std::accumulate(descriptor.begin(), descriptor.begin() + kUdfTagSize, 0U), 1);
}

// An allocation descriptor. The length's two highest bits are the extent's type; 0: recorded data.
struct UdfExtent {
    std::uint32_t length = 0;
    std::uint32_t block = 0;
    std::uint16_t partition = 0;  // long descriptors only
};

// A file entry (tag 261) or extended file entry (266, in brackets):
//      0  tag           34  descriptor kind                172 (212)  length of the descriptors, 4 bytes
//     27  file type     56  information length, 8 bytes    176 (216)  the descriptors
struct UdfFileEntrySpec {
    std::uint16_t tag = 261;
    std::uint8_t fileType = 5;        // 4: a directory
    std::uint8_t descriptorKind = 0;  // 0: short, 1: long, 3: embedded data
    std::uint64_t informationLength = 0;
    std::vector<UdfExtent> descriptors = {};
    Bytes embedded = {};  // in place of the descriptors
};
[[nodiscard]] inline Bytes udfFileEntry(const UdfFileEntrySpec& spec)
{
    Bytes area = spec.embedded;
    std::size_t recordedBlocks = 0;
    for (const UdfExtent& extent : spec.descriptors) {
        if (extent.length < 0x40000000) { recordedBlocks += roundedUp(extent.length, kSector) / kSector; }
        append(area, leBytes(std::uint64_t{extent.block} << 32U | extent.length, 8));
        if (spec.descriptorKind == 1) { append(area, leBytes(extent.partition, 8)); }
    }
    const bool isExtended = spec.tag == 266;
    const std::size_t size = isExtended ? 216 : 176;
    Bytes entry = udfDescriptor(spec.tag, size,
                                {{20, 2, 4},  // ICB strategy type, of one entry
                                 {24, 2, 1},
                                 {27, 1, spec.fileType},
                                 {34, 2, spec.descriptorKind},
                                 {48, 2, 1},  // file link count
                                 {56, 8, spec.informationLength},
                                 {64, 8, isExtended ? spec.informationLength : recordedBlocks},
                                 {72, 8, isExtended ? recordedBlocks : 0},
                                 {size - 4, 4, area.size()}});
    append(entry, area);
    return entry;
}

// A file identifier descriptor: 18 characteristics, 24 block of the file entry, 28 its partition, 38 identifier.
struct UdfFileIdentifierSpec {
    std::string name = {};  // empty: the parent's entry
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
    std::uint8_t characteristics = 0;  // 0x02: a directory, 0x08: the parent
};
[[nodiscard]] inline Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec)
{
    const std::string identifier = spec.name.empty() ? "" : '\x08' + spec.name;  // of 8-bit characters
    Bytes bytes = udfDescriptor(257, roundedUp(38 + identifier.size(), 4),
                                {{16, 2, 1},  // file version
                                 {18, 1, spec.characteristics},
                                 {19, 1, identifier.size()},
                                 {20, 4, kSector},  // length of the file entry
                                 {24, 4, spec.block},
                                 {28, 2, spec.partition}});
    putText(bytes, 38, identifier);
    return bytes;
}

}  // namespace testsupport
