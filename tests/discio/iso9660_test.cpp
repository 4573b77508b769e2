#include "discio/file_stream.h"
#include "discio/iso9660.h"
#include "tests/support/image_builder.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

using testsupport::Bytes;
using testsupport::isoRecord;
using testsupport::IsoRecordSpec;
using testsupport::kSector;
using testsupport::putBytes;

namespace {

constexpr std::uint8_t kDirectory = 0x02;
constexpr std::uint32_t kWhole = 2 * kSector;

// A directory of two blocks, which is the whole image.
class IsoSearch : public testing::Test {
protected:
    void append(const IsoRecordSpec& record) { appendBytes(isoRecord(record)); }

    void appendBytes(const Bytes& bytes)
    {
        putBytes(m_directory, m_end, bytes);
        m_end += bytes.size();
    }

    // The first block of the matching record, or -1.
    std::int64_t find(const std::string& name, std::uint32_t sizeBytes = kWhole,
                      std::uint32_t blockSize = kSector)
    {
        const auto record = search(name, {0, sizeBytes}, blockSize);
        return record ? std::int64_t{record->extent.block} : -1;
    }

    std::optional<discio::IsoDirectoryRecord> search(const std::string& name, discio::IsoExtent extent,
                                                     std::uint32_t blockSize = kSector)
    {
        testsupport::writeFile(m_folder / "image", m_directory);
        const auto image = discio::openRegularFile(m_folder / "image");
        discio::ReadBudget budget;
        return discio::findDirectoryRecord(*image.stream, blockSize, extent, name, budget);
    }

