// Images of UDF 2.50, which keep the file set in a metadata partition, and the lies that they can tell.
#include "tests/discio/bluray_source_fixture.h"
#include "tests/support/udf250_descriptors.h"

using discio::BluraySourceMode;
using discio_test::BluraySource;
using discio_test::Names;
using discio_test::pattern;
using discio_test::sampleTree;
using testsupport::DiscTree;
using testsupport::kUdfSector;
using testsupport::SparseImage;
using testsupport::Udf250Image;
using testsupport::Udf250Spec;
using testsupport::UdfPartitionMapSpec;

namespace {

constexpr std::uint32_t kBlock = kUdfSector;

class Udf250 : public BluraySource {
protected:
    bool opens(const SparseImage& image) { return opens(image, image.sizeBytes()); }
    bool opens(const SparseImage& image, std::uint64_t sizeBytes)
    {
        const std::string path = m_folder / "image";
        image.writeTo(path, sizeBytes);
        if (open(path) == 0) { return true; }
        EXPECT_EQ(message(), "'" + path + "' is not a supported ISO-9660 or UDF image");
        return false;
    }
    bool opens(const Udf250Spec& spec) { return opens(sampleTree().udf250(spec).image); }

    // Whether files and listings are those of the sample tree; all of them.
    void expectSampleTree() const
    {
        EXPECT_EQ(m_source.mode, BluraySourceMode::Udf);
        EXPECT_EQ(read("BDMV/index.bdmv"), pattern(100, 1));
        EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), pattern(5000, 2));
        EXPECT_EQ(read("bdmv.txt"), pattern(7, 6));
        EXPECT_EQ(list("BDMV/PLAYLIST"), (Names{"00010", "00002"}));
        EXPECT_EQ(list("BDMV/CLIPINF", ".clpi"), Names{"00001"});
    }
};

TEST_F(Udf250, EveryLayoutOfTheMetadata)
{
    for (const bool duplicates : {true, false}) {
        for (const bool isMapFirst : {true, false}) {
            for (const std::size_t blocksPerExtent : {SIZE_MAX, std::size_t{1}, std::size_t{3}}) {
                for (const std::uint8_t kind : std::array<std::uint8_t, 3>{0, 1, 3}) {
                    Udf250Spec spec;
                    spec.duplicateMetadata = duplicates;
                    spec.isMetadataMapFirst = isMapFirst;
                    spec.metadataBlocksPerExtent = blocksPerExtent;
                    spec.unrecordedBlocks = blocksPerExtent == 3 ? 40 : 0;
                    spec.directoryKind = kind;
                    spec.partitionNumber = kind;
                    ASSERT_TRUE(opens(spec));
                    expectSampleTree();
                }
            }
        }
    }
}

TEST_F(Udf250, ADirectoryGoesOnInTheMetadataFilesNextExtent)
{
    DiscTree tree;
    for (int i = 100; i < 300; ++i) {
        tree.add("BDMV/" + std::to_string(i) + ".x", {static_cast<std::uint8_t>(i)});
    }
    for (const std::size_t blocksPerExtent : {SIZE_MAX, std::size_t{2}, std::size_t{1}}) {
        ASSERT_TRUE(opens(tree.udf250({.metadataBlocksPerExtent = blocksPerExtent}).image));
        EXPECT_EQ(list("BDMV", ".x").size(), 200U);
        EXPECT_EQ(read("BDMV/299.x"), testsupport::Bytes{299 - 256});
    }
}

// ---- What opened before opens as before ----

TEST_F(Udf250, MapsAreLookedAtWhereNothingElseOpensTheImage)
{
    // Reference 0 is the first partition descriptor at first: a file set in its block 0 is the disc's.
    Udf250Image disc = sampleTree().udf250({.isMetadataMapFirst = true});
    EXPECT_TRUE(opens(disc.image));
    EXPECT_EQ(m_source.udf.partitions.size(), 2U);
    disc.image.put(std::uint64_t{disc.partitionSector} * kBlock,
                   testsupport::udfFileSetDescriptor({.rootBlock = 77}));
    EXPECT_TRUE(opens(disc.image));
    EXPECT_EQ(m_source.udf.partitions.size(), 1U);
    EXPECT_EQ(m_source.udf.rootIcb.block, 77U);

    SparseImage bridge = sampleTree().udf250().image;
    bridge.putAll(DiscTree().add("BDMV/of.iso", {1}).iso());
    EXPECT_TRUE(opens(bridge));
    EXPECT_EQ(m_source.mode, BluraySourceMode::Iso);
    EXPECT_EQ(read("BDMV/of.iso"), testsupport::Bytes{1});
}

// ---- The maps and what they name ----

