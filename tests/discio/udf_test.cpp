#include "discio/udf.h"
#include "tests/discio/image_file.h"
#include "tests/support/udf_builder.h"

using discio::DiscDirectory;
using testsupport::Bytes;
using testsupport::kUdfSector;
using testsupport::putBytes;
using testsupport::SparseImage;
using testsupport::udfFileIdentifier;
using testsupport::UdfFileIdentifierSpec;
using testsupport::UdfSpec;

namespace {

// ---- Directories ----

Bytes joined(const std::vector<UdfFileIdentifierSpec>& specs)
{
    Bytes bytes;
    for (const UdfFileIdentifierSpec& spec : specs) {
        putBytes(bytes, bytes.size(), udfFileIdentifier(spec));
    }
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
    EXPECT_EQ(namesIn(joined({{.name = "A", .identifierLength = 1}, {.name = "B"}})), "|B|.") << "no letter";
    const std::string longest(254, 'x');
    EXPECT_EQ(namesIn(joined({{.name = longest}, {.name = "B"}})), "|" + longest + "|B|.");
}

TEST(UdfDirectory, WhatMakesNoSenseEndsIt)
{
    const UdfFileIdentifierSpec a{.name = "A"};  // 40 bytes
    EXPECT_EQ(namesIn(joined({a, {.name = "X", .tag = 258}, a})), "|A|");
    EXPECT_EQ(namesIn(joined({a, {.name = "XYZ", .crcLength = 23}, a})), "|A|") << "40 bytes of 42";
    EXPECT_EQ(namesIn(joined({a, {.name = "XYZ", .crcLength = 25}, a})), "|A|XYZ|A|.") << "rounded up to 44";
    EXPECT_EQ(namesIn(joined({a, {.name = "X", .crcLength = 0xFFFF}, a})), "|A|");
    EXPECT_EQ(namesIn(joined({a, {.name = "X", .identifierLength = 3}, a})), "|A|");

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

class UdfVolumeTest : public discio_test::ImageFileTest {
protected:
    std::optional<discio::UdfVolume> find(const UdfSpec& spec)
    {
        return findUdfVolume(imageOf(content(spec)));
    }
    static SparseImage content(const UdfSpec& spec = {}) { return buildUdf({{"A", Bytes(1)}}, spec).image; }

    // The descriptors stand in sectors 257 (primary), 258 (partition), 259 (logical volume), 260
    // (terminator).
    static Bytes logicalVolume(std::uint32_t fileSetBlock)
    {
        Bytes sector(kUdfSector);
        testsupport::putU8(sector, 0, 6);
        testsupport::putLe(sector, 252, fileSetBlock, 4);
        return sector;
    }
};

TEST_F(UdfVolumeTest, IsFoundByItsAnchor)
{
    const auto volume = find({.partitionStarts = {0x000140, 0xFFFFFF}});
    ASSERT_TRUE(volume);
    ASSERT_EQ(volume->partitions.size(), 2U);
    EXPECT_EQ(volume->partitions[0].startSector, 320U);
    EXPECT_EQ(volume->partitions[1].startSector, 0xFFFFFFU);
    EXPECT_EQ(volume->rootIcb.block, 1U);
    EXPECT_EQ(volume->rootIcb.partition, 0U);
    EXPECT_FALSE(find({.anchorTag = 3}));
    EXPECT_FALSE(find({.fileSetTag = 257}));
    EXPECT_FALSE(findUdfVolume(imageOf(content(), 257 * kUdfSector - 1)));
    EXPECT_FALSE(findUdfVolume(imageOf(content(), 321 * kUdfSector - 1))) << "the file set is cut";
    EXPECT_TRUE(findUdfVolume(imageOf(content(), 321 * kUdfSector)));
}

TEST_F(UdfVolumeTest, SequenceHasTheLengthOfItsAnchor)
{
    const std::uint32_t needed = 3 * kUdfSector;
    EXPECT_TRUE(find({.sequenceLength = needed}));
    EXPECT_FALSE(find({.sequenceLength = needed - 1}));
    EXPECT_TRUE(find({.sequenceLength = needed + kUdfSector - 1}));
    EXPECT_TRUE(find({.sequenceLength = UINT32_MAX})) << "what is not in the image is passed over";

    // Nothing ends it early, and the last logical volume descriptor counts.
    SparseImage more = content({.sequenceLength = 50 * kUdfSector});
    more.put((257 + 49) * kUdfSector, logicalVolume(7));
    EXPECT_FALSE(findUdfVolume(imageOf(more))) << "in block 7 is no file set";
    more.put((257 + 50) * kUdfSector, logicalVolume(0));
    EXPECT_FALSE(findUdfVolume(imageOf(more))) << "behind the sequence";
    more.put((257 + 49) * kUdfSector, logicalVolume(0x01000000));
    EXPECT_TRUE(findUdfVolume(imageOf(more))) << "block numbers of volume descriptors have three bytes";
}

TEST_F(UdfVolumeTest, UpTo16PartitionsCount)
{
    for (std::uint8_t count = 1; count <= 17; ++count) {
        UdfSpec spec;
        spec.partitionStarts.resize(count, 320);
        spec.partition = static_cast<std::uint8_t>(count - 1);
        const auto volume = find(spec);
        ASSERT_EQ(volume.has_value(), count <= 16) << int{count};
        if (volume) {
            EXPECT_EQ(volume->partitions.size(), count);
            EXPECT_EQ(volume->rootIcb.partition, spec.partition);
        }
    }
    SparseImage none = content();
    none.put(258 * kUdfSector, Bytes(kUdfSector));
    EXPECT_FALSE(findUdfVolume(imageOf(none)));
}

TEST_F(UdfVolumeTest, ReadsEndAt2GiB)
{
    UdfSpec spec;
    spec.partitionStarts = {(1U << 20U) - 1};
    EXPECT_TRUE(find(spec)) << "the file set is in the last sector below";
    spec.partitionStarts = {1U << 20U};
    EXPECT_FALSE(find(spec));
}

}  // namespace
