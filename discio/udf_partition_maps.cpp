#include "discio/udf_partition_maps.h"

#include "discio/byte_reader.h"
#include "discio/udf_descriptor.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace discio {

namespace {

constexpr std::size_t kMapCountOffset = 268;
constexpr std::size_t kMapsOffset = 440;
constexpr std::size_t kMapHeaderSize = 2;

constexpr std::uint8_t kPhysicalType = 1;
constexpr std::uint8_t kIdentifiedType = 2;
constexpr std::string_view kMetadataIdentifier = "*UDF Metadata Partition";

UdfPartitionMap parseMap(std::span<const std::uint8_t> map)
{
    UdfPartitionMap parsed;
    ByteReader reader(map);
    const std::uint8_t type = reader.u8();
    if (type == kPhysicalType) {
        reader.seek(4);
        parsed.partitionNumber = reader.le16();
        if (reader.ok()) { parsed.kind = UdfPartitionMap::Kind::Physical; }
    } else if (type == kIdentifiedType) {
        reader.seek(5);
        const auto identifier = reader.bytes(kMetadataIdentifier.size());
        reader.seek(38);
        parsed.partitionNumber = reader.le16();
        parsed.metadataFileBlock = reader.le32();
        parsed.metadataMirrorFileBlock = reader.le32();
        const bool isMetadata = reader.ok() && std::ranges::equal(identifier, kMetadataIdentifier);
        if (isMetadata) { parsed.kind = UdfPartitionMap::Kind::Metadata; }
    }
    return parsed;
}

}  // namespace

std::vector<UdfPartitionMap> parseUdfPartitionMaps(std::span<const std::uint8_t> sector)
{
    const std::size_t count = std::min<std::size_t>(udfField(sector, kMapCountOffset, 4), kUdfPartitionLimit);
    std::vector<UdfPartitionMap> maps;
    ByteReader reader(sector);
    reader.seek(kMapsOffset);
    while (maps.size() < count) {
        const std::size_t start = reader.position();
        reader.skip(1);
        const std::uint8_t length = reader.u8();
        reader.seek(start);
        const auto map = reader.bytes(length);
        if (!reader.ok() || length < kMapHeaderSize) { break; }
        maps.push_back(parseMap(map));
    }
    return maps;
}

}  // namespace discio
