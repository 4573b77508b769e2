// Images that lie about what they hold, or hold it far out.
#include "discio/bluray_source.h"
#include "tests/support/disc_tree.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

#include <array>

using testsupport::Bytes;
using testsupport::DiscTree;
using testsupport::IsoSpec;
using testsupport::kIsoBlock;
using testsupport::SparseImage;
using testsupport::UdfSpec;

namespace {

using Names = std::vector<std::string>;

constexpr std::uint32_t kBlockAt2GiB = 1U << 20U;
constexpr std::uint32_t kUdfPartition = 320;

class BlurayImage : public testing::Test {
protected:
    void openImage(const SparseImage& image) { openImage(image, image.sizeBytes()); }
    void openImage(const SparseImage& image, std::uint64_t sizeBytes)
    {
        std::array<char, 256> text = {};
        image.writeTo(m_folder / "image", sizeBytes);
        ASSERT_EQ(openBluraySource((m_folder / "image").c_str(), m_source, text.data(), text.size()), 0)
            << text.data();
    }

    [[nodiscard]] bool canRead(const std::string& path, const Bytes& expected) const
    {
        Bytes bytes;
        if (readWholeFile(m_source, path, bytes) != 0) { return false; }
        EXPECT_TRUE(bytes == expected) << path;
        return true;
    }
    [[nodiscard]] bool canRead(const std::string& path) const
    {
        Bytes bytes;
        return readWholeFile(m_source, path, bytes) == 0;
    }
    [[nodiscard]] Names list(const std::string& directory) const
    {
        Names names;
        return listFilesWithSuffix(m_source, directory, ".x", names) == 0 ? names : Names{"failed"};
    }

    const Names m_failed = {"failed"};
    testsupport::TemporaryFolder m_folder;
    discio::BlurayDiscSource m_source;
};

DiscTree twoFiles()
{
    return DiscTree().add("BDMV/A.x", {1}).add("BDMV/B.x", Bytes(3000, 2));
}

// ---- The limit of 2 GiB ----

TEST_F(BlurayImage, IsoDataAreReadUpTo2GiB)
{
    IsoSpec spec;
    spec.records["BDMV/A.x"].block = kBlockAt2GiB;
    spec.records["BDMV/B.x"].block = kBlockAt2GiB - 1;
    openImage(twoFiles().iso(spec));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 1U) << "what is not read keeps its size";
    spec.records.erase("BDMV/A.x");
    openImage(twoFiles().iso(spec));
    EXPECT_TRUE(canRead("BDMV/B.x", Bytes(3000, 2))) << "begins below and runs past";

    spec.records["BDMV/A.x"].block = 2 * kBlockAt2GiB;
    spec.records["BDMV/B.x"].block = UINT32_MAX;
    openImage(twoFiles().iso(spec));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "32 bits of its offset would be 0";
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), 3000U);

    openImage(DiscTree().add("BDMV/A.x", {}).iso({.records = {{"BDMV/A.x", {.block = kBlockAt2GiB}}}}));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "nothing to read, but there";
}

TEST_F(BlurayImage, IsoDirectoryThatRunsPast2GiB)
{
    DiscTree tree;
    for (int i = 100; i < 160;
         ++i) {  // records of 40 bytes; the last ones stand in the directory's second block
        tree.add("BDMV/" + std::to_string(i) + ".x", {1});
    }
    IsoSpec spec;
    spec.records["BDMV"].block = kBlockAt2GiB - 1;
    openImage(tree.iso(spec));
    EXPECT_EQ(list("BDMV").size(), 60U) << "read in one piece";
    EXPECT_TRUE(canRead("BDMV/100.x", {1}));
    EXPECT_FALSE(canRead("BDMV/159.x")) << "a search reads record by record";
    spec.records["BDMV"].block = kBlockAt2GiB;
    openImage(tree.iso(spec));
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_FALSE(canRead("BDMV/100.x"));
}

TEST_F(BlurayImage, UdfDataAreReadUpTo2GiB)
{
    UdfSpec spec;
    spec.nodes["BDMV/A.x"].block = kBlockAt2GiB - kUdfPartition;
    spec.nodes["BDMV/B.x"].block = kBlockAt2GiB - kUdfPartition - 1;
    openImage(twoFiles().udf(spec));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 1U);
    spec.nodes.erase("BDMV/A.x");
    openImage(twoFiles().udf(spec));
    EXPECT_TRUE(canRead("BDMV/B.x", Bytes(3000, 2)));
    spec.blocksPerExtent = 1;  // the second extent begins past the limit
    openImage(twoFiles().udf(spec));
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), 3000U);

    spec.nodes["BDMV"].block = kBlockAt2GiB - kUdfPartition + 10;
    openImage(twoFiles().udf(spec));
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 0U) << "its directory cannot be read";
}

