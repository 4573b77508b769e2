// Images of UDF 2.50, which keep the file set in a metadata partition, and the lies that they can tell.
#include "tests/discio/bluray_source_fixture.h"

using discio::BluraySourceMode;
using discio_test::BluraySource;
using discio_test::Names;
using discio_test::pattern;
using discio_test::sampleTree;
using testsupport::BuiltImage;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::ImageSpec;
using testsupport::kMetadataFile;
using testsupport::kMetadataMirrorFile;
using testsupport::kSector;
using testsupport::SparseImage;
using testsupport::udfFileEntry;

namespace {

constexpr std::uint32_t kBlock = kSector;
constexpr std::uint32_t kPartition = testsupport::kUdfPartitionSector;

BuiltImage sampleImage(const ImageSpec& spec = {})
{
    return sampleTree().image(DiscForm::Udf250, spec);
}

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
            for (const std::uint32_t blocksPerExtent : {1U << 18U, 1U, 3U}) {
                for (const std::uint8_t kind : std::array<std::uint8_t, 3>{0, 1, 3}) {
                    ImageSpec spec;
                    spec.hasMetadataCopy = duplicates;
                    spec.isMetadataMapFirst = isMapFirst;
                    spec.blocksPerExtent = blocksPerExtent;
                    spec.unrecordedBlocks = blocksPerExtent == 3 ? 40 : 0;
                    spec.descriptorKind = kind;
                    spec.partitionNumber = kind;
                    ASSERT_TRUE(opens(sampleImage(spec)));
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
    for (const std::uint32_t blocksPerExtent : {1U << 18U, 2U, 1U}) {
        ASSERT_TRUE(opens(tree.image(DiscForm::Udf250, {.blocksPerExtent = blocksPerExtent})));
        EXPECT_EQ(list("BDMV", ".x").size(), 200U);
        EXPECT_EQ(read("BDMV/299.x"), testsupport::Bytes{299 - 256});
    }
}

// ---- What opened before opens as before ----

TEST_F(Udf250, MapsAreLookedAtWhereNothingElseOpensTheImage)
{
    // Reference 0 is the first partition descriptor at first: a file set in its block 0 is the disc's.
    BuiltImage disc = sampleImage({.isMetadataMapFirst = true});
    EXPECT_TRUE(opens(disc));
    EXPECT_EQ(m_source.udf.partitions.size(), 2U);
    disc.put(kMetadataFile, testsupport::udfFileSet(77, 0));
    EXPECT_TRUE(opens(disc));
    EXPECT_EQ(m_source.udf.partitions.size(), 1U);
    EXPECT_EQ(m_source.udf.rootIcb.block, 77U);

    SparseImage bridge = sampleImage();
    bridge.putAll(DiscTree().add("BDMV/of.iso", {1}).image(DiscForm::Iso));
    EXPECT_TRUE(opens(bridge));
    EXPECT_EQ(m_source.mode, BluraySourceMode::Iso);
    EXPECT_EQ(read("BDMV/of.iso"), testsupport::Bytes{1});
}

// ---- The maps and what they name ----

TEST_F(Udf250, MapsThatLeadNowhere)
{
    const Bytes physical = testsupport::udfPartitionMap(1);
    const Bytes metadata = testsupport::udfPartitionMap(2);
    const auto opensWith = [this](const std::vector<Bytes>& maps) {
        return opens(
            sampleImage().put(testsupport::kUdfLogicalVolume, testsupport::udfLogicalVolume(1, maps)));
    };
    const auto identified = [&metadata](const char* identifier) {
        Bytes map = metadata;
        testsupport::putText(map, 5, std::string(identifier) + '\0');
        return map;
    };
    EXPECT_TRUE(opensWith({physical, metadata}));
    EXPECT_FALSE(opens(sampleImage().putLe(testsupport::kUdfLogicalVolume + 268, 0, 4)));
    EXPECT_FALSE(opens(sampleImage().putLe(testsupport::kUdfLogicalVolume + 268, 1, 4)));
    EXPECT_FALSE(opens(sampleImage().putLe(testsupport::kUdfLogicalVolume + 446 + 1, 0, 1)));
    EXPECT_FALSE(opensWith({physical, identified("*UDF Virtual Partition")}));
    EXPECT_FALSE(opensWith({physical, identified("*UDF Sparable Partition")}));
    EXPECT_FALSE(opensWith({physical, testsupport::udfPartitionMap(2, 1)}))
        << "a metadata partition in itself";
    EXPECT_FALSE(opensWith({physical, physical})) << "no file set in block 0";
    for (const std::uint32_t outside : {5000U, 1U << 20U, UINT32_MAX}) {
        Bytes map = metadata;
        testsupport::putLe(map, 40, outside, 4);
        EXPECT_TRUE(opensWith({physical, map}));
        testsupport::putLe(map, 44, outside, 4);
        EXPECT_FALSE(opensWith({physical, map}));
    }

    // The file set opens without the partition of the files' data, which then cannot be read.
    EXPECT_TRUE(opensWith({testsupport::udfPartitionMap(1, 3), metadata}));
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 2U);
    EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
    EXPECT_EQ(sizeOf("BDMV/index.bdmv"), 0U);
}

TEST_F(Udf250, TheLastDescriptorOfAPartitionCounts)
{
    BuiltImage disc = sampleImage();
    disc.put(40 * kSector, testsupport::udfPartition(1, 9999));
    EXPECT_TRUE(opens(disc)) << "another partition";
    disc.put(41 * kSector, testsupport::udfPartition(0, 9999));
    EXPECT_FALSE(opens(disc));
    disc.put(42 * kSector, testsupport::udfPartition(0, kPartition));
    ASSERT_TRUE(opens(disc));
    expectSampleTree();
}

// ---- The metadata file and its mirror ----

TEST_F(Udf250, TheMirrorStandsInForAMetadataFileThatHoldsNoFileSet)
{
    const BuiltImage whole = sampleImage();
    const std::uint64_t length = std::uint64_t{whole.metadataBlockCount()} * kBlock;
    const auto metadata = static_cast<std::uint32_t>(whole.fileSet() / kSector - kPartition);
    const std::vector<testsupport::UdfFileEntrySpec> broken = {
        {.tag = 260, .informationLength = length, .descriptors = {{32 * kBlock, metadata}}},
        {.descriptorKind = 1, .informationLength = length, .descriptors = {{32 * kBlock, metadata}}},
        {.informationLength = length, .descriptors = {}},
        {.informationLength = length, .descriptors = {{0, metadata}}},
        {.informationLength = length, .descriptors = {{32 * kBlock, 0}}},  // begins with itself
        {.informationLength = length, .descriptors = {{32 * kBlock, 9000}}},
        {.informationLength = length, .descriptors = {{0x80000000 + 32 * kBlock, metadata}}},
        {.informationLength = UINT64_MAX, .descriptors = {{0x3FFFFFFF, metadata}}},
        {.informationLength = length, .descriptors = std::vector(200, testsupport::UdfExtent{1, metadata})},
    };
    std::vector<Bytes> entries;
    for (const auto& spec : broken) {
        entries.push_back(udfFileEntry(spec));
    }
    entries.push_back(udfFileEntry({.informationLength = length, .descriptors = {{32 * kBlock, metadata}}}));
    testsupport::putLe(entries.back(), 172, UINT32_MAX, 4);
    for (const Bytes& entry : entries) {
        BuiltImage disc = whole;
        ASSERT_TRUE(opens(disc.wipe(kMetadataFile).put(kMetadataFile, entry)));
        expectSampleTree();
        EXPECT_FALSE(opens(disc.wipe(kMetadataMirrorFile).put(kMetadataMirrorFile, entry)));
    }
}

TEST_F(Udf250, ACopyOfTheMetadataStandsInWhereTheFileSetIsGone)
{
    for (const bool hasCopy : {true, false}) {
        for (const bool isMapFirst : {true, false}) {
            BuiltImage disc = sampleImage({.hasMetadataCopy = hasCopy, .isMetadataMapFirst = isMapFirst});
            EXPECT_EQ(opens(disc.wipe(disc.fileSet())), hasCopy);
            EXPECT_FALSE(opens(disc.wipe(disc.fileSetCopy())));
        }
    }
}

TEST_F(Udf250, WhereTheFileSetIsOutsideTheFirstThatCanBeReadCounts)
{
    // The file set in block 2 of the partition itself, which is reference 1.
    BuiltImage disc = sampleImage({.isMetadataMapFirst = true});
    disc.putLe(testsupport::kUdfLogicalVolume + 252, 2, 4).putLe(testsupport::kUdfLogicalVolume + 256, 1, 2);
    disc.put((kPartition + 2) * kSector, testsupport::udfFileSet(2, 0));
    disc.wipe(disc.fileSet());
    ASSERT_TRUE(opens(disc));
    expectSampleTree();
    ASSERT_TRUE(opens(disc.wipe(kMetadataFile)));
    expectSampleTree();
    ASSERT_TRUE(opens(disc.wipe(kMetadataMirrorFile)));
    EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
}

TEST_F(Udf250, WhichOfTheTwoIsDecidedOnceWhenOpening)
{
    BuiltImage disc = sampleImage();
    ASSERT_TRUE(opens(disc.wipe(disc.placeOf("BDMV/PLAYLIST").entry)));
    EXPECT_EQ(list("BDMV/PLAYLIST"), m_failed);
    EXPECT_EQ(read("BDMV/index.bdmv"), pattern(100, 1));
    ASSERT_TRUE(opens(disc.wipe(kMetadataFile)));
    expectSampleTree();
}

// ---- Limits ----

TEST_F(Udf250, NamesOf16BitsAreInvisible)
{
    BuiltImage disc = sampleImage();
    disc.putLe(disc.placeOf("BDMV/PLAYLIST").data + 40 + 38, 16, 1);  // the name behind that of the parent
    ASSERT_TRUE(opens(disc));
    EXPECT_EQ(list("BDMV/PLAYLIST"), Names{"00002"});
    EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), m_unreadable);
}