TEST_F(Udf250, MapsThatLeadNowhere)
{
    const UdfPartitionMapSpec physical;
    const UdfPartitionMapSpec metadata{.partitionMapType = 2};
    const auto opensWith = [this](const std::vector<UdfPartitionMapSpec>& maps) {
        return opens(Udf250Spec{.partitionMaps = maps});
    };
    EXPECT_TRUE(opensWith({physical, metadata}));
    EXPECT_FALSE(opensWith({}));
    EXPECT_FALSE(opensWith({physical}));
    EXPECT_FALSE(opensWith({metadata})) << "reference 1 is needed";
    EXPECT_FALSE(opensWith({physical, {.partitionMapType = 2, .partitionMapLength = 0}}));
    EXPECT_FALSE(
        opensWith({physical, {.partitionMapType = 2, .partitionTypeIdentifier = "*UDF Virtual Partition"}}));
    EXPECT_FALSE(
        opensWith({physical, {.partitionMapType = 2, .partitionTypeIdentifier = "*UDF Sparable Partition"}}));
    EXPECT_FALSE(opensWith({physical, {.partitionMapType = 2, .partitionNumber = 1}}))
        << "a metadata partition in itself";
    EXPECT_FALSE(opensWith({physical, physical})) << "no file set in block 0";
    for (const std::uint32_t outside : {5000U, 1U << 20U, UINT32_MAX}) {
        UdfPartitionMapSpec map = metadata;
        map.metadataFileLocation = outside;
        EXPECT_TRUE(opensWith({physical, map}));
        map.metadataMirrorFileLocation = outside;
        EXPECT_FALSE(opensWith({physical, map}));
    }

    // The file set opens without the partition of the files' data, which then cannot be read.
    EXPECT_TRUE(opensWith({{.partitionNumber = 3}, metadata}));
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 2U);
    EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
    EXPECT_EQ(sizeOf("BDMV/index.bdmv"), 0U);
}

TEST_F(Udf250, TheLastDescriptorOfAPartitionCounts)
{
    const auto descriptor = [](std::uint16_t number, std::uint32_t start) {
        return testsupport::udfPartitionDescriptor({number, start, 1000});
    };
    Udf250Image disc = sampleTree().udf250();
    disc.image.put(40 * kUdfSector, descriptor(1, 9999));
    EXPECT_TRUE(opens(disc.image)) << "another partition";
    disc.image.put(41 * kUdfSector, descriptor(0, 9999));
    EXPECT_FALSE(opens(disc.image));
    disc.image.put(42 * kUdfSector, descriptor(0, disc.partitionSector));
    ASSERT_TRUE(opens(disc.image));
    expectSampleTree();
}

// ---- The metadata file and its mirror ----

TEST_F(Udf250, TheMirrorStandsInForAMetadataFileThatHoldsNoFileSet)
{
    const Udf250Image whole = sampleTree().udf250();
    const std::uint64_t length = std::uint64_t{whole.metadataBlockCount} * kBlock;
    const std::uint32_t metadata = whole.metadataSector - whole.partitionSector;
    const std::vector<testsupport::UdfFileEntrySpec> broken = {
        {.tag = 260, .informationLength = length, .descriptors = {{32 * kBlock, metadata}}},
        {.descriptorKind = 1, .informationLength = length, .descriptors = {{32 * kBlock, metadata}}},
        {.informationLength = length, .descriptors = {}},
        {.informationLength = length, .descriptors = {{0, metadata}}},
        {.informationLength = length, .descriptors = {{32 * kBlock, 0}}},  // begins with itself
        {.informationLength = length, .descriptors = {{32 * kBlock, 9000}}},
        {.informationLength = length, .descriptors = {{0x80000000 + 32 * kBlock, metadata}}},
        {.informationLength = UINT64_MAX, .descriptors = {{0x3FFFFFFF, metadata}}},
        {.informationLength = length,
         .descriptors = {{32 * kBlock, metadata}},
         .descriptorsLength = UINT32_MAX},
        {.informationLength = length,
         .descriptors = std::vector(200, testsupport::UdfAllocationDescriptor{1, metadata})},
    };
    for (const auto& entry : broken) {
        Udf250Image disc = whole;
        ASSERT_TRUE(opens(disc.putEntry(disc.metadataFileSector, entry).image));
        expectSampleTree();
        EXPECT_FALSE(opens(disc.putEntry(disc.metadataMirrorFileSector, entry).image));
    }
}

TEST_F(Udf250, ACopyOfTheMetadataStandsInWhereTheFileSetIsGone)
{
    for (const bool duplicates : {true, false}) {
        for (const bool isMapFirst : {true, false}) {
            Udf250Image disc =
                sampleTree().udf250({.duplicateMetadata = duplicates, .isMetadataMapFirst = isMapFirst});
            EXPECT_EQ(opens(disc.wipe(disc.metadataSector).image), duplicates);
            EXPECT_FALSE(opens(disc.wipe(disc.metadataMirrorSector).image));
        }
    }
}

