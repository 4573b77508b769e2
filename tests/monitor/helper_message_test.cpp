#include "monitor/helper_message.h"

#include <gtest/gtest.h>

namespace {

using monitor::encodeMessage;
using monitor::kMaximumPayloadBytes;
using monitor::MessageKind;

const std::string kLetterOfTwoBytes = "\xC3\xA9";
const std::string kLetterOfFourBytes = "\xF0\x9F\x92\xBF";

TEST(HelperMessage, NumbersAreLittleEndianAndUnsigned)
{
    const std::uint8_t bytes[] = {0x01, 0x02, 0x03, 0x84, 0xFF, 0xFE, 0xFD, 0xFC};
    const monitor::MessageHeader header = monitor::parseMessageHeader(bytes);
    EXPECT_EQ(header.kind, 0x84030201U);
    EXPECT_EQ(header.payloadBytes, 0xFCFDFEFFU);
}

TEST(HelperMessage, IsHeaderAndPayload)
{
    using std::string_literals::operator""s;
    EXPECT_EQ(encodeMessage(MessageKind::Closed, "/a"), "\3\0\0\0\2\0\0\0/a"s);
    EXPECT_EQ(encodeMessage(MessageKind::Failed, ""), "\4\0\0\0\0\0\0\0"s);
    EXPECT_EQ(encodeMessage(MessageKind::Opened, std::string(0x102, 'x')).substr(0, 8), "\2\0\0\0\2\1\0\0"s);
}

TEST(HelperMessage, LongPayloadIsCutAtTheEndOfACharacter)
{
    const auto payloadOf = [](const std::string& text) {
        const std::string message = encodeMessage(MessageKind::Failed, text);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(message.data());
        const monitor::MessageHeader header =
            monitor::parseMessageHeader(std::span<const std::uint8_t, 8>(bytes, 8));
        EXPECT_EQ(header.payloadBytes, message.size() - 8);
        return message.substr(8);
    };
    const std::string full(kMaximumPayloadBytes, 'x');
    EXPECT_EQ(payloadOf(full), full);
    EXPECT_EQ(payloadOf(full + "y"), full);
    const std::string butOne = full.substr(1);
    EXPECT_EQ(payloadOf(butOne + kLetterOfTwoBytes), butOne);
    const std::string butThree = full.substr(3);
    EXPECT_EQ(payloadOf(butThree + kLetterOfFourBytes), butThree);
    EXPECT_EQ(payloadOf(full.substr(4) + kLetterOfFourBytes + "y"), full.substr(4) + kLetterOfFourBytes);
    const std::string noText(kMaximumPayloadBytes + 9, '\x80');
    EXPECT_EQ(payloadOf(noText), noText.substr(9));
}

}  // namespace
