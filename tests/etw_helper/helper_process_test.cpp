// The real helper. Where it may not trace (wine has no tracing), it says so and ends; that is as far as these go.
#include "monitor/helper_watch.h"

#include <gtest/gtest.h>
#include <process.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <future>

namespace {

constexpr std::chrono::seconds kPatience{30};
constexpr int kNoConnection = 1;
constexpr int kWrongUse = 2;

// Its exit code.
template <typename... Arguments>
int run(Arguments... arguments)
{
    return static_cast<int>(::_spawnl(_P_WAIT, ETW_HELPER, "PlatterscopeEtwHelper", arguments..., nullptr));
}

class HelperProcess : public testing::Test {
protected:
    const std::string m_uuid = "etw-test-" + std::to_string(monitor::currentProcessId());
    const monitor::HelperNames m_names = monitor::helperNames(m_uuid);
    const std::string m_folder = std::filesystem::temp_directory_path().string();
};

TEST_F(HelperProcess, SaysByItsExitCodeWhatItCannotSayOtherwise)
{
    EXPECT_EQ(run(), kWrongUse);
    EXPECT_EQ(run("--help"), kWrongUse);
    const std::string process = std::to_string(monitor::currentProcessId());
    EXPECT_EQ(
        run("--pipe", "none", "--root", "C:\\", "--stop-event", "none", "--parent-pid", process.c_str()),
        kNoConnection);
}

TEST_F(HelperProcess, ConnectsAndEndsWhenItIsStopped)
{
    monitor::HelperChannel channel;
    ASSERT_EQ(channel.createPipe(m_names.pipe), 0U);
    ASSERT_EQ(channel.createStopEvent(m_names.stopEvent), 0U);
    ASSERT_EQ(
        channel.launch(ETW_HELPER, monitor::helperParameters(m_names, m_folder, monitor::currentProcessId())),
        0U);
    EXPECT_EQ(channel.waitForConnection(), 0U);
    channel.signalStop();
    std::array<std::uint8_t, 4096> bytes = {};
    while (channel.read(bytes) > 0) {}  // its end of the pipe closes when it ends
    const auto start = std::chrono::steady_clock::now();
    channel.releaseProcess(kPatience);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kPatience);
}

TEST_F(HelperProcess, ReportsADirectoryThatIsNotThere)
{
    std::promise<monitor::WatchFailure> failure;
    monitor::HelperWatch watch(ETW_HELPER, m_uuid);
    ASSERT_EQ(watch.start(
                  m_folder + "\\none",
                  {.onEvents = [](const auto&) {},
                   .onFailure = [&](monitor::WatchFailure reason) { failure.set_value(std::move(reason)); }}),
              std::nullopt);
    std::future<monitor::WatchFailure> future = failure.get_future();
    ASSERT_EQ(future.wait_for(kPatience), std::future_status::ready);
    const monitor::WatchFailure reason = future.get();
    EXPECT_EQ(reason.kind, monitor::WatchFailure::Kind::HelperFailed);
    EXPECT_EQ(reason.text, "The Windows ETW helper could not find the disc's directory (error 2).");
    watch.stop();
}

}  // namespace
