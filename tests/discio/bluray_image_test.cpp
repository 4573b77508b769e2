// Images that lie about what they hold, or hold it far out.
#include "discio/bluray_source.h"
#include "tests/support/disc_tree.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

#include <array>

using testsupport::BuiltImage;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::ImageSpec;
using testsupport::kSector;
using testsupport::SparseImage;
using testsupport::UdfExtent;
using testsupport::udfFileEntry;

namespace {

using Names = std::vector<std::string>;

constexpr std::uint32_t kBlockAt2GiB = 1U << 20U;
constexpr std::uint32_t kUdfPartition = testsupport::kUdfPartitionSector;

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

BuiltImage iso(const ImageSpec& spec = {})
{
    return twoFiles().image(DiscForm::Iso, spec);
}
BuiltImage udf(const ImageSpec& spec = {})
{
    return twoFiles().image(DiscForm::Udf, spec);
}

// ---- The limit of 2 GiB ----

TEST_F(BlurayImage, IsoDataAreReadUpTo2GiB)
{
    ImageSpec spec;
    spec.sectors = {{"BDMV/A.x", kBlockAt2GiB}, {"BDMV/B.x", kBlockAt2GiB - 1}};
    openImage(iso(spec));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 1U) << "what is not read keeps its size";
    spec.sectors.erase("BDMV/A.x");
    openImage(iso(spec));
    EXPECT_TRUE(canRead("BDMV/B.x", Bytes(3000, 2))) << "begins below and runs past";

    openImage(iso({.sectors = {{"BDMV/A.x", 2 * kBlockAt2GiB}, {"BDMV/B.x", UINT32_MAX}}}));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "32 bits of its offset would be 0";
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), 3000U);

    openImage(DiscTree().add("BDMV/A.x", {}).image(DiscForm::Iso, {.sectors = {{"BDMV/A.x", kBlockAt2GiB}}}));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "nothing to read, but there";
}

TEST_F(BlurayImage, IsoDirectoryThatRunsPast2GiB)
{
    DiscTree tree;
    for (int i = 100; i < 160;
         ++i) {  // records of 40 bytes; the last ones stand in the directory's second block
        tree.add("BDMV/" + std::to_string(i) + ".x", {1});
    }
    openImage(tree.image(DiscForm::Iso, {.sectors = {{"BDMV", kBlockAt2GiB - 1}}}));
    EXPECT_EQ(list("BDMV").size(), 60U) << "read in one piece";
    EXPECT_TRUE(canRead("BDMV/100.x", {1}));
    EXPECT_FALSE(canRead("BDMV/159.x")) << "a search reads record by record";
    openImage(tree.image(DiscForm::Iso, {.sectors = {{"BDMV", kBlockAt2GiB}}}));
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_FALSE(canRead("BDMV/100.x"));
}

TEST_F(BlurayImage, UdfDataAreReadUpTo2GiB)
{
    ImageSpec spec;
    spec.sectors = {{"BDMV/A.x", kBlockAt2GiB}, {"BDMV/B.x", kBlockAt2GiB - 1}};
    openImage(udf(spec));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 1U);
    spec.sectors.erase("BDMV/A.x");
    openImage(udf(spec));
    EXPECT_TRUE(canRead("BDMV/B.x", Bytes(3000, 2)));
    spec.blocksPerExtent = 1;  // the second extent begins past the limit
    openImage(udf(spec));
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), 3000U);

    spec.sectors["BDMV"] = kBlockAt2GiB + 10;
    openImage(udf(spec));
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), 0U) << "its directory cannot be read";
}

TEST_F(BlurayImage, UdfStreamFileOf40GiBKeepsItsSize)
{
    const std::uint64_t size = 40ULL * 0x3FFFF800 - 1;
    BuiltImage image = udf();
    image.put(image.placeOf("BDMV/A.x").entry,
              udfFileEntry(
                  {.informationLength = size, .descriptors = std::vector(40, UdfExtent{0x3FFFF800, 1000})}));
    openImage(image);
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), size);
    EXPECT_FALSE(canRead("BDMV/A.x"));
}

// ---- Layouts and lies ----

