// The channel of Windows: both ends in this process, and HelperWatch over it with a real second process.
#include "monitor/helper_channel.h"
#include "monitor/helper_client.h"
#include "monitor/helper_watch.h"
#include "tests/monitor/reports.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <future>

using monitor::HelperClient;

namespace {

// A helper ends within this time after the stop event; a watch waits 5 seconds for it.
constexpr std::chrono::seconds kSoon{4};

struct Channel {
    Channel()
    {
        EXPECT_EQ(channel->createPipe(names.pipe), 0U);
        EXPECT_EQ(channel->createStopEvent(names.stopEvent), 0U);
    }
    [[nodiscard]] std::uint32_t connect(HelperClient& client,
                                        std::uint64_t parent = ::GetCurrentProcessId()) const
    {
        return client.connect(names.pipe, names.stopEvent, parent);
    }
    const monitor::HelperNames names =
        monitor::helperNames("test-" + std::to_string(::GetCurrentProcessId()));
    const std::unique_ptr<monitor::HelperChannel> channel = monitor::makeHelperChannel();
};

TEST(HelperChannel, AHelperMayConnectAndEndBeforeTheWait)
{
    for (const bool endsBefore : {false, true}) {
        const Channel pair;
        auto client = std::make_unique<HelperClient>();
        ASSERT_EQ(pair.connect(*client), 0U);
        EXPECT_TRUE(client->write("the first words"));
        if (endsBefore) { client.reset(); }
        EXPECT_EQ(pair.channel->waitForConnection(), 0U);
        client.reset();
        std::string text;
        std::array<std::uint8_t, 4> bytes = {};
        while (const std::size_t count = pair.channel->read(bytes)) {
            text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        }
        EXPECT_EQ(text, "the first words");
    }
}

TEST(HelperChannel, APipeIsForOneWatchAndOneHelper)
{
    const Channel pair;
    EXPECT_NE(monitor::makeHelperChannel()->createPipe(pair.names.pipe), 0U);
    HelperClient client;
    ASSERT_EQ(pair.connect(client), 0U);
    EXPECT_EQ(pair.channel->waitForConnection(), 0U);
    HelperClient intruder;
    EXPECT_NE(pair.connect(intruder), 0U);
    EXPECT_TRUE(client.write("mine"));
    pair.channel->signalStop();
    client.waitForStop();
    client.waitForStop();
    pair.channel->closePipe();
    EXPECT_FALSE(client.write("too late"));
    EXPECT_NE(pair.connect(intruder), 0U);
}

TEST(HelperChannel, CarriesAWatchByAProcess)
{
    const std::string root = "C:\\Disc \xC3\xA9 \"a\\\" b\\";
    const struct {
        std::string root;
        std::ptrdiff_t count;
        std::string reports;  // the first `count`
    } rows[] = {{root, 1, "OPEN " + root},
                {"flood", 4, "OPEN flood; OPEN flood; OPEN flood; OPEN flood"},
                {"absent", 1, "FAILED NotConnected " + std::to_string(ERROR_BROKEN_PIPE)}};
    for (const auto& row : rows) {
        testsupport::Reports reports;
        monitor::HelperWatch watch(monitor::makeHelperChannel(), TEST_HELPER, "test");
        ASSERT_EQ(testsupport::textOf(watch.start(row.root, reports.sink())), "");
        EXPECT_TRUE(reports.after("", row.count).starts_with(row.reports)) << reports.text().substr(0, 200);
        const auto begin = std::chrono::steady_clock::now();
        watch.stop();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, kSoon);
        EXPECT_EQ(reports.text().find("FAILED", 1), std::string::npos);
    }
}

TEST(HelperChannel, AClientNoticesTheEndOfItsParent)
{
    testsupport::Reports reports;
    monitor::HelperWatch parent(monitor::makeHelperChannel(), TEST_HELPER, "parent");
    ASSERT_EQ(testsupport::textOf(parent.start("x", reports.sink())), "");
    const std::string text = reports.after("CLOSE");
    const Channel pair;
    HelperClient client;
    ASSERT_EQ(pair.connect(client, std::stoull(text.substr(text.rfind(' ')))), 0U) << text;
    std::future<void> end = std::async(std::launch::async, [&] { client.waitForStop(); });
    EXPECT_EQ(end.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    parent.stop();
    EXPECT_EQ(end.wait_for(kSoon), std::future_status::ready);
    pair.channel->signalStop();
}

}  // namespace
