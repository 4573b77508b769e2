#include "discio/udf.h"
#include "tests/discio/image_file.h"
#include "tests/support/image_structures.h"

#include <array>

using discio::ImageExtent;
using discio::UdfAddress;
using testsupport::Bytes;
using testsupport::kSector;
using testsupport::SparseImage;
using testsupport::udfFileEntry;
using testsupport::UdfFileEntrySpec;

namespace {

constexpr std::uint64_t kGiB = 1ULL << 30U;
constexpr UdfAddress kIcb = {5, 1};
constexpr std::uint64_t kEntryOffset = 25 * kSector;

// One file entry, as block 5 of partition 1, which begins in sector 20; partition 0 begins in sector 10.
class UdfFile : public discio_test::ImageFileTest {
protected:
    std::optional<discio::UdfFileEntry> read(const UdfFileEntrySpec& spec, const UdfAddress& icb = kIcb)
    {
        return readBytes(udfFileEntry(spec), icb);
    }
    std::optional<discio::UdfFileEntry> readBytes(const Bytes& bytes, const UdfAddress& icb = kIcb)
    {
        SparseImage content;
        content.put(kEntryOffset, bytes);
        return readUdfFileEntry(imageOf(content), m_volume, icb);
    }

    // The extents, or one of UINT64_MAX where there is no readable entry.
    std::vector<ImageExtent> extents(const UdfFileEntrySpec& spec) { return extentsOf(udfFileEntry(spec)); }
    std::vector<ImageExtent> extentsOf(const Bytes& bytes)
    {
        const auto entry = readBytes(bytes);
        return entry ? entry->data.extents : std::vector<ImageExtent>{{UINT64_MAX, UINT64_MAX}};
    }

