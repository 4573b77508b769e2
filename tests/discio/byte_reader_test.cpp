#include "discio/byte_reader.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using discio::ByteReader;

namespace {

constexpr std::array<std::uint8_t, 8> kBytes = {0x81, 2, 3, 4, 5, 6, 7, 0x88};
constexpr auto kHuge = std::numeric_limits<std::size_t>::max();

TEST(ByteReader, AReadPastTheEndFailsForGoodAndMovesNothing)
{
    ByteReader reader(kBytes);
    reader.skip(6);
    EXPECT_EQ(reader.be32(), 0U);
    EXPECT_EQ(reader.u8(), 0U) << "a byte that is there is not given out any more";
    reader.seek(0);
    reader.skip(kHuge - 2);
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.position(), 6U);
    EXPECT_FALSE(reader.slice(0, 1).ok());
}

TEST(ByteReader, SlicesAndPositionsEndWithTheData)
{
    ByteReader whole(kBytes);
    ByteReader inner = whole.slice(2, 3);
    EXPECT_EQ(inner.be16(), 0x0304);
    EXPECT_EQ(inner.be16(), 0U) << "a byte is left";
    EXPECT_TRUE(whole.slice(8, 0).ok());
    for (const auto& [offset, count] :
         {std::pair<std::uint64_t, std::uint64_t>{8, 1}, {4, kHuge - 2}, {kHuge, 2}, {1ULL << 32U, 0}}) {
        EXPECT_FALSE(whole.slice(offset, count).ok()) << offset;
    }
    whole.seek(8);
    EXPECT_TRUE(whole.ok());
    whole.seek(9);
    EXPECT_FALSE(whole.ok());
}

}  // namespace