TEST_F(BlurayImage, UdfStreamFileOf40GiBKeepsItsSize)
{
    UdfSpec spec;
    auto& stream = spec.nodes["BDMV/A.x"];
    stream.descriptors.emplace(40, testsupport::UdfAllocationDescriptor{0x3FFFF800, 1000});
    stream.informationLength = 40ULL * 0x3FFFF800 - 1;
    openImage(twoFiles().udf(spec));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), *stream.informationLength);
    EXPECT_FALSE(canRead("BDMV/A.x"));
}

// ---- Layouts and lies ----

TEST_F(BlurayImage, UdfFilesOfEveryLayout)
{
    for (const std::uint16_t tag : std::array<std::uint16_t, 2>{261, 266}) {
        for (const std::uint8_t kind : std::array<std::uint8_t, 3>{0, 1, 3}) {
            for (const std::size_t blocksPerExtent : {SIZE_MAX, std::size_t{1}}) {
                UdfSpec spec;
                spec.partitionStarts = {9999, 400};
                spec.partition = 1;
                spec.fileEntryTag = tag;
                spec.descriptorKind = kind;
                spec.blocksPerExtent = blocksPerExtent;
                DiscTree tree = twoFiles();
                for (int i = 0; i < 100; ++i) {  // a directory of several blocks
                    tree.add("BDMV/MORE/" + std::to_string(i) + ".x", Bytes(5, static_cast<std::uint8_t>(i)));
                }
                openImage(tree.udf(spec));
                EXPECT_TRUE(canRead("BDMV/A.x", {1}));
                EXPECT_TRUE(canRead("BDMV/B.x", Bytes(3000, 2)));
                EXPECT_EQ(list("BDMV/MORE").size(), 100U);
                EXPECT_TRUE(canRead("BDMV/MORE/99.x", Bytes(5, 99)));
            }
        }
    }
}

TEST_F(BlurayImage, UdfNamesOf16BitsAreInvisible)
{
    openImage(twoFiles().udf({.nodes = {{"BDMV/A.x", {.compressionId = 16}}}}));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(list("BDMV"), Names{"B"});
}

TEST_F(BlurayImage, UdfDirectoryEndingInNonsenseIsSearchedButNotListed)
{
    const std::uint64_t whole = 3 * 44;  // the parent's entry has 40 bytes, padded names 44
    openImage(twoFiles().udf({.nodes = {{"BDMV", {.informationLength = whole - 4 + 1}}}}));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "the extents do not cover it";
    for (const std::uint64_t rest : {1U, 37U, 38U}) {
        UdfSpec spec;
        auto& directory = spec.nodes["BDMV"];
        directory.block = 100;
        directory.informationLength = whole - 4 + rest;
        directory.descriptors.emplace(1, testsupport::UdfAllocationDescriptor{2048, 100});
        openImage(twoFiles().udf(spec));
        EXPECT_TRUE(canRead("BDMV/B.x")) << rest;
        EXPECT_EQ(list("BDMV"), m_failed) << rest;
    }
}

TEST_F(BlurayImage, IsoRecordThatMakesNoSenseEndsASearchAndFailsAListing)
{
    const DiscTree tree = twoFiles().add("BDMV/C.x", {3});
    openImage(tree.iso({.records = {{"BDMV/B.x", {.recordLength = 20}}}}));
    EXPECT_TRUE(canRead("BDMV/A.x", {1}));
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_FALSE(canRead("BDMV/C.x"));
    EXPECT_EQ(list("BDMV"), m_failed);

    openImage(tree.iso({.records = {{"BDMV", {.sizeBytes = 34 + 34 + 38 + 38}}}}));
    EXPECT_EQ(list("BDMV"), (Names{"A", "B"}));
    openImage(tree.iso({.records = {{"BDMV", {.sizeBytes = 34 + 34 + 38 + 37}}}}));
    EXPECT_TRUE(canRead("BDMV/A.x", {1}));
    EXPECT_EQ(list("BDMV"), m_failed) << "a record runs past the end";
    openImage(tree.iso({.records = {{"BDMV", {.sizeBytes = 0}}}}));
    EXPECT_EQ(list("BDMV"), Names{}) << "an empty directory";
    openImage(tree.iso({.records = {{"BDMV", {.sizeBytes = 1U << 30U}}}}));
    EXPECT_TRUE(canRead("BDMV/C.x", {3}));
    EXPECT_EQ(list("BDMV"), m_failed) << "the image does not hold all of it";
    openImage(tree.iso({.records = {{"BDMV", {.flags = 0}}, {"BDMV/A.x", {.flags = 2}}}}));
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(list("BDMV"), m_failed) << "it is a file";
    openImage(tree.iso({.blockSizeBigEndian = 0}));
    EXPECT_EQ(list("BDMV"), m_failed);
}

