// A watch by a helper process, which is started with administrator rights and reports opened and closed files through
// a pipe. Portable: HelperChannel makes the system's calls.
#pragma once

#include "monitor/access_watch.h"
#include "monitor/helper_channel.h"
#include "monitor/helper_command_line.h"

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace monitor {

class HelperWatch final : public AccessWatch {
public:
    // `executable` is the helper's path. The names of the pipe and the event are made from `uuid`, which must be new
    // for every watch.
    HelperWatch(std::unique_ptr<HelperChannel> channel, std::string executable, const std::string& uuid);
    ~HelperWatch() override;

    // In this order: creates the pipe and the stop event, looks for the helper, launches it, starts the reader thread.
    [[nodiscard]] std::optional<WatchFailure> start(const std::string& root, WatchSink sink) override;

    // In this order: signals the stop event, cancels the pending read, joins the reader, closes the pipe, waits at most
    // 5 seconds for the helper to end, closes the event.
    void stop() override;

private:
    [[nodiscard]] std::optional<WatchFailure> launchHelper(const std::string& root);
    [[nodiscard]] std::optional<WatchFailure> startReader();
    void runReader();
    [[nodiscard]] WatchFailure readMessages();
    void release();

    const std::unique_ptr<HelperChannel> m_channel;
    const std::string m_executable;
    const HelperNames m_names;
    WatchSink m_sink;
    // Cleared once: by stop(), or by the reader, which then reports its one failure.
    std::atomic<bool> m_isRunning = false;
    std::promise<void> m_readerEnd;
    std::thread m_reader;
};

}  // namespace monitor
