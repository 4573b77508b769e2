#include "discio/byte_reader.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using discio::ByteReader;

namespace {

constexpr std::array<std::uint8_t, 8> kBytes = {0x81, 2, 3, 4, 5, 6, 7, 0x88};

TEST(ByteReader, ReadsBothByteOrders)
{
    static_assert(ByteReader(kBytes).u8() == 0x81);
    static_assert(ByteReader(kBytes).be64() == 0x8102030405060788);
    EXPECT_EQ(ByteReader(kBytes).be16(), 0x8102);
    EXPECT_EQ(ByteReader(kBytes).be32(), 0x81020304U);
    EXPECT_EQ(ByteReader(kBytes).le16(), 0x0281);
    EXPECT_EQ(ByteReader(kBytes).le32(), 0x04030281U);
    EXPECT_EQ(ByteReader(kBytes).le64(), 0x8807060504030281U);
}

TEST(ByteReader, ReadPastTheEndYieldsZeroMovesNothingAndStaysFailed)
{
    ByteReader reader(kBytes);
    reader.skip(6);
    EXPECT_EQ(reader.be32(), 0U);
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.position(), 6U);
    EXPECT_EQ(reader.u8(), 0U) << "a byte that is there is not given out any more";
    EXPECT_TRUE(reader.bytes(1).empty());
    reader.seek(0);
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.position(), 6U);
    EXPECT_FALSE(reader.slice(0, 1).ok());
}

TEST(ByteReader, TheEndIsAValidPosition)
{
    ByteReader reader(kBytes);
    reader.seek(8);
    EXPECT_TRUE(reader.ok());
    EXPECT_EQ(reader.remaining(), 0U);
    EXPECT_TRUE(reader.bytes(0).empty());
    EXPECT_TRUE(reader.ok());
    reader.seek(9);
    EXPECT_FALSE(reader.ok());
}

TEST(ByteReader, HugeCountsAndOffsetsDoNotWrap)
{
    constexpr auto kHuge = std::numeric_limits<std::size_t>::max();
    ByteReader skipping(kBytes);
    skipping.skip(4);
    skipping.skip(kHuge - 2);
    EXPECT_FALSE(skipping.ok());
    EXPECT_EQ(skipping.position(), 4U);

    const ByteReader whole(kBytes);
    EXPECT_FALSE(whole.slice(4, kHuge - 2).ok());
    EXPECT_FALSE(whole.slice(kHuge, 2).ok());
    EXPECT_FALSE(whole.slice(1ULL << 32U, 0).ok());
    EXPECT_TRUE(whole.ok());
}

TEST(ByteReader, SliceHasItsOwnEndAndStart)
{
    const ByteReader whole(kBytes);
    ByteReader inner = whole.slice(2, 3);
    EXPECT_EQ(inner.size(), 3U);
    EXPECT_EQ(inner.be16(), 0x0304);
    EXPECT_EQ(inner.be16(), 0U);
    EXPECT_FALSE(inner.ok());
    EXPECT_TRUE(whole.slice(8, 0).ok());
    EXPECT_FALSE(whole.slice(8, 1).ok());
    EXPECT_FALSE(ByteReader().slice(0, 1).ok());
}

}  // namespace