TEST_F(Udf250, WhereTheFileSetIsOutsideTheFirstThatCanBeReadCounts)
{
    // The file set in block 2 of the partition itself, which is reference 1.
    Udf250Image disc = sampleTree().udf250({.isMetadataMapFirst = true});
    testsupport::Bytes volume = testsupport::udfLogicalVolumeDescriptor(
        {.fileSetReference = 1, .partitionMaps = {{.partitionMapType = 2}, {}}});
    testsupport::putLe(volume, 252, 2, 4);
    disc.image.put(std::uint64_t{disc.logicalVolumeSector} * kBlock, volume);
    disc.image.put((std::uint64_t{disc.partitionSector} + 2) * kBlock,
                   testsupport::udfFileSetDescriptor({disc.entryBlocks.at(""), 0}));
    disc.wipe(disc.metadataSector);
    ASSERT_TRUE(opens(disc.image));
    expectSampleTree();
    ASSERT_TRUE(opens(disc.wipe(disc.metadataFileSector).image));
    expectSampleTree();
    ASSERT_TRUE(opens(disc.wipe(disc.metadataMirrorFileSector).image));
    EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
}

TEST_F(Udf250, WhichOfTheTwoIsDecidedOnceWhenOpening)
{
    Udf250Image disc = sampleTree().udf250();
    disc.wipe(disc.metadataSector + disc.entryBlocks.at("BDMV/PLAYLIST"));
    ASSERT_TRUE(opens(disc.image));
    EXPECT_EQ(list("BDMV/PLAYLIST"), m_failed);
    EXPECT_EQ(read("BDMV/index.bdmv"), pattern(100, 1));
    disc.wipe(disc.metadataFileSector);
    ASSERT_TRUE(opens(disc.image));
    expectSampleTree();
}

// ---- Limits ----

TEST_F(Udf250, NamesOf16BitsAreInvisible)
{
    ASSERT_TRUE(opens(Udf250Spec{.nodes = {{"BDMV/PLAYLIST/00010.mpls", {.compressionId = 16}}}}));
    EXPECT_EQ(list("BDMV/PLAYLIST"), Names{"00002"});
    EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), m_unreadable);
}

TEST_F(Udf250, ReadsEndAt2GiB)
{
    constexpr std::uint32_t kSectorAt2GiB = 1U << 20U;
    const Udf250Image whole = sampleTree().udf250();
    const std::uint32_t block = kSectorAt2GiB - whole.partitionSector;
    Udf250Spec spec;
    spec.nodes["bdmv.txt"].descriptors = {{7, block, 0}};
    ASSERT_TRUE(opens(spec));
    EXPECT_EQ(sizeOf("bdmv.txt"), 7U);
    EXPECT_EQ(read("bdmv.txt"), m_unreadable);

    // The file set in the last sector that is read, or in the first that is not; the rest stays where it was.
    const std::uint32_t metadata = whole.metadataSector - whole.partitionSector;
    for (const std::uint32_t far : {block - 1, block}) {
        Udf250Image disc = whole;
        disc.image.put((std::uint64_t{disc.partitionSector} + far) * kUdfSector,
                       testsupport::udfFileSetDescriptor({disc.entryBlocks.at(""), 1}));
        disc.wipe(disc.metadataMirrorFileSector);
        disc.putEntry(disc.metadataFileSector, {.informationLength = 32ULL * kBlock,
                                                .descriptors = {{kBlock, far}, {31 * kBlock, metadata + 1}}});
        EXPECT_EQ(opens(disc.image, 3ULL << 30U), far < block);
    }
}

TEST_F(Udf250, ExtentsThatLeaveTheMetadataPartition)
{
    const std::uint32_t count = sampleTree().udf250().metadataBlockCount;
    for (const std::uint32_t block : {count, count - 1, UINT32_MAX}) {
        Udf250Spec spec;
        spec.nodes["BDMV/PLAYLIST"] = {.informationLength = 2 * kBlock,
                                       .descriptors = {{{2 * kBlock, block, 1}}}};
        spec.directoryKind = 1;
        ASSERT_TRUE(opens(spec));
        EXPECT_EQ(list("BDMV/PLAYLIST"), m_failed);
        EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), m_unreadable);
        EXPECT_EQ(read("bdmv.txt"), pattern(7, 6));
    }
}

TEST_F(Udf250, EveryCutOffImageFailsOrReads)
{
    for (const bool isMainBroken : {false, true}) {
        Udf250Image disc = sampleTree().udf250({.metadataBlocksPerExtent = 5, .unrecordedBlocks = 2});
        if (isMainBroken) { disc.wipe(disc.metadataFileSector); }
        const std::string path = m_folder / "image";
        disc.image.writeTo(path);
        const std::uint64_t lastAnchor = disc.image.sizeBytes() - kUdfSector;
        for (std::uint64_t size = lastAnchor; size > 0; size -= kUdfSector) {
            std::filesystem::resize_file(path, isMainBroken ? size - 1000 : size);  // also within a sector
            if (open(path) != 0) { continue; }
            EXPECT_GT(size, std::uint64_t{disc.metadataSector} * kUdfSector);
            const testsupport::Bytes file = read("BDMV/PLAYLIST/00010.mpls");
            EXPECT_TRUE(file == pattern(5000, 2) || file == m_unreadable) << size;
            const Names names = list("BDMV/PLAYLIST");
            EXPECT_TRUE(names == (Names{"00010", "00002"}) || names == m_failed) << size;
        }
    }
}

}  // namespace