TEST_F(BlurayImage, UdfFilesOfEveryLayout)
{
    for (const std::uint16_t tag : std::array<std::uint16_t, 2>{261, 266}) {
        for (const std::uint8_t kind : std::array<std::uint8_t, 3>{0, 1, 3}) {
            for (const std::uint32_t blocksPerExtent : {1U << 18U, 1U}) {
                ImageSpec spec;
                spec.partitionsBefore = 1;
                spec.fileEntryTag = tag;
                spec.descriptorKind = kind;
                spec.blocksPerExtent = blocksPerExtent;
                DiscTree tree = twoFiles();
                for (int i = 0; i < 100; ++i) {  // a directory of several blocks
                    tree.add("BDMV/MORE/" + std::to_string(i) + ".x", Bytes(5, static_cast<std::uint8_t>(i)));
                }
                openImage(tree.image(DiscForm::Udf, spec));
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
    BuiltImage image = udf();
    image.putLe(image.placeOf("BDMV").data + 40 + 38, 16, 1);  // the name behind that of the parent
    openImage(image);
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(list("BDMV"), Names{"B"});
}

TEST_F(BlurayImage, UdfDirectoryEndingInNonsenseIsSearchedButNotListed)
{
    const std::uint64_t whole = 3 * 44;  // the parent's entry has 40 bytes, padded names 44
    const std::uint64_t entry = udf().placeOf("BDMV").entry;
    openImage(udf().putLe(entry + 56, whole - 4 + 1, 8));
    EXPECT_FALSE(canRead("BDMV/A.x")) << "the extents do not cover it";
    for (const std::uint64_t rest : {1U, 37U, 38U}) {
        openImage(udf().putLe(entry + 56, whole - 4 + rest, 8).putLe(entry + 176, 2048, 4));
        EXPECT_TRUE(canRead("BDMV/B.x")) << rest;
        EXPECT_EQ(list("BDMV"), m_failed) << rest;
    }
}

TEST_F(BlurayImage, IsoRecordThatMakesNoSenseEndsASearchAndFailsAListing)
{
    const BuiltImage whole = twoFiles().add("BDMV/C.x", {3}).image(DiscForm::Iso);
    const auto openPatched = [&](std::uint64_t offset, std::uint32_t value, std::size_t width) {
        openImage(BuiltImage(whole).putLe(offset, value, width));
    };
    openPatched(whole.placeOf("BDMV/B.x").record, 20, 1);
    EXPECT_TRUE(canRead("BDMV/A.x", {1}));
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_FALSE(canRead("BDMV/C.x"));
    EXPECT_EQ(list("BDMV"), m_failed);

    const std::uint64_t directory = whole.placeOf("BDMV").record;
    openPatched(directory + 10, 34 + 34 + 38 + 38, 4);
    EXPECT_EQ(list("BDMV"), (Names{"A", "B"}));
    openPatched(directory + 10, 34 + 34 + 38 + 37, 4);
    EXPECT_TRUE(canRead("BDMV/A.x", {1}));
    EXPECT_EQ(list("BDMV"), m_failed) << "a record runs past the end";
    openPatched(directory + 10, 0, 4);
    EXPECT_EQ(list("BDMV"), Names{}) << "an empty directory";
    openPatched(directory + 10, 1U << 30U, 4);
    EXPECT_TRUE(canRead("BDMV/C.x", {3}));
    EXPECT_EQ(list("BDMV"), m_failed) << "the image does not hold all of it";
    openPatched(directory + 25, 0, 1);
    EXPECT_FALSE(canRead("BDMV/B.x"));
    EXPECT_EQ(list("BDMV"), m_failed) << "it is a file";
    openPatched(testsupport::kIsoDescriptor + 130, 0, 2);
    EXPECT_EQ(list("BDMV"), m_failed);
}

TEST_F(BlurayImage, IsoBlockSizeIsTakenAsItStands)
{
    // Blocks of 512 bytes: every number of a block is that of its sector times four.
    SparseImage image = iso().putBe(testsupport::kIsoDescriptor + 130, 512, 2);
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
    openImage(iso().putLe(iso().placeOf("BDMV/A.x").record + 10, UINT32_MAX, 4));
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/A.x"), UINT32_MAX);

    // Extents that lie over each other: all of them are in the image, their sum is not.
    const auto overlapping = [](std::size_t count) {
        BuiltImage image = udf({.sectors = {{"BDMV/B.x", kUdfPartition + 100}}});
        image.put(image.placeOf("BDMV/B.x").entry,
                  udfFileEntry({.informationLength = count * 250 * kSector,
                                .descriptors = std::vector(count, UdfExtent{250 * kSector, 0})}));
        return image;
    };
    openImage(overlapping(200), (kUdfPartition + 250) * kSector);
    EXPECT_FALSE(canRead("BDMV/B.x"));
    openImage(overlapping(2), (kUdfPartition + 250) * kSector);
    EXPECT_TRUE(canRead("BDMV/B.x"));
    openImage(overlapping(2), (kUdfPartition + 250) * kSector - 1);
    EXPECT_FALSE(canRead("BDMV/B.x")) << "the last byte is missing";
}

TEST_F(BlurayImage, DirectoriesAreReadUpToTheirLimit)
{
    constexpr std::uint32_t kOver = 32U << 20U;  // with the root, more than all directories may be
    const ImageSpec spec{.sectors = {{"BDMV", 1000}}};
    openImage(iso(spec).putLe(iso(spec).placeOf("BDMV").record + 10, kOver, 4), 1U << 30U);
    EXPECT_EQ(list("BDMV"), m_failed);
    EXPECT_NE(m_source.budget->reached(), nullptr);
    const std::uint64_t entry = udf(spec).placeOf("BDMV").entry;
    openImage(udf(spec).putLe(entry + 56, kOver, 8).putLe(entry + 176, kOver, 4), 1U << 30U);
    EXPECT_FALSE(canRead("BDMV/A.x"));
    EXPECT_NE(m_source.budget->reached(), nullptr);
}

TEST_F(BlurayImage, EveryCutOffImageFailsOrReads)
{
    std::size_t cases = 0;
    for (const SparseImage& image :
         {twoFiles().image(DiscForm::Hybrid), udf({.fileEntryTag = 266, .descriptorKind = 3})}) {
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