TEST_F(BlurayImage, IsoBlockSizeIsTakenAsItStands)
{
    // Blocks of 512 bytes: every number of a block is that of its sector times four.
    IsoSpec spec;
    spec.blockSizeBigEndian = 512;
    SparseImage image = twoFiles().iso(spec);
    openImage(image);
    EXPECT_EQ(list("BDMV"), m_failed) << "the root is said to be in sector 4";
    image.put(18 * 512,
              testsupport::isoRecord({.identifier = "BDMV", .block = 38, .sizeBytes = 512, .flags = 2}));
    image.put(38 * 512, testsupport::isoRecord({.identifier = "Q.x;1", .block = 39, .sizeBytes = 2}));
    image.put(39 * 512, {7, 8});
    openImage(image);
    EXPECT_TRUE(canRead("BDMV/Q.x", {7, 8}));
    EXPECT_EQ(list("BDMV"), Names{"Q"});
}

TEST_F(BlurayImage, ClaimedSizesTakeNoMemory)
{
    openImage(twoFiles().iso({.records = {{"BDMV/A.x", {.sizeBytes = UINT32_MAX}}}}));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), UINT32_MAX);

    // Extents that lie over each other: all of them are in the image, their sum is not.
    UdfSpec spec;
    auto& file = spec.nodes["BDMV/B.x"];
    file.descriptors.emplace(10000, testsupport::UdfAllocationDescriptor{300 * 2048, 0});
    file.informationLength = 10000ULL * 300 * 2048;
    openImage(twoFiles().udf(spec), (kUdfPartition + 300) * kIsoBlock);
    EXPECT_FALSE(canRead("BDMV/B.x"));
    file.descriptors->resize(2);
    file.informationLength = 2 * 300 * 2048;
    openImage(twoFiles().udf(spec), (kUdfPartition + 300) * kIsoBlock);
    EXPECT_TRUE(canRead("BDMV/B.x"));
    openImage(twoFiles().udf(spec), (kUdfPartition + 300) * kIsoBlock - 1);
    EXPECT_FALSE(canRead("BDMV/B.x")) << "the last byte is missing";
}

TEST_F(BlurayImage, DirectoriesAreReadUpToTheirLimit)
{
    constexpr std::uint32_t kOver = 32U << 20U;  // with the root, more than all directories may be
    openImage(twoFiles().iso({.records = {{"BDMV", {.block = 1000, .sizeBytes = kOver}}}}), 1U << 30U);
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_NE(m_source.budget->reached(), nullptr);
    UdfSpec spec;
    auto& directory = spec.nodes["BDMV"];
    directory.block = 100;
    directory.informationLength = kOver;
    directory.descriptors.emplace(1, testsupport::UdfAllocationDescriptor{kOver, 100});
    openImage(twoFiles().udf(spec), 1U << 30U);
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_NE(m_source.budget->reached(), nullptr);
}

TEST_F(BlurayImage, EveryCutOffImageFailsOrReads)
{
    std::size_t cases = 0;
    for (const SparseImage& image :
         {twoFiles().hybrid(), twoFiles().udf({.fileEntryTag = 266, .descriptorKind = 3})}) {
        image.writeTo(m_folder / "image");
        for (std::uint64_t size = image.sizeBytes(); size > 0; size -= std::min<std::uint64_t>(size, 1000)) {
            std::filesystem::resize_file(m_folder / "image", size);
            ++cases;
            if (openBluraySource((m_folder / "image").c_str(), m_source, nullptr, 0) != 0) { continue; }
            const bool isRead = canRead("BDMV/B.x");
            const Names names = list("BDMV");
            EXPECT_TRUE(isRead || size < image.sizeBytes());
            EXPECT_TRUE(names == (Names{"A", "B"}) || names == m_failed) << size;
        }
    }
    if (!HasFailure()) {
        testsupport::recordFault(
            "Image: cut off anywhere",
            "fails with a message, or is read, with a warning where something is missing", cases);
    }
}

}  // namespace
