#include "tests/support/udf250_descriptors.h"

#include <algorithm>

namespace testsupport {

namespace {

constexpr std::size_t kTagSize = 16;
constexpr std::uint16_t kRevision = 0x0250;
constexpr std::size_t kPartitionMapsOffset = 440;
constexpr std::size_t kSequenceSize = 16 * kUdfSector;

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

// An entity identifier of 32 bytes; UDF's own carry the revision.
void putEntity(Bytes& bytes, std::size_t offset, std::string_view identifier)
{
    putText(bytes, offset + 1, identifier);
    if (identifier.starts_with("*UDF") || identifier.starts_with("*OSTA")) {
        putLe(bytes, offset + 24, kRevision, 2);
    }
    growTo(bytes, offset + 32);
}

void putImplementation(Bytes& bytes, std::size_t offset)
{
    putEntity(bytes, offset, "*Test image");
}

void putCharacterSet(Bytes& bytes, std::size_t offset)
{
    putText(bytes, offset + 1, "OSTA Compressed Unicode");  // of type 0
}

// A text in a field of fixed size, whose last byte says how much of it is used.
void putDstring(Bytes& bytes, std::size_t offset, std::size_t size, std::string_view text)
{
    putU8(bytes, offset, 8);
    putText(bytes, offset + 1, text);
    putU8(bytes, offset + size - 1, static_cast<std::uint8_t>(text.size() + 1));
}

void putTimestamp(Bytes& bytes, std::size_t offset)
{
    putLe(bytes, offset, 0x1000, 2);  // local time, no offset
    putLe(bytes, offset + 2, 2024, 2);
    putBytes(bytes, offset + 4, {2, 29, 12, 34, 56, 0, 0, 0});
}

void putExtent(Bytes& bytes, std::size_t offset, std::size_t length, std::uint32_t location)
{
    putLe(bytes, offset, length, 4);
    putLe(bytes, offset + 4, location, 4);
}

void putLongExtent(Bytes& bytes, std::size_t offset, std::size_t length, std::uint32_t block,
                   std::uint16_t partitionReference)
{
    putExtent(bytes, offset, length, block);
    putLe(bytes, offset + 8, partitionReference, 2);
}

}  // namespace

Bytes udfDescriptor(std::uint16_t tagIdentifier, std::size_t size)
{
    Bytes bytes(size);
    putLe(bytes, 0, tagIdentifier, 2);
    return bytes;
}

void sealUdfTag(Bytes& descriptor, std::uint32_t tagLocation)
{
    putLe(descriptor, 2, 3, 2);  // descriptor version
    putLe(descriptor, 8, crcOf(descriptor, kTagSize), 2);
    putLe(descriptor, 10, descriptor.size() - kTagSize, 2);
    putLe(descriptor, 12, tagLocation, 4);
    putU8(descriptor, 4, 0);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < kTagSize; ++i) {
        sum += descriptor[i];
    }
    putU8(descriptor, 4, static_cast<std::uint8_t>(sum));
}

Bytes udfRecognitionDescriptor(std::string_view standardIdentifier)
{
    Bytes bytes(kUdfSector);
    putText(bytes, 1, standardIdentifier);
    putU8(bytes, 6, 1);
    return bytes;
}

Bytes udfPrimaryVolumeDescriptor()
{
    Bytes bytes = udfDescriptor(1, 512);
    putDstring(bytes, 24, 32, "TEST_DISC");
    putLe(bytes, 56, 1, 2);  // volume sequence number, and its maximum
    putLe(bytes, 58, 1, 2);
    putLe(bytes, 60, 2, 2);  // interchange level, and its maximum
    putLe(bytes, 62, 2, 2);
    putLe(bytes, 64, 1, 4);  // character set list, and its maximum
    putLe(bytes, 68, 1, 4);
    putDstring(bytes, 72, 128, "0123456789ABCDEFTEST_DISC");
    putCharacterSet(bytes, 200);
    putCharacterSet(bytes, 264);
    putTimestamp(bytes, 376);
    putImplementation(bytes, 388);
    return bytes;
}

Bytes udfImplementationUseDescriptor()
{
    Bytes bytes = udfDescriptor(4, 512);
    putLe(bytes, 16, 1, 4);  // volume descriptor sequence number
    putEntity(bytes, 20, "*UDF LV Info");
    putCharacterSet(bytes, 52);
    putDstring(bytes, 116, 128, "TEST_DISC");
    putImplementation(bytes, 352);
    return bytes;
}

Bytes udfPartitionDescriptor(const UdfPartitionFields& fields)
{
    Bytes bytes = udfDescriptor(5, 512);
    putLe(bytes, 16, 1, 4);  // volume descriptor sequence number
    putLe(bytes, 20, 1, 2);  // flags: space is allocated
    putLe(bytes, 22, fields.partitionNumber, 2);
    putEntity(bytes, 24, "+NSR03");
    putLe(bytes, 184, 1, 4);  // access type: read only
    putLe(bytes, 188, fields.startingLocation, 4);
    putLe(bytes, 192, fields.length, 4);
    putImplementation(bytes, 196);
    return bytes;
}

