#include "discio/file_stream.h"
#include "discio/iso9660.h"
#include "tests/support/image_structures.h"
#include "tests/support/sparse_image.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

using namespace testsupport;

namespace {

// Each record of a directory at the image's start: "NAME@block+size", with "/" behind a directory's name; a full stop if
// the walk came to the directory's end; the bytes that were read.
std::string walk(const SparseImage& content, std::uint64_t imageSize, std::uint32_t directorySize)
{
    const TemporaryFolder folder;
    content.writeTo(folder / "image", imageSize);
    const auto image = discio::openRegularFile(folder / "image");
    discio::ReadBudget budget;
    const auto bound = discio::ReadBudget::Bound::FileSystemBytes;
    const std::uint64_t limit = budget.left(bound);
    discio::IsoDirectoryWalk walk(*image.stream, kSector, {0, directorySize}, budget);
    std::string text;
    while (const auto record = walk.next()) {
        text += record->name + (record->isDirectory ? "/@" : "@") + std::to_string(record->extent.block) +
                '+' + std::to_string(record->extent.sizeBytes) + ' ';
    }
    return text + (walk.isAtEnd() ? ". " : "") + std::to_string(limit - budget.left(bound));
}

TEST(IsoDirectoryWalk, GivesEveryRecord)
{
    Bytes bytes;
    const IsoRecordSpec records[] = {
        {std::string(1, '\0'), 18, 2048, 2},    {"\1", 17, 2048, 2}, {"\2", 1, 2}, {"SUB", 4, 5, 3},
        {"A.IFO;1", 0x01020304, UINT32_MAX, 1}, {"dot.;1", 3},       {";1", 6}};
    for (const IsoRecordSpec& record : records) {
        append(bytes, isoRecord(record));
    }
    const auto size = static_cast<std::uint32_t>(bytes.size());
    const std::string text = "\2@1+2 SUB/@4+5 A.IFO@16909060+4294967295 dot.@3+0 ";
    const SparseImage image = SparseImage().put(0, bytes);
    EXPECT_EQ(walk(image, size, size), text + "@6+0 . 254");
    // The last record is cut by the end of the directory, then by that of the image.
    EXPECT_EQ(walk(image, size, size - 1), text + "253");
    EXPECT_EQ(walk(image, size - 1, size), text + "288");
    EXPECT_EQ(walk(image, 2 * kSector, UINT32_MAX), text + "@6+0 4096");
}

// A record lies over the end of the first 65,536 bytes, and ends the directory.
TEST(IsoDirectoryWalk, RecordsGoOnOverBlocksAndWindows)
{
    Bytes bytes;
    std::string text;
    for (std::uint32_t i = 0; i <= 1560; ++i) {
        const std::string name = "FILE" + std::to_string(10000 + i);  // a record of 42 bytes
        append(bytes, isoRecord({name, i}));
        text += name + '@' + std::to_string(i) + "+0 ";
    }
    const auto size = static_cast<std::uint32_t>(bytes.size());
    EXPECT_EQ(walk(SparseImage().put(0, bytes), size, size), text + ". 65578");
}

}  // namespace
