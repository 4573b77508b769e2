#include "monitor/helper_channel.h"
#include "monitor/helper_client.h"
#include "monitor/helper_command_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using monitor::HelperChannel;
using monitor::HelperClient;

namespace {

class HelperChannelTest : public testing::Test {
protected:
    HelperChannelTest()
    {
        EXPECT_EQ(m_channel.createPipe(m_names.pipe), 0U);
        EXPECT_EQ(m_channel.createStopEvent(m_names.stopEvent), 0U);
    }

    [[nodiscard]] std::uint32_t connect(HelperClient& client) const
    {
        return client.connect(m_names.pipe, m_names.stopEvent, monitor::currentProcessId());
    }

    // All there is up to the pipe's end, in reads of a few bytes.
    [[nodiscard]] std::string readAll()
    {
        std::string text;
        std::array<std::uint8_t, 4> bytes = {};
        while (const std::size_t count = m_channel.read(bytes)) {
            text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        }
        return text;
    }

    const monitor::HelperNames m_names =
        monitor::helperNames("native-" + std::to_string(monitor::currentProcessId()));
    HelperChannel m_channel;
};

TEST_F(HelperChannelTest, AHelperMayBeThereBeforeTheWait)
{
    {
        HelperClient client;
        ASSERT_EQ(connect(client), 0U);
        EXPECT_EQ(m_channel.waitForConnection(), 0U);
        EXPECT_TRUE(client.write("while it is there"));
    }
    EXPECT_EQ(readAll(), "while it is there");
}

TEST_F(HelperChannelTest, AHelperMayBeGoneBeforeTheWait)
{
    {
        HelperClient client;
        ASSERT_EQ(connect(client), 0U);
        EXPECT_TRUE(client.write("last words"));
    }
    EXPECT_EQ(m_channel.waitForConnection(), 0U);
    EXPECT_EQ(readAll(), "last words");
}

TEST_F(HelperChannelTest, APipeIsForOneWatchAndOneHelper)
{
    HelperChannel second;
    EXPECT_NE(second.createPipe(m_names.pipe), 0U);
    HelperClient client;
    ASSERT_EQ(connect(client), 0U);
    EXPECT_EQ(m_channel.waitForConnection(), 0U);
    HelperClient intruder;
    EXPECT_NE(connect(intruder), 0U);
    EXPECT_TRUE(client.write("mine"));
    m_channel.closePipe();
    EXPECT_FALSE(client.write("too late"));
    EXPECT_NE(connect(intruder), 0U);
}

}  // namespace
