#include "discio/udf.h"
#include "discio/udf_partition_maps.h"
#include "tests/discio/image_file.h"
#include "tests/support/image_structures.h"

#include <array>

using discio::UdfBlockRun;
using testsupport::Bytes;
using testsupport::kSector;
using testsupport::udfFileEntry;
using testsupport::UdfFileEntrySpec;

namespace {

// ---- Partition maps ----

using testsupport::udfPartitionMap;

// One letter for each map, and behind it the partition number.
std::string mapsOf(const std::vector<Bytes>& maps, std::optional<std::uint32_t> count = {})
{
    Bytes sector = testsupport::udfLogicalVolume(0, maps);
    if (count) { testsupport::putLe(sector, 268, *count, 4); }
    sector.resize(kSector);
    std::string text;
    for (const discio::UdfPartitionMap& map : discio::parseUdfPartitionMaps(sector)) {
        text += "PMO"[static_cast<std::size_t>(map.kind)] + std::to_string(map.partitionNumber);
    }
    return text;
}

const Bytes kPhysical = udfPartitionMap(1, 5);
const Bytes kMetadata = udfPartitionMap(2, 6);

Bytes ofType(std::uint8_t type)
{
    Bytes map = udfPartitionMap(1);
    map[0] = type;
    return map;
}
Bytes ofLength(Bytes map, std::uint8_t length)
{
    map[1] = length;
    return map;
}
// A map of type 2 that is not one of a metadata partition.
Bytes identified(const char* identifier)
{
    Bytes map = udfPartitionMap(2);
    testsupport::putBytes(map, 5, Bytes(23));
    testsupport::putText(map, 5, identifier);
    return map;
}

TEST(UdfPartitionMaps, EachKindInItsPlace)
{
    EXPECT_EQ(mapsOf({kPhysical, kMetadata, udfPartitionMap(1, 0xFFFF)}), "P5M6P65535");
    Bytes metadata = kMetadata;
    testsupport::putLe(metadata, 40, 0x01020304, 4);
    testsupport::putLe(metadata, 44, 0xF5060708, 4);
    const auto maps = discio::parseUdfPartitionMaps(testsupport::udfLogicalVolume(0, {metadata}));
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].metadataFileBlock, 0x01020304U);
    EXPECT_EQ(maps[0].metadataMirrorFileBlock, 0xF5060708U);
}

TEST(UdfPartitionMaps, WhatIsUnknownKeepsItsPlace)
{
    EXPECT_EQ(mapsOf({identified("*UDF Virtual Partition"), kPhysical}), "O0P5");
    EXPECT_EQ(mapsOf({identified("*UDF Sparable Partition"), kMetadata}), "O0M6");
    EXPECT_EQ(mapsOf({identified("*UDF Metadata Partitio"), identified("*UDF metadata Partition")}), "O0O0");
    EXPECT_EQ(mapsOf({ofType(0), kPhysical, ofType(3)}), "O0P5O0");
    EXPECT_EQ(mapsOf({ofLength(udfPartitionMap(1), 5)}), "O0") << "the number does not lie in it";
    EXPECT_EQ(mapsOf({ofLength(udfPartitionMap(2), 47)}), "O0");
    EXPECT_EQ(mapsOf({ofLength(udfPartitionMap(2), 48)}), "M0");
}

