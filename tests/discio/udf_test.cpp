#include "discio/udf.h"
#include "tests/discio/image_file.h"
#include "tests/support/image_builder.h"

using discio::DiscDirectory;
using testsupport::append;
using testsupport::BuiltImage;
using testsupport::Bytes;
using testsupport::ImageSpec;
using testsupport::kSector;
using testsupport::putBytes;
using testsupport::SparseImage;
using testsupport::udfFileIdentifier;
using testsupport::UdfFileIdentifierSpec;

namespace {

// ---- Directories ----

Bytes joined(const std::vector<UdfFileIdentifierSpec>& specs)
{
    Bytes bytes;
    for (const UdfFileIdentifierSpec& spec : specs) {
        append(bytes, udfFileIdentifier(spec));
    }
    return bytes;
}

// A, the lying descriptor and A again.
Bytes between(const UdfFileIdentifierSpec& spec, std::size_t offset, std::uint64_t lie, std::size_t width)
{
    Bytes bytes = joined({{.name = "A"}});
    Bytes liar = udfFileIdentifier(spec);
    testsupport::putLe(liar, offset, lie, width);
    append(bytes, liar);
    append(bytes, joined({{.name = "A"}}));
    return bytes;
}

// The names between bars, and a full stop where the directory is listable.
std::string namesIn(const Bytes& bytes)
{
    const DiscDirectory directory = discio::parseUdfDirectory(bytes);
    std::string names = "|";
    for (const discio::DiscEntry& entry : directory.entries()) {
        names += entry.name + '|';
    }
    return directory.isListable ? names + '.' : names;
}

TEST(UdfDirectory, GivesNamesWithTheirIcbs)
{
    const DiscDirectory directory = discio::parseUdfDirectory(
        joined({{.characteristics = 0x0A},
                {.name = "STREAM", .block = 0x01020304, .partition = 0x0506, .characteristics = 0x02},
                {.name = "a.clpi", .block = 9},
                {.name = "A.CLPI", .block = 10}}));
    EXPECT_TRUE(directory.isListable);
    const discio::DiscEntry* const stream = directory.find("stream");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(stream->isDirectory);
    EXPECT_EQ(stream->block, 0x01020304U);
    EXPECT_EQ(stream->partition, 0x0506U);
    const discio::DiscEntry* const clip = directory.find("A.CLPI");
    ASSERT_NE(clip, nullptr);
    EXPECT_FALSE(clip->isDirectory);
    EXPECT_EQ(clip->block, 9U) << "the first of equal names";
    EXPECT_EQ(directory.find("A.CLP"), nullptr);
    EXPECT_EQ(directory.find(""), nullptr);
}

TEST(UdfDirectory, WhichNamesAreSeen)
{
    EXPECT_EQ(namesIn({}), "|.");
    EXPECT_EQ(namesIn(joined({{.name = "A"}, {.name = "WIDE", .compressionId = 16}, {.name = "B"}})),
              "|A|B|.");
    EXPECT_EQ(namesIn(joined({{.name = "GONE", .characteristics = 0x04}})), "|GONE|.");
    EXPECT_EQ(namesIn(joined({{.name = "A", .implementationUseSize = 33}, {.name = "B"}})), "|A|B|.");
    EXPECT_EQ(namesIn(between({.name = "X"}, 19, 1, 1)), "|A|A|.") << "no letter";
    const std::string longest(254, 'x');
    EXPECT_EQ(namesIn(joined({{.name = longest}, {.name = "B"}})), "|" + longest + "|B|.");
}

TEST(UdfDirectory, WhatMakesNoSenseEndsIt)
{
    const UdfFileIdentifierSpec a{.name = "A"};  // 40 bytes
    EXPECT_EQ(namesIn(between({.name = "X"}, 0, 258, 2)), "|A|");
    EXPECT_EQ(namesIn(between({.name = "XYZ"}, 10, 23, 2)), "|A|") << "40 bytes of 42";
    EXPECT_EQ(namesIn(between({.name = "XYZ"}, 10, 25, 2)), "|A|XYZ|A|.") << "rounded up to 44";
    EXPECT_EQ(namesIn(between({.name = "X"}, 10, 0xFFFF, 2)), "|A|");
    EXPECT_EQ(namesIn(between({.name = "X"}, 19, 3, 1)), "|A|");

    for (std::size_t rest = 1; rest < 40; ++rest) {
        Bytes bytes = joined({a});
        bytes.resize(bytes.size() + rest);
        ASSERT_EQ(namesIn(bytes), "|A|") << rest;
    }
    const Bytes whole = joined({a, a});
    for (std::size_t size = 41; size < whole.size(); ++size) {
        ASSERT_EQ(namesIn(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), "|A|")
            << size;
    }
}

// ---- The volume ----

constexpr std::uint64_t kPartition = testsupport::kUdfPartitionSector;

class UdfVolumeTest : public discio_test::ImageFileTest {
protected:
    bool isFound(const SparseImage& image) { return findUdfVolume(imageOf(image)).has_value(); }
    // With a number of 4 bytes patched.
    bool isFoundWith(std::uint64_t offset, std::uint32_t value)
    {
        return isFound(content().putLe(offset, value, 4));
    }
    static BuiltImage content(const ImageSpec& spec = {})
    {
        return buildImage({{"A", Bytes(1)}}, testsupport::DiscForm::Udf, spec);
    }