Bytes udfPartitionMap(const UdfPartitionMapSpec& spec)
{
    Bytes map;
    putU8(map, 0, spec.partitionMapType);
    putLe(map, 2, spec.partitionMapType == 1 ? 1 : 0, 2);
    if (spec.partitionMapType == 1) {
        putLe(map, 4, spec.partitionNumber, 2);
    } else {
        putEntity(map, 4, spec.partitionTypeIdentifier);
        putLe(map, 36, 1, 2);  // volume sequence number
        putLe(map, 38, spec.partitionNumber, 2);
        putLe(map, 40, spec.metadataFileLocation, 4);
        putLe(map, 44, spec.metadataMirrorFileLocation, 4);
        putLe(map, 48, spec.metadataBitmapFileLocation, 4);
        putLe(map, 52, spec.allocationUnitSize, 4);
        putLe(map, 56, spec.alignmentUnitSize, 2);
        putU8(map, 58, spec.flags);
        growTo(map, 64);
    }
    putU8(map, 1, spec.partitionMapLength.value_or(static_cast<std::uint8_t>(map.size())));
    return map;
}

Bytes udfLogicalVolumeDescriptor(const UdfLogicalVolumeFields& fields)
{
    Bytes maps;
    for (const UdfPartitionMapSpec& map : fields.partitionMaps) {
        putBytes(maps, maps.size(), udfPartitionMap(map));
    }
    Bytes bytes = udfDescriptor(6, kPartitionMapsOffset);
    putLe(bytes, 16, 1, 4);  // volume descriptor sequence number
    putCharacterSet(bytes, 20);
    putDstring(bytes, 84, 128, "TEST_DISC");
    putLe(bytes, 212, kUdfSector, 4);
    putEntity(bytes, 216, "*OSTA UDF Compliant");
    putLongExtent(bytes, 248, 2 * kUdfSector, 0, fields.fileSetReference);
    putLe(bytes, 264, maps.size(), 4);
    putLe(bytes, 268, fields.numberOfPartitionMaps.value_or(fields.partitionMaps.size()), 4);
    putImplementation(bytes, 272);
    putExtent(bytes, 432, 2 * kUdfSector, fields.integritySector);
    putBytes(bytes, kPartitionMapsOffset, maps);
    bytes.resize(std::min(bytes.size(), kUdfSector));  // maps that do not fit
    return bytes;
}

Bytes udfIntegrityDescriptor(std::uint32_t partitionCount, std::uint32_t partitionLength)
{
    constexpr std::size_t kImplementationUse = 46;
    Bytes bytes = udfDescriptor(9, 80);
    putTimestamp(bytes, 16);
    putLe(bytes, 28, 1, 4);   // closed
    putLe(bytes, 40, 99, 8);  // the next unique identifier
    putLe(bytes, 72, partitionCount, 4);
    putLe(bytes, 76, kImplementationUse, 4);
    growTo(bytes, 80 + 4 * std::size_t{partitionCount});  // the free space table, then the sizes
    for (std::uint32_t i = 0; i < partitionCount; ++i) {
        putLe(bytes, bytes.size(), partitionLength, 4);
    }
    const std::size_t use = bytes.size();
    putImplementation(bytes, use);
    growTo(bytes, use + kImplementationUse);
    for (const std::size_t revision : {40U, 42U, 44U}) {  // to read, to write, at most to write
        putLe(bytes, use + revision, kRevision, 2);
    }
    return bytes;
}

Bytes udfAnchor(std::uint32_t mainSequenceSector, std::uint32_t reserveSequenceSector)
{
    Bytes bytes = udfDescriptor(2, 512);
    putExtent(bytes, 16, kSequenceSize, mainSequenceSector);
    putExtent(bytes, 24, kSequenceSize, reserveSequenceSector);
    return bytes;
}

Bytes udfFileSetDescriptor(const UdfFileSetFields& fields)
{
    Bytes bytes = udfDescriptor(256, 512);
    putTimestamp(bytes, 16);
    putLe(bytes, 28, 3, 2);  // interchange level, and its maximum
    putLe(bytes, 30, 3, 2);
    putLe(bytes, 32, 1, 4);  // character set list, and its maximum
    putLe(bytes, 36, 1, 4);
    putCharacterSet(bytes, 48);
    putDstring(bytes, 112, 128, "TEST_DISC");
    putCharacterSet(bytes, 240);
    putDstring(bytes, 304, 32, "TEST_DISC");
    putLongExtent(bytes, 400, kUdfSector, fields.rootBlock, fields.partitionReference);
    putEntity(bytes, 416, "*OSTA UDF Compliant");
    sealUdfTag(bytes, 0);
    return bytes;
}

Bytes udf250FileEntry(const UdfFileEntrySpec& spec, std::uint32_t block)
{
    Bytes bytes = udfFileEntry(spec);
    putLe(bytes, 20, 4, 2);                            // ICB strategy type
    putLe(bytes, 24, 1, 2);                            // of one entry
    putLe(bytes, 36, 0xFFFFFFFFFFFFFFFF, 8);           // uid and gid: none
    putLe(bytes, 44, 0x14A5, 4);                       // permissions: everybody reads and executes
    putLe(bytes, 48, spec.fileType < 250 ? 1 : 0, 2);  // file link count
    putLe(bytes, 64, spec.informationLength, 8);       // object size
    std::uint64_t blocks = 0;
    for (const UdfAllocationDescriptor& extent : spec.descriptors) {
        if (extent.length < 0x40000000) { blocks += roundedUp(extent.length, kUdfSector) / kUdfSector; }
    }
    putLe(bytes, 72, blocks, 8);  // logical blocks recorded
    for (const std::size_t time : {80U, 92U, 104U, 116U}) {
        putTimestamp(bytes, time);
    }
    putLe(bytes, 128, 1, 4);  // checkpoint
    putImplementation(bytes, 168);
    putLe(bytes, 200, spec.fileType < 250 ? 16 + block : 0, 8);  // unique identifier
    sealUdfTag(bytes, block);
    return bytes;
}

}  // namespace testsupport