TEST(UdfPartitionMaps, AsManyAsTheVolumeSaysAndTheSectorHolds)
{
    EXPECT_EQ(mapsOf({kPhysical, kMetadata}, 1), "P5");
    EXPECT_EQ(mapsOf({kPhysical, kMetadata}, 0), "");
    EXPECT_EQ(mapsOf({kPhysical}, UINT32_MAX), "P5") << "zeros are no map";
    EXPECT_EQ(mapsOf(std::vector(17, kPhysical)).size(), 2U * 16);
    EXPECT_EQ(mapsOf({kPhysical, ofLength(kPhysical, 0), kPhysical}), "P5");
    EXPECT_EQ(mapsOf({kPhysical, ofLength(kPhysical, 1), kPhysical}), "P5");

    // 1,608 bytes hold six maps of 255; of the seventh 78 are left.
    Bytes sector(kSector);
    testsupport::putLe(sector, 268, 16, 4);
    for (std::size_t i = 0; i < 7; ++i) {
        testsupport::putBytes(sector, 440 + i * 255, {1, 255, 1, 0, 5, 0});
    }
    EXPECT_EQ(discio::parseUdfPartitionMaps(sector).size(), 6U);
    sector[440 + 6 * 255 + 1] = 78;
    EXPECT_EQ(discio::parseUdfPartitionMaps(sector).size(), 7U);
    sector[440 + 6 * 255 + 1] = 79;
    EXPECT_EQ(discio::parseUdfPartitionMaps(sector).size(), 6U);
    for (std::size_t size = 0; size < kSector; ++size) {
        EXPECT_LE(discio::parseUdfPartitionMaps(std::span(sector).first(size)).size(), 6U);
    }
}

// ---- The metadata file ----

// One file entry as block 5 of a partition that begins in sector 20.
class UdfMetadataFile : public discio_test::ImageFileTest {
protected:
    // "first+count@sector" of each run.
    std::string runsOf(const UdfFileEntrySpec& spec, std::uint32_t block = 5)
    {
        return runsOf(udfFileEntry(spec), block);
    }
    std::string runsOf(const Bytes& entry, std::uint32_t block)
    {
        testsupport::SparseImage content;
        content.put(25 * kSector, entry);
        std::string text;
        for (const UdfBlockRun& run : discio::readUdfMetadataFile(imageOf(content), 20, block)) {
            text += std::to_string(run.firstBlock) + '+' + std::to_string(run.blockCount) + '@' +
                    std::to_string(run.sector) + ' ';
        }
        return text;
    }
    std::string runsOf(std::uint64_t blocks, const std::vector<testsupport::UdfExtent>& extents)
    {
        return runsOf({.informationLength = blocks * kSector, .descriptors = extents});
    }
};

TEST_F(UdfMetadataFile, RunsFollowItsExtents)
{
    constexpr std::uint32_t kBlock = kSector;
    EXPECT_EQ(runsOf(3, {{3 * kBlock, 100}}), "0+3@100 ");
    EXPECT_EQ(runsOf(4, {{kBlock, 100}, {2 * kBlock, 101}, {kBlock, 99}}), "0+3@100 3+1@99 ");
    EXPECT_EQ(runsOf(3, {{2 * kBlock, 100}, {9 * kBlock, 0xFFFFFFFF}}), "0+2@100 2+1@4294967295 ") << "cut";
    EXPECT_EQ(runsOf(5, {{kBlock, 100}, {0x80000000 + 3 * kBlock, 0}, {kBlock, 104}}), "0+1@100 4+1@104 ")
        << "blocks that are not recorded are counted";
    EXPECT_EQ(runsOf(2, {{0x40000000 + kBlock, 7}, {kBlock, 8}}), "1+1@8 ");
    EXPECT_EQ(runsOf(2, {{kBlock, 100}, {0, 50}, {kBlock - 1, 60}, {2 * kBlock - 1, 70}}), "0+1@100 1+1@70 ")
        << "a part of a block is none";
    EXPECT_EQ(runsOf({.tag = 266, .informationLength = 2 * kBlock - 1, .descriptors = {{kBlock, 1}}}),
              "0+1@1 ");
    EXPECT_EQ(
        runsOf({.informationLength = kBlock, .descriptors = {{kBlock, 1}}, .extendedAttributeSize = 5000}),
        "0+1@1 ");
}

