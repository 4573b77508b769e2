#include "monitor/helper_message.h"
#include "monitor/received_messages.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

namespace {

using monitor::encodeMessage;
using monitor::MessageKind;
using monitor::ReceivedMessages;
using Kind = monitor::WatchFailure::Kind;

ReceivedMessages take(const std::string& bytes)
{
    return monitor::takeMessages({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::string header(std::uint32_t kind, std::uint32_t payloadBytes)
{
    std::string bytes;
    for (const std::uint32_t number : {kind, payloadBytes}) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(number >> shift & 0xFFU);
        }
    }
    return bytes;
}

TEST(ReceivedMessages, WaitForTheRestOfAMessage)
{
    const std::string first = encodeMessage(MessageKind::Opened, "/a");
    const std::string both = first + encodeMessage(MessageKind::Closed, "/bcd");
    for (std::size_t length = 0; length <= both.size(); ++length) {
        const ReceivedMessages messages = take(both.substr(0, length));
        const std::size_t whole = length < first.size() ? 0 : length < both.size() ? 1 : 2;
        EXPECT_EQ(messages.events.size(), whole) << length;
        EXPECT_EQ(messages.bytes, whole == 0 ? 0 : whole == 1 ? first.size() : both.size()) << length;
        EXPECT_FALSE(messages.failure) << length;
    }
    testsupport::recordFault("Helper: its messages are cut anywhere",
                             "what is whole is taken, the rest waited for", both.size());
}

TEST(ReceivedMessages, TheFirstThatIsWrongEndsThem)
{
    const std::string event = encodeMessage(MessageKind::Opened, "/a");
    struct Case {
        std::string message;
        Kind kind;
    };
    const Case cases[] = {{header(2, 65'537), Kind::InvalidMessage},
                          {header(1, UINT32_MAX), Kind::InvalidMessage},
                          {header(0, 0), Kind::UnknownMessage},
                          {header(5, 1) + 'x', Kind::UnknownMessage},
                          {header(UINT32_MAX, 0), Kind::UnknownMessage},
                          {encodeMessage(MessageKind::Failed, "no"), Kind::HelperFailed}};
    for (const Case& c : cases) {
        std::string bytes = event;
        bytes += c.message;
        bytes += event;
        const ReceivedMessages messages = take(bytes);
        EXPECT_EQ(messages.events.size(), 1U);
        ASSERT_TRUE(messages.failure);
        EXPECT_EQ(messages.failure->kind, c.kind);
    }
    testsupport::recordFault("Helper: a message that is too long, of an unknown kind or says that it failed",
                             "the watch ends with a message", std::size(cases));
}

}  // namespace