    static Bytes logicalVolume(std::uint32_t fileSetBlock)
    {
        Bytes sector = testsupport::udfLogicalVolume(0, {});
        testsupport::putLe(sector, 252, fileSetBlock, 4);
        return sector;
    }
};

TEST_F(UdfVolumeTest, IsFoundByItsAnchor)
{
    SparseImage image = content();
    image.put(testsupport::kUdfFirstPartition + kSector, testsupport::udfPartition(1, 0xFFFFFF));
    const auto volume = findUdfVolume(imageOf(image));
    ASSERT_TRUE(volume);
    ASSERT_EQ(volume->partitions.size(), 2U);
    EXPECT_EQ(volume->partitions[0].startSector, kPartition);
    EXPECT_EQ(volume->partitions[1].startSector, 0xFFFFFFU);
    EXPECT_EQ(volume->rootIcb.block, 2U);
    EXPECT_EQ(volume->rootIcb.partition, 0U);
    EXPECT_FALSE(isFoundWith(testsupport::kUdfAnchor, 3));
    EXPECT_FALSE(isFoundWith(content().fileSet(), 257));
    EXPECT_FALSE(findUdfVolume(imageOf(content(), 257 * kSector - 1)));
    EXPECT_FALSE(findUdfVolume(imageOf(content(), (kPartition + 1) * kSector - 1))) << "the file set is cut";
    EXPECT_TRUE(findUdfVolume(imageOf(content(), (kPartition + 1) * kSector)));
}

TEST_F(UdfVolumeTest, SequenceHasTheLengthOfItsAnchor)
{
    constexpr std::uint64_t kLength = testsupport::kUdfAnchor + 16;
    const std::uint32_t needed = 3 * kSector;
    EXPECT_TRUE(isFoundWith(kLength, needed));
    EXPECT_FALSE(isFoundWith(kLength, needed - 1));
    EXPECT_TRUE(isFoundWith(kLength, needed + kSector - 1));
    EXPECT_TRUE(isFoundWith(kLength, UINT32_MAX)) << "what is not in the image is passed over";

    // Nothing ends it early, and the last logical volume descriptor counts.
    SparseImage more = content();
    more.putLe(kLength, 50 * kSector, 4);
    more.put((32 + 49) * kSector, logicalVolume(7));
    EXPECT_FALSE(isFound(more)) << "in block 7 is no file set";
    more.put((32 + 50) * kSector, logicalVolume(0));
    EXPECT_FALSE(isFound(more)) << "behind the sequence";
    more.put((32 + 49) * kSector, logicalVolume(0x01000000));
    EXPECT_TRUE(isFound(more)) << "block numbers of volume descriptors have three bytes";
}

TEST_F(UdfVolumeTest, UpTo16PartitionsCount)
{
    for (std::uint16_t before = 0; before < 17; ++before) {
        const auto volume = findUdfVolume(imageOf(content({.partitionsBefore = before})));
        ASSERT_EQ(volume.has_value(), before < 16) << before;
        if (volume) {
            EXPECT_EQ(volume->partitions.size(), before + 1U);
            EXPECT_EQ(volume->rootIcb.partition, before);
        }
    }
    SparseImage none = content();
    none.put(testsupport::kUdfFirstPartition, Bytes(kSector));
    EXPECT_FALSE(isFound(none));
}

TEST_F(UdfVolumeTest, ReadsEndAt2GiB)
{
    for (const std::uint32_t sector : {(1U << 20U) - 1, 1U << 20U}) {
        SparseImage image = content();
        image.put(testsupport::kUdfFirstPartition, testsupport::udfPartition(0, sector));
        image.put(sector * kSector, testsupport::udfFileSet(1, 0)).put((sector + 1) * kSector, Bytes(1));
        EXPECT_EQ(isFound(image), sector < 1U << 20U);
    }
}

}  // namespace