TEST_F(UdfMetadataFile, WhatHoldsLessThanItSaysIsUnreadable)
{
    constexpr std::uint32_t kBlock = kSector;
    EXPECT_EQ(runsOf(2, {{kBlock, 100}}), "");
    EXPECT_EQ(runsOf(0, {{kBlock, 100}}), "");
    EXPECT_EQ(runsOf(1, {}), "");
    EXPECT_EQ(runsOf(1, {{0x80000000 + kBlock, 100}}), "") << "no data at all";
    EXPECT_EQ(runsOf(2, {{kBlock, 100}, {0xC0000000 + kBlock, 30}}), "") << "not followed";
    EXPECT_EQ(runsOf({.informationLength = UINT64_MAX, .descriptors = {{0x3FFFFFFF, 0}}}), "");

    UdfFileEntrySpec spec{.informationLength = kBlock, .descriptors = {{kBlock, 100}}};
    EXPECT_EQ(runsOf(spec), "0+1@100 ");
    EXPECT_EQ(runsOf(spec, 6), "") << "no entry";
    EXPECT_EQ(runsOf(spec, 0xFFFFFFFF), "") << "not in the image";
    for (const std::uint8_t kind : std::array<std::uint8_t, 4>{1, 2, 3, 7}) {
        spec.descriptorKind = kind;
        EXPECT_EQ(runsOf(spec), "") << int{kind};
    }
    spec.descriptorKind = 0;
    for (const std::uint16_t tag : std::array<std::uint16_t, 5>{0, 260, 262, 265, 267}) {
        spec.tag = tag;
        EXPECT_EQ(runsOf(spec), "") << tag;
    }
    spec.tag = 261;
    for (const std::uint32_t length : {0U, 7U, 1U << 20U, UINT32_MAX}) {
        Bytes entry = udfFileEntry(spec);
        testsupport::putLe(entry, 172, length, 4);
        EXPECT_EQ(runsOf(entry, 5), "") << length;
    }
}

// ---- Extents over runs ----

TEST(UdfExtents, AreCutWhereTheRunsAre)
{
    // Blocks 0 and 1, then 4 to 6, then 7 elsewhere.
    const discio::UdfVolume volume = {{{10, {{0, 2, 50}, {4, 3, 20}, {7, 1, 90}}}, {10}, {10, {}}}, {}};
    const auto extent = [&volume](std::uint32_t block, std::uint64_t size, std::uint16_t partition = 0) {
        discio::ExtentList data;
        discio::ReadBudget budget;
        std::string text;
        if (!appendUdfExtent(volume, {block, partition}, size, budget, data)) { return std::string("none"); }
        EXPECT_EQ(data.sizeBytes, size);
        for (const discio::ImageExtent& piece : data.extents) {
            text += std::to_string(piece.offset / kSector) + ':' + std::to_string(piece.sizeBytes) + ' ';
        }
        return text;
    };
    EXPECT_EQ(extent(0, 4096), "60:4096 ");
    EXPECT_EQ(extent(1, 2048), "61:2048 ");
    EXPECT_EQ(extent(1, 2049), "none") << "a hole";
    EXPECT_EQ(extent(2, 1), "none");
    EXPECT_EQ(extent(5, 6000), "31:4096 100:1904 ");
    EXPECT_EQ(extent(7, 2049), "none") << "behind the last";
    EXPECT_EQ(extent(8, 1), "none");
    EXPECT_EQ(extent(3, 5000, 1), "13:5000 ") << "a partition as it lies in the image";
    EXPECT_EQ(extent(0, 1, 2), "none") << "one that is not followed";
    EXPECT_EQ(extent(0, 1, 3), "none") << "no such partition";
    EXPECT_FALSE(udfByteOffset(volume, {3, 0}));
    EXPECT_EQ(udfByteOffset(volume, {6, 0}), 32 * kSector);
}

TEST(UdfExtents, PiecesOfFilesHaveALimit)
{
    discio::UdfVolume volume = {{{0, {}}}, {}};
    for (std::uint64_t i = 0; i < 3; ++i) {
        volume.partitions[0].runs.push_back({i, 1, 2 * i});
    }
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::Pieces, 5, "pieces");
    for (const bool isAllowed : {true, true, false}) {  // the first piece of each file is free
        discio::ExtentList data;
        EXPECT_EQ(appendUdfExtent(volume, {0, 0}, 3 * kSector, budget, data), isAllowed);
    }
    EXPECT_STREQ(budget.reached(), "pieces");
}

}  // namespace
