#include "tests/support/image_structures.h"

#include <numeric>

namespace testsupport {

namespace {

constexpr std::size_t kTagSize = 16;

void putBothEndian(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    putLe(bytes, offset, value, width);
    putBe(bytes, offset + width, value, width);
}

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
    putU8(record, 0, static_cast<std::uint8_t>(record.size()));
    putBothEndian(record, 2, spec.block, 4);
    putBothEndian(record, 10, spec.sizeBytes, 4);
    putU8(record, 25, spec.flags);
    putBothEndian(record, 28, 1, 2);  // volume sequence number
    putU8(record, 32, static_cast<std::uint8_t>(spec.identifier.size()));
    putText(record, 33, spec.identifier);
    return record;
}

Bytes udfDescriptor(std::uint16_t tag, std::size_t size)
{
    Bytes bytes(size);
    putLe(bytes, 0, tag, 2);
    putLe(bytes, 10, size - kTagSize, 2);
    return bytes;
}

Bytes udfFileEntry(const UdfFileEntrySpec& spec)
{
    const std::size_t size = spec.tag == 266 ? 216 : 176;
    Bytes area = spec.embedded;
    std::size_t recordedBlocks = 0;
    for (const UdfExtent& extent : spec.descriptors) {
        if (extent.length < 0x40000000) { recordedBlocks += roundedUp(extent.length, kSector) / kSector; }
        append(area, leBytes(extent.length, 4));
        append(area, leBytes(extent.block, 4));
        if (spec.descriptorKind == 1) { append(area, leBytes(extent.partition, 8)); }
    }
    Bytes entry = udfDescriptor(spec.tag, size);
    putLe(entry, 20, 4, 2);  // ICB strategy type
    putLe(entry, 24, 1, 2);  // of one entry
    putU8(entry, 27, spec.fileType);
    putLe(entry, 34, spec.descriptorKind, 2);
    putLe(entry, 48, 1, 2);  // file link count
    putLe(entry, 56, spec.informationLength, 8);
    putLe(entry, 64, spec.informationLength, 8);  // object size, in extended file entries alone
    putLe(entry, spec.tag == 266 ? 72 : 64, recordedBlocks, 8);
    putLe(entry, size - 8, spec.extendedAttributeSize, 4);
    putLe(entry, size - 4, area.size(), 4);
    entry.resize(size + spec.extendedAttributeSize);
    append(entry, area);
    return entry;
}

Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec)
{
    Bytes identifier;
    if (!spec.name.empty()) {
        identifier.push_back(spec.compressionId);
        for (const char letter : spec.name) {
            append(identifier, beBytes(static_cast<std::uint8_t>(letter), spec.compressionId / 8U));
        }
    }
    Bytes bytes = udfDescriptor(257, roundedUp(38 + spec.implementationUseSize + identifier.size(), 4));
    putLe(bytes, 16, 1, 2);  // file version
    putU8(bytes, 18, spec.characteristics);
    putU8(bytes, 19, static_cast<std::uint8_t>(identifier.size()));
    putLe(bytes, 20, kSector, 4);  // length of the file entry
    putLe(bytes, 24, spec.block, 4);
    putLe(bytes, 28, spec.partition, 2);
    putLe(bytes, 36, spec.implementationUseSize, 2);
    putBytes(bytes, 38 + spec.implementationUseSize, identifier);
    return bytes;
}

Bytes udfPartition(std::uint16_t number, std::uint32_t startSector, std::uint32_t length)
{
    Bytes bytes = udfDescriptor(5, 512);
    putLe(bytes, 22, number, 2);
    putLe(bytes, 188, startSector, 4);
    putLe(bytes, 192, length, 4);
    return bytes;
}

Bytes udfFileSet(std::uint32_t rootBlock, std::uint16_t partition)
{
    Bytes bytes = udfDescriptor(256, 512);
    putLe(bytes, 400, kSector, 4);
    putLe(bytes, 404, rootBlock, 4);
    putLe(bytes, 408, partition, 2);
    return bytes;
}

Bytes udfPartitionMap(std::uint8_t type, std::uint16_t partitionNumber)
{
    Bytes map(type == 1 ? 6 : 64);
    putU8(map, 0, type);
    putU8(map, 1, static_cast<std::uint8_t>(map.size()));
    putLe(map, type == 1 ? 2 : 36, 1, 2);  // volume sequence number
    putLe(map, type == 1 ? 4 : 38, partitionNumber, 2);
    if (type != 1) {
        putText(map, 5, "*UDF Metadata Partition");
        putLe(map, 44, 1, 4);           // the mirror's entry
        putLe(map, 48, 0xFFFFFFFF, 4);  // no bitmap: the partition is read-only
        putLe(map, 52, 32, 4);          // allocation and alignment unit
        putLe(map, 56, 32, 2);
    }
    return map;
}

Bytes udfLogicalVolume(std::uint16_t fileSetPartition, const std::vector<Bytes>& maps)
{
    Bytes bytes = udfDescriptor(6, 440);
    putLe(bytes, 212, kSector, 4);
    putText(bytes, 217, "*OSTA UDF Compliant");
    putLe(bytes, 240, 0x0250, 2);  // the revision
    putLe(bytes, 248, 2 * kSector, 4);
    putLe(bytes, 256, fileSetPartition, 2);
    putLe(bytes, 268, maps.size(), 4);
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