    testsupport::TemporaryFolder m_folder;
    Bytes m_directory = Bytes(kWhole);
    std::size_t m_end = 0;
};

TEST_F(IsoSearch, GivesExtentAndKind)
{
    append({.identifier = "A.IFO;1", .block = 0x01020304, .sizeBytes = 0xFFFFFFFF});
    append({.identifier = "SUB", .block = 7, .sizeBytes = kSector, .flags = kDirectory | 0x01});
    const auto file = search("A.IFO", {0, kWhole});
    ASSERT_TRUE(file);
    EXPECT_EQ(file->extent.block, 0x01020304U);
    EXPECT_EQ(file->extent.sizeBytes, 0xFFFFFFFFU);
    EXPECT_FALSE(file->isDirectory);
    const auto directory = search("SUB", {0, kWhole});
    ASSERT_TRUE(directory);
    EXPECT_TRUE(directory->isDirectory);
}

TEST_F(IsoSearch, MatchesWithoutVersionAndLetterCaseAndNothingElse)
{
    append({.identifier = "VIDEO_TS.IFO;1", .block = 1});
    append({.identifier = "vts_01_0.ifo", .block = 2});
    append({.identifier = "DOT.;1", .block = 3});
    append({.identifier = ";1", .block = 4});
    EXPECT_EQ(find("video_ts.ifo"), 1);
    EXPECT_EQ(find("VTS_01_0.IFO"), 2);
    EXPECT_EQ(find("DOT"), -1);
    EXPECT_EQ(find("DOT."), 3);
    EXPECT_EQ(find("VIDEO_TS.IFO;1"), -1);
    EXPECT_EQ(find("VIDEO_TS.IF"), -1);
    EXPECT_EQ(find("VIDEO_TS.IFOX"), -1);
}

TEST_F(IsoSearch, TheFirstMatchDecidesWhateverItsKind)
{
    append({.identifier = "VIDEO_TS;1", .block = 1});
    append({.identifier = "VIDEO_TS", .block = 2, .flags = kDirectory});
    const auto record = search("VIDEO_TS", {0, kWhole});
    ASSERT_TRUE(record);
    EXPECT_EQ(record->extent.block, 1U);
    EXPECT_FALSE(record->isDirectory);
}

TEST_F(IsoSearch, DotEntriesAreNeverMatched)
{
    append({.identifier = std::string(1, '\0'), .block = 1, .flags = kDirectory});
    append({.identifier = "\1", .block = 2, .flags = kDirectory});
    append({.identifier = "\2", .block = 3});
    EXPECT_EQ(find(std::string(1, '\0')), -1);
    EXPECT_EQ(find("\1"), -1);
    EXPECT_EQ(find("\2"), 3);
}

TEST_F(IsoSearch, LengthBelowARecordsMinimumEndsTheSearch)
{
    append({.identifier = "A", .block = 1});
    Bytes tooShort = isoRecord({.identifier = "X"});
    tooShort[0] = 20;
    appendBytes(tooShort);
    append({.identifier = "B", .block = 2});
    EXPECT_EQ(find("A"), 1);
    EXPECT_EQ(find("B"), -1);
}

TEST_F(IsoSearch, LengthZeroGoesOnAtTheNextBlock)
{
    append({.identifier = "A", .block = 1});
    m_end = kSector - 40;  // behind a zero, so never seen
    append({.identifier = "HIDDEN", .block = 2});
    m_end = kSector;
    append({.identifier = "B", .block = 3});
    EXPECT_EQ(find("HIDDEN"), -1);
    EXPECT_EQ(find("B"), 3);
    EXPECT_EQ(find("B", kSector), -1) << "the directory ends before it";
    EXPECT_EQ(find("A", kWhole, 0), -1) << "no block size, no next block";
}

TEST_F(IsoSearch, RecordMustEndInsideTheDirectory)
{
    append({.identifier = "ABCDEFGH", .block = 1});
    const auto length = static_cast<std::uint32_t>(m_end);
    EXPECT_EQ(find("ABCDEFGH", length), 1);
    EXPECT_EQ(find("ABCDEFGH", length - 1), -1);
    EXPECT_EQ(find("ABCDEFGH", 0), -1);
}

TEST_F(IsoSearch, IdentifierLongerThanItsRecordIsClipped)
{
    Bytes tooLong = isoRecord({.identifier = "A", .block = 1});
    tooLong[32] = 200;
    appendBytes(tooLong);
    append({.identifier = "B", .block = 2});
    EXPECT_EQ(find("A"), 1);
    EXPECT_EQ(find("B"), 2);
}

TEST_F(IsoSearch, RecordsAreReadAcrossBlocksAndWindows)
{
    m_directory.clear();
    for (std::uint32_t i = 0; i < 3000; ++i) {  // 42 bytes each
        append({.identifier = "FILE" + std::to_string(10000 + i), .block = i});
    }
    const auto length = static_cast<std::uint32_t>(m_end);
    EXPECT_EQ(find("FILE10048", length), 48) << "over the end of a block";
    EXPECT_EQ(find("FILE11560", length), 1560) << "over the end of 65,536 bytes";
    EXPECT_EQ(find("FILE12999", length), 2999);
}

TEST_F(IsoSearch, EndsAtTheImagesEndWhateverTheDirectoryClaims)
{
    append({.identifier = "A", .block = 1});
    EXPECT_EQ(find("A", UINT32_MAX), 1);
    EXPECT_EQ(find("B", UINT32_MAX), -1);
    EXPECT_FALSE(search("A", {UINT32_MAX, UINT32_MAX}));
}

TEST_F(IsoSearch, EmptyBlocksArePassedOverUpToTheLimit)
{
    const std::size_t limit = 32U << 20U;
    testsupport::SparseImage image;
    image.put(limit - kSector, isoRecord({.identifier = "LAST", .block = 1}));
    image.put(limit, isoRecord({.identifier = "BEHIND", .block = 2}));
    image.writeTo(m_folder / "sparse", 5ULL << 30U);
    const auto opened = discio::openRegularFile(m_folder / "sparse");
    const auto find = [&](const char* name, discio::ReadBudget budget) {
        const discio::IsoExtent extent = {0, UINT32_MAX};
        return findDirectoryRecord(*opened.stream, kSector, extent, name, budget).has_value() ||
               budget.reached() == nullptr;
    };
    EXPECT_TRUE(find("LAST", {}));
    EXPECT_FALSE(find("BEHIND", {}));
}

TEST(IsoVolumeDescriptor, IsReadFromAWholeSectorOnly)
{
    testsupport::TemporaryFolder folder;
    testsupport::buildImage({{"A", Bytes(1)}}, testsupport::DiscForm::Iso).writeTo(folder / "image");
    const auto image = discio::openRegularFile(folder / "image");
    Bytes sector(kSector);
    ASSERT_TRUE(discio::readExactly(*image.stream, discio::kIsoDescriptorOffset, sector));
    const auto volume = discio::parsePrimaryVolumeDescriptor(sector);
    ASSERT_TRUE(volume);
    EXPECT_EQ(volume->blockSize, 2048U);
    EXPECT_EQ(volume->rootRecordLength, 34);
    EXPECT_EQ(volume->root.block, 18U);
    EXPECT_EQ(volume->root.sizeBytes, 2048U);
    EXPECT_EQ(std::string(volume->volumeId.begin(), volume->volumeId.end()),
              "TEST_DISC" + std::string(23, ' '));
    for (std::size_t size = 0; size < sector.size(); ++size) {
        ASSERT_FALSE(discio::parsePrimaryVolumeDescriptor(std::span(sector).first(size))) << size;
    }
}

}  // namespace
