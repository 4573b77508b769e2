// Watching through a helper process: it is started with administrator rights, reports over a pipe which files
// are opened and closed, and ends when it is told to. The logic alone; what the system does is HelperChannel's.
#pragma once

#include "monitor/access_watch.h"
#include "monitor/helper_channel.h"
#include "monitor/helper_command_line.h"

#include <atomic>
#include <future>
#include <optional>
#include <string>
#include <thread>

namespace monitor {

class HelperWatch final : public AccessWatch {
public:
    // `executable` is the helper's path; `uuid` names the pipe and the event, and is new for every watch.
    HelperWatch(std::string executable, const std::string& uuid);
    ~HelperWatch() override;

    // Pipe, stop event, helper, launch, reader thread, in this order.
    [[nodiscard]] std::optional<WatchFailure> start(const std::string& root, WatchSink sink) override;

    // Signals the helper, ends the pending read, joins the reader, closes the pipe, waits at most 5 seconds for
    // the helper's end, closes the event.
    void stop() override;

private:
    [[nodiscard]] std::optional<WatchFailure> launchHelper(const std::string& root);
    [[nodiscard]] std::optional<WatchFailure> startReader();
    void runReader();
    [[nodiscard]] WatchFailure readMessages();
    void release();

    const std::string m_executable;
    const HelperNames m_names;
    WatchSink m_sink;
    HelperChannel m_channel;
    // Cleared once, by what ends the watch: stop(), or the reader with the one failure that it may report.
    std::atomic<bool> m_isRunning = false;
    std::promise<void> m_readerEnd;
    std::thread m_reader;
};

}  // namespace monitor
