// One watch through a real second process (test_helper.cpp), and all it reported.
#pragma once

#include "monitor/helper_watch.h"
#include "tests/monitor/test_platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>

namespace testsupport {

inline constexpr std::chrono::seconds kPatience{30};

class Recorder {
public:
    [[nodiscard]] monitor::WatchSink sink()
    {
        return {.onEvents =
                    [this](const std::vector<monitor::AccessEvent>& batch) {
                        const std::lock_guard lock(m_mutex);
                        EXPECT_FALSE(batch.empty());
                        EXPECT_TRUE(failures.empty());
                        events.insert(events.end(), batch.begin(), batch.end());
                        m_change.notify_all();
                    },
                .onFailure =
                    [this](const monitor::WatchFailure& failure) {
                        const std::lock_guard lock(m_mutex);
                        failures.push_back(failure);
                        m_change.notify_all();
                    }};
    }

    void waitForEvents(std::size_t count)
    {
        waitFor([&] { return events.size() >= count; });
    }
    void waitForFailure()
    {
        waitFor([&] { return !failures.empty(); });
    }

    // Each event as "O path" or "C path". Not while the watch runs.
    [[nodiscard]] std::vector<std::string> lines() const
    {
        std::vector<std::string> lines;
        for (const monitor::AccessEvent& event : events) {
            EXPECT_FALSE(event.isStillOpen);
            lines.push_back((event.kind == monitor::AccessEvent::Kind::Open ? "O " : "C ") + event.path);
        }
        return lines;
    }

    std::vector<monitor::AccessEvent> events;
    std::vector<monitor::WatchFailure> failures;

private:
    template <typename Condition>
    void waitFor(Condition condition)
    {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_change.wait_for(lock, kPatience, condition)) << events.size() << " events";
    }

    std::mutex m_mutex;
    std::condition_variable m_change;
};

class HelperWatchTest : public testing::Test {
protected:
    HelperWatchTest() { std::filesystem::create_directory(m_root); }
    ~HelperWatchTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }

    // Whatever a test did, nothing of it is left. A thread that was joined may stay listed for a moment.
    void TearDown() override
    {
        m_watch.stop();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (heldResources(m_names) != m_heldBefore && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
        EXPECT_EQ(heldResources(m_names), m_heldBefore);
    }

    void writeScript(const std::string& script) const
    {
        std::ofstream(m_root / "script", std::ios::binary) << script;
    }

    // Starts `watch` with a helper that acts `script` out.
    [[nodiscard]] std::optional<monitor::WatchFailure> start(monitor::AccessWatch& watch,
                                                             const std::string& script)
    {
        writeScript(script);
        return watch.start(rootText(), m_recorder.sink());
    }

    // A whole watch, up to the failure that it reports.
    void watchUntilFailure(const std::string& script)
    {
        ASSERT_EQ(start(m_watch, script), std::nullopt);
        m_recorder.waitForFailure();
        m_watch.stop();
        ASSERT_EQ(m_recorder.failures.size(), 1U);
    }

    [[nodiscard]] std::string rootText() const
    {
        const std::u8string text = m_root.u8string();
        return {text.begin(), text.end()};
    }
    [[nodiscard]] bool wasHelperStopped() const { return std::filesystem::exists(m_root / "stopped"); }

    const std::string m_uuid = "test-" + std::to_string(monitor::currentProcessId());
    const monitor::HelperNames m_names = monitor::helperNames(m_uuid);
    const std::filesystem::path m_root = std::filesystem::temp_directory_path() /
                                         (u8"Disc \u00E9 of " + std::u8string(m_uuid.begin(), m_uuid.end()));
    const std::string m_heldBefore = heldResources(m_names);
    Recorder m_recorder;
    monitor::HelperWatch m_watch{TEST_HELPER, m_uuid};
};

}  // namespace testsupport