    const discio::UdfVolume m_volume = {{{10}, {20}}, {}};
    const std::vector<ImageExtent> m_unreadable = {{UINT64_MAX, UINT64_MAX}};
};

TEST_F(UdfFile, ExtentsOfEitherKindOfEntryAndDescriptor)
{
    for (const std::uint16_t tag : std::array<std::uint16_t, 2>{261, 266}) {
        for (const std::size_t attributes : std::array<std::size_t, 3>{0, 100, 5000}) {
            UdfFileEntrySpec spec;
            spec.tag = tag;
            spec.extendedAttributeSize = attributes;
            spec.informationLength = 5000;
            spec.descriptors = {{2048, 7, 0}, {2952, 0xFFFFFFFF, 0}};
            const std::vector<ImageExtent> inOwn = {{27 * kSector, 2048},
                                                    {(20 + 0xFFFFFFFFULL) * kSector, 2952}};
            EXPECT_EQ(extents(spec), inOwn) << tag << ' ' << attributes;

            spec.descriptorKind = 1;
            const std::vector<ImageExtent> inNamed = {{17 * kSector, 2048},
                                                      {(10 + 0xFFFFFFFFULL) * kSector, 2952}};
            EXPECT_EQ(extents(spec), inNamed) << tag << ' ' << attributes;

            spec.descriptorKind = 3;
            spec.descriptors.clear();
            spec.embedded = Bytes(20);
            spec.informationLength = 19;
            const std::vector<ImageExtent> embedded = {
                {kEntryOffset + (tag == 261 ? 176 : 216) + attributes, 19}};
            EXPECT_EQ(extents(spec), embedded) << tag << ' ' << attributes;
        }
    }
    const auto directory = read({.fileType = 4});
    ASSERT_TRUE(directory);
    EXPECT_TRUE(directory->isDirectory);
    EXPECT_EQ(directory->data.sizeBytes, 0U);
    EXPECT_FALSE(read({.fileType = 5})->isDirectory);
    EXPECT_FALSE(read({.tag = 260}));
    EXPECT_FALSE(read({}, {5, 2})) << "no such partition";
    EXPECT_FALSE(read({}, {15, 1})) << "not in the image";
}

TEST_F(UdfFile, DescriptorsMustCoverTheInformationLength)
{
    UdfFileEntrySpec spec;
    spec.informationLength = 3000;
    spec.descriptors = {{2048, 1}, {2048, 2}, {2048, 3}};
    EXPECT_EQ(extents(spec), (std::vector<ImageExtent>{{21 * kSector, 2048}, {22 * kSector, 952}})) << "cut";
    spec.informationLength = 6144;
    EXPECT_EQ(extents(spec).size(), 3U);
    spec.informationLength = 6145;
    EXPECT_EQ(extents(spec), m_unreadable);
    spec.informationLength = UINT64_MAX;
    EXPECT_EQ(extents(spec), m_unreadable);

    const auto areaOf = [&spec](std::uint32_t length) {
        Bytes entry = udfFileEntry(spec);
        testsupport::putLe(entry, 172, length, 4);
        return entry;
    };
    spec.informationLength = 4096;
    EXPECT_EQ(extentsOf(areaOf(16 + 7)).size(), 2U) << "a part of a descriptor is none";
    EXPECT_EQ(extentsOf(areaOf(15)), m_unreadable);
    spec.informationLength = 0;
    EXPECT_EQ(extentsOf(areaOf(15)), std::vector<ImageExtent>{});
}

TEST_F(UdfFile, DescriptorsWithoutDataArePassedOver)
{
    UdfFileEntrySpec spec;
    spec.descriptorKind = 1;
    spec.informationLength = 2048;
    for (const std::uint32_t length : {0U, 0x40000000U, 0x40000800U, 0x80000800U, 0xC0000800U}) {
        spec.descriptors = {{length, 1, 99}, {2048, 2, 1}};
        EXPECT_EQ(extents(spec), (std::vector<ImageExtent>{{22 * kSector, 2048}})) << length;
        spec.descriptors.pop_back();
        EXPECT_EQ(extents(spec), m_unreadable) << "nothing else covers the file: " << length;
    }
    spec.informationLength = 0x3FFFFFFF;
    spec.descriptors = {{0x3FFFFFFF, 1, 1}, {2048, 2, 99}};
    EXPECT_EQ(extents(spec).size(), 1U) << "behind the last byte nothing is looked at";
    spec.informationLength += 1;
    EXPECT_EQ(extents(spec), m_unreadable) << "there is no partition 99";
}

TEST_F(UdfFile, EmbeddedDataLieInTheDescriptorsPlace)
{
    UdfFileEntrySpec spec;
    spec.descriptorKind = 3;
    spec.embedded = Bytes(10);
    spec.informationLength = 10;
    EXPECT_EQ(extents(spec), (std::vector<ImageExtent>{{kEntryOffset + 176, 10}}));
    spec.informationLength = 11;
    EXPECT_EQ(extents(spec), m_unreadable);
    for (const std::uint8_t kind : std::array<std::uint8_t, 5>{2, 4, 5, 6, 7}) {
        EXPECT_EQ(extents({.descriptorKind = kind}), m_unreadable) << int{kind};
    }
    EXPECT_EQ(extents({.descriptorKind = 8}), std::vector<ImageExtent>{})
        << "bit 3 and above are other flags";
}

TEST_F(UdfFile, DescriptorAreaHasLimits)
{
    UdfFileEntrySpec spec;
    spec.descriptors.assign((1U << 20U) / 8, {1, 1});
    spec.informationLength = spec.descriptors.size();
    EXPECT_EQ(extents(spec).size(), spec.descriptors.size());
    spec.descriptors.push_back({1, 1});
    EXPECT_EQ(extents(spec), m_unreadable) << "too many, though the last one is not needed";

    // Without descriptors nothing of the area is read, so it may lie anywhere that 32 bits can tell.
    const auto empty = [](std::uint64_t attributesLength, std::uint64_t descriptorsLength) {
        Bytes entry = udfFileEntry({});
        testsupport::putLe(entry, 168, attributesLength, 4);
        testsupport::putLe(entry, 172, descriptorsLength, 4);
        return entry;
    };
    constexpr std::uint64_t kLast = UINT32_MAX - kEntryOffset - 176;
    EXPECT_EQ(extentsOf(empty(kLast, 0)), std::vector<ImageExtent>{});
    EXPECT_EQ(extentsOf(empty(kLast + 1, 0)), m_unreadable);
    EXPECT_EQ(extentsOf(empty(5000, 8)), m_unreadable) << "behind the image's end";
}

TEST_F(UdfFile, DescriptorsOfAVolumeHaveALimit)
{
    UdfFileEntrySpec spec;
    spec.descriptors.resize((1U << 20U) / 8);
    spec.descriptors.front() = {1, 1};
    spec.informationLength = 1;
    SparseImage content;
    content.put(kEntryOffset, udfFileEntry(spec));
    const auto image = imageOf(content);
    for (int i = 0; i < 32; ++i) {
        EXPECT_TRUE(readUdfFileEntry(image, m_volume, kIcb));
    }
    EXPECT_FALSE(readUdfFileEntry(image, m_volume, kIcb));
    EXPECT_STREQ(image.budget->reached(), "the directories and file entries are larger than 32 MiB");
}

// An image that has become shorter since it was opened.
TEST_F(UdfFile, DataThatEndEarlyAreNotRead)
{
    SparseImage content;
    content.put(0, {1, 2, 3});
    auto image = imageOf(content);
    discio::ExtentList list;
    list.append({2, 1});
    list.append({0, 3});
    image.sizeBytes = 5;
    Bytes bytes;
    EXPECT_TRUE(readExtents(image, list, bytes));
    EXPECT_EQ(bytes, Bytes({3, 1, 2, 3}));
    list.append({2, 2});
    image.sizeBytes = 6;
    EXPECT_FALSE(readExtents(image, list, bytes));
}

TEST_F(UdfFile, EntryMustBeInTheImageWhole)
{
    for (const std::uint16_t tag : std::array<std::uint16_t, 2>{261, 266}) {
        UdfFileEntrySpec spec;
        spec.tag = tag;
        spec.informationLength = 1;
        spec.descriptors = {{1, 0}};
        SparseImage content;
        content.put(kEntryOffset, udfFileEntry(spec));
        const std::uint64_t end = content.sizeBytes();
        EXPECT_TRUE(readUdfFileEntry(imageOf(content, end), m_volume, kIcb));
        for (std::uint64_t size = kEntryOffset; size < end; ++size) {
            ASSERT_FALSE(readUdfFileEntry(imageOf(content, size), m_volume, kIcb)) << size;
        }
    }
}

TEST_F(UdfFile, NoneIsReadFrom2GiBOn)
{
    const std::uint32_t lastBlock = (1U << 20U) - 1 - 20;
    SparseImage content;
    for (const std::uint64_t offset : {std::uint64_t{0}, 2 * kGiB - kSector, 2 * kGiB}) {
        content.put(offset, udfFileEntry({.informationLength = 1, .descriptors = {{1, 0}}}));
    }
    const auto image = imageOf(content);
    EXPECT_TRUE(readUdfFileEntry(image, m_volume, {lastBlock, 1}));
    EXPECT_FALSE(readUdfFileEntry(image, m_volume, {lastBlock + 1, 1}));
    EXPECT_FALSE(readUdfFileEntry(image, m_volume, {(1U << 21U) - 20, 1}))
        << "32 bits of offset would be 0 here";
}

}  // namespace
