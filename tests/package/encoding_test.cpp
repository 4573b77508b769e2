#include "package/encoding.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

template <typename Append, typename Value>
QByteArray encoded(Append append, Value value)
{
    QByteArray out("before");
    append(out, value);
    EXPECT_TRUE(out.startsWith("before"));
    return out.mid(6).toHex();
}

TEST(Encoding, FixedWidthNumbersStandMostSignificantByteFirst)
{
    EXPECT_EQ(encoded(package::appendU8, std::uint8_t{0xFE}), "fe");
    EXPECT_EQ(encoded(package::appendU16BE, std::uint16_t{0x0102}), "0102");
    EXPECT_EQ(encoded(package::appendU32BE, 0x01020304U), "01020304");
    EXPECT_EQ(encoded(package::appendU64BE, std::uint64_t{0x0102030405060708}), "0102030405060708");
}

TEST(Encoding, Varints)
{
    const std::vector<std::pair<std::uint64_t, const char*>> cases = {{0, "00"},
                                                                      {1, "01"},
                                                                      {127, "7f"},
                                                                      {128, "8001"},
                                                                      {300, "ac02"},
                                                                      {16383, "ff7f"},
                                                                      {16384, "808001"},
                                                                      {UINT32_MAX, "ffffffff0f"},
                                                                      {UINT64_MAX, "ffffffffffffffffff01"}};
    for (const auto& [value, hex] : cases) {
        EXPECT_EQ(encoded(package::appendVarint, value), hex) << value;
    }
}

TEST(Encoding, BytesCarryTheirLength)
{
    QByteArray out;
    package::appendBytes(out, {});
    package::appendBytes(out, "ab");
    package::appendBytes(out, QByteArray(128, 'x'));
    EXPECT_EQ(out, QByteArray::fromHex("0002") + "ab" + QByteArray::fromHex("8001") + QByteArray(128, 'x'));
}

TEST(Encoding, PatchOverwritesEightBytesInPlace)
{
    QByteArray out(10, '.');
    const QByteArray shared = out;
    package::patchU64BE(out, 2, 0x4142434445464748);
    EXPECT_EQ(out, "..ABCDEFGH");
    EXPECT_EQ(shared, "..........");
}

TEST(Encoding, DigestIsSha256)
{
    EXPECT_EQ(package::sha256("abc").toHex(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(package::sha256({}).toHex(),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

}  // namespace
