#include "discio/file_stream.h"
#include "discio/iso9660.h"
#include "tests/support/image_structures.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

using namespace testsupport;

namespace {

// A record lies over the end of the first 65,536 bytes, and ends the directory.
TEST(IsoDirectoryWalk, RecordsGoOnOverBlocksAndWindows)
{
    Bytes bytes;
    std::string wanted;
    for (std::uint32_t i = 0; i <= 1560; ++i) {
        const std::string name = "FILE" + std::to_string(10000 + i);  // a record of 42 bytes
        append(bytes, isoRecord({name, i}));
        wanted += name + '@' + std::to_string(i) + ' ';
    }
    const TemporaryFolder folder;
    writeFile(folder / "image", bytes);
    const auto image = discio::openRegularFile(folder / "image");
    discio::ReadBudget budget;
    discio::IsoDirectoryWalk walk(*image.stream, kSector, {0, static_cast<std::uint32_t>(bytes.size())},
                                  budget);
    std::string text;
    while (const auto record = walk.next()) {
        text += record->name + '@' + std::to_string(record->extent.block) + ' ';
    }
    EXPECT_EQ(text, wanted);
    EXPECT_TRUE(walk.isAtEnd());
}

}  // namespace