TEST_F(Udf250, ReadsEndAt2GiB)
{
    constexpr std::uint32_t kSectorAt2GiB = 1U << 20U;
    ASSERT_TRUE(opens(sampleImage({.sectors = {{"bdmv.txt", kSectorAt2GiB}}})));
    EXPECT_EQ(sizeOf("bdmv.txt"), 7U);
    EXPECT_EQ(read("bdmv.txt"), m_unreadable);

    // The file set in the last sector that is read, or in the first that is not; the rest stays where it was.
    const BuiltImage whole = sampleImage();
    const auto metadata = static_cast<std::uint32_t>(whole.fileSet() / kSector - kPartition);
    for (const std::uint32_t far : {kSectorAt2GiB - 1, kSectorAt2GiB}) {
        BuiltImage disc = whole;
        disc.put(far * kSector, testsupport::udfFileSet(2, 1));
        disc.wipe(kMetadataMirrorFile);
        disc.put(kMetadataFile,
                 udfFileEntry({.informationLength = 32ULL * kBlock,
                               .descriptors = {{kBlock, far - kPartition}, {31 * kBlock, metadata + 1}}}));
        EXPECT_EQ(opens(disc, 3ULL << 30U), far < kSectorAt2GiB);
    }
}

TEST_F(Udf250, ExtentsThatLeaveTheMetadataPartition)
{
    const std::uint32_t count = sampleImage().metadataBlockCount();
    for (const std::uint32_t block : {count, count - 1, UINT32_MAX}) {
        BuiltImage disc = sampleImage();
        disc.put(disc.placeOf("BDMV/PLAYLIST").entry,
                 udfFileEntry({.tag = 266,
                               .fileType = 4,
                               .descriptorKind = 1,
                               .informationLength = 2 * kBlock,
                               .descriptors = {{2 * kBlock, block, 1}}}));
        ASSERT_TRUE(opens(disc));
        EXPECT_EQ(list("BDMV/PLAYLIST"), m_failed);
        EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), m_unreadable);
        EXPECT_EQ(read("bdmv.txt"), pattern(7, 6));
    }
}

TEST_F(Udf250, EveryCutOffImageFailsOrReads)
{
    for (const bool isMainBroken : {false, true}) {
        BuiltImage disc = sampleImage({.blocksPerExtent = 5, .unrecordedBlocks = 2});
        if (isMainBroken) { disc.wipe(kMetadataFile); }
        const std::string path = m_folder / "image";
        disc.writeTo(path);
        const std::uint64_t lastAnchor = disc.sizeBytes() - kSector;
        for (std::uint64_t size = lastAnchor; size > 0; size -= kSector) {
            std::filesystem::resize_file(path, isMainBroken ? size - 1000 : size);  // also within a sector
            if (open(path) != 0) { continue; }
            EXPECT_GT(size, disc.fileSet());
            const testsupport::Bytes file = read("BDMV/PLAYLIST/00010.mpls");
            EXPECT_TRUE(file == pattern(5000, 2) || file == m_unreadable) << size;
            const Names names = list("BDMV/PLAYLIST");
            EXPECT_TRUE(names == (Names{"00010", "00002"}) || names == m_failed) << size;
        }
    }
}

}  // namespace
