#include "tests/support/image_structures.h"

#include <numeric>

namespace testsupport {

namespace {

constexpr std::size_t kTagSize = 16;

// The checksum of ECMA-167: CRC-16 of the polynomial x^16 + x^12 + x^5 + 1.
std::uint16_t crcOf(const Bytes& bytes, std::size_t from)
{
    std::uint32_t crc = 0;
    for (std::size_t i = from; i < bytes.size(); ++i) {
        crc ^= static_cast<std::uint32_t>(bytes[i]) << 8U;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000U) != 0 ? (crc << 1U) ^ 0x1021U : crc << 1U;
        }
    }
    return static_cast<std::uint16_t>(crc);
}

}  // namespace

Bytes isoRecord(const IsoRecordSpec& spec)
{
    Bytes record(roundedUp(33 + spec.identifier.size(), 2));
    putBe(record, 0, static_cast<std::uint8_t>(record.size()), 1);
    for (const auto& [offset, value] :
         {std::pair<std::size_t, std::uint32_t>{2, spec.block}, {10, spec.sizeBytes}}) {
        putLe(record, offset, value, 4);
        putBe(record, offset + 4, value, 4);
    }
    putBe(record, 25, spec.flags, 1);
    putBe(record, 32, static_cast<std::uint8_t>(spec.identifier.size()), 1);
    putText(record, 33, spec.identifier);
    return record;
}

Bytes udfDescriptor(std::uint16_t tag, std::size_t size, const std::vector<Patch>& fields)
{
    Bytes bytes(size);
    putLe(bytes, 0, tag, 2);
    putLe(bytes, 10, size - kTagSize, 2);
    for (const Patch& field : fields) {
        putLe(bytes, field.offset, field.value, field.width);
    }
    return bytes;
}

Bytes udfFileEntry(const UdfFileEntrySpec& spec)
{
    const bool isExtended = spec.tag == 266;
    const std::size_t size = isExtended ? 216 : 176;
    Bytes area = spec.embedded;
    std::size_t recordedBlocks = 0;
    for (const UdfExtent& extent : spec.descriptors) {
        if (extent.length < 0x40000000) { recordedBlocks += roundedUp(extent.length, kSector) / kSector; }
        append(area, leBytes(extent.length, 4));
        append(area, leBytes(extent.block, 4));
        if (spec.descriptorKind == 1) { append(area, leBytes(extent.partition, 8)); }
    }
    Bytes entry = udfDescriptor(spec.tag, size,
                                {{20, 2, 4},  // ICB strategy type, of one entry
                                 {24, 2, 1},
                                 {27, 1, spec.fileType},
                                 {34, 2, spec.descriptorKind},
                                 {48, 2, 1},  // file link count
                                 {56, 8, spec.informationLength},
                                 {64, 8, isExtended ? spec.informationLength : recordedBlocks},
                                 {72, 8, isExtended ? recordedBlocks : 0},
                                 {size - 8, 4, spec.extendedAttributeSize},
                                 {size - 4, 4, area.size()}});
    entry.resize(size + spec.extendedAttributeSize);
    append(entry, area);
    return entry;
}

Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec)
{
    Bytes identifier;
    if (!spec.name.empty()) { identifier.push_back(spec.compressionId); }
    for (const char letter : spec.name) {
        append(identifier, beBytes(static_cast<std::uint8_t>(letter), spec.compressionId / 8U));
    }
    Bytes bytes = udfDescriptor(257, roundedUp(38 + spec.implementationUseSize + identifier.size(), 4),
                                {{16, 2, 1},  // file version
                                 {18, 1, spec.characteristics},
                                 {19, 1, identifier.size()},
                                 {20, 4, kSector},  // length of the file entry
                                 {24, 4, spec.block},
                                 {28, 2, spec.partition},
                                 {36, 2, spec.implementationUseSize}});
    putBytes(bytes, 38 + spec.implementationUseSize, identifier);
    return bytes;
}

Bytes udfPartition(std::uint16_t number, std::uint32_t startSector, std::uint32_t length)
{
    return udfDescriptor(5, 512, {{22, 2, number}, {188, 4, startSector}, {192, 4, length}});
}

Bytes udfFileSet(std::uint32_t rootBlock, std::uint16_t partition)
{
    return udfDescriptor(256, 512, {{400, 4, kSector}, {404, 4, rootBlock}, {408, 2, partition}});
}

Bytes udfPartitionMap(std::uint8_t type, std::uint16_t partitionNumber)
{
    Bytes map(type == 1 ? 6 : 64);
    putBe(map, 0, type, 1);
    putBe(map, 1, static_cast<std::uint8_t>(map.size()), 1);
    putLe(map, map.size() == 6 ? 4 : 38, partitionNumber, 2);
    if (type == 1) { return map; }
    putText(map, 5, "*UDF Metadata Partition");
    putLe(map, 44, 1, 4);           // the mirror's entry
    putLe(map, 48, 0xFFFFFFFF, 4);  // no bitmap: the partition is read-only
    return map;
}

Bytes udfLogicalVolume(std::uint16_t fileSetPartition, const std::vector<Bytes>& maps)
{
    Bytes bytes = udfDescriptor(6, 440,
                                {{212, 4, kSector},
                                 {240, 2, 0x0250},
                                 {248, 4, 2 * kSector},
                                 {256, 2, fileSetPartition},
                                 {268, 4, maps.size()}});
    putText(bytes, 217, "*OSTA UDF Compliant");
    for (const Bytes& map : maps) {
        append(bytes, map);
    }
    putLe(bytes, 264, bytes.size() - 440, 4);
    return bytes;
}

void sealUdfTag(Bytes& descriptor, std::uint32_t location)
{
    putLe(descriptor, 2, 3, 2);  // descriptor version
    putLe(descriptor, 8, crcOf(descriptor, kTagSize), 2);
    putLe(descriptor, 10, descriptor.size() - kTagSize, 2);
    putLe(descriptor, 12, location, 4);
    descriptor[4] = 0;
    descriptor[4] = std::accumulate(
        descriptor.begin(), descriptor.begin() + kTagSize, std::uint8_t{0},
        [](std::uint8_t sum, std::uint8_t byte) { return static_cast<std::uint8_t>(sum + byte); });
}

}  // namespace testsupport
