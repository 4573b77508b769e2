// The system's side of one watch through a helper process: the pipe the helper writes to, the event that tells
// it to stop, and the process itself (helper_channel_windows.cpp; helper_channel_posix.cpp has the same shape on
// sockets, semaphores and processes, so that the protocol runs and is tested everywhere). Calls return the
// system's error number, 0 for success; what is not there is passed over.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace monitor {

class HelperChannel {
public:
    HelperChannel();
    ~HelperChannel();  // closes whatever is open
    HelperChannel(const HelperChannel&) = delete;
    HelperChannel& operator=(const HelperChannel&) = delete;

    // Inbound, one instance, a byte stream. Windows: an input buffer of one maximal message.
    [[nodiscard]] std::uint32_t createPipe(const std::string& name);

    // Manual reset, not signalled.
    [[nodiscard]] std::uint32_t createStopEvent(const std::string& name);

    // Starts the helper with administrator rights (Windows: the elevation prompt; elsewhere: as it is), without
    // a window. `parameters` follow the quoting rules of Windows.
    [[nodiscard]] std::uint32_t launch(const std::string& executable, const std::string& parameters);

    // Blocks until the helper has connected, be it before the call. Ends with the system's number for a broken
    // pipe when the helper's process ends first, and with the one for a cancelled operation after cancelIo().
    [[nodiscard]] std::uint32_t waitForConnection();

    // Blocks until something can be read; how much was. 0 at the end of the pipe, on a failure and when it was
    // cancelled.
    [[nodiscard]] std::size_t read(std::span<std::uint8_t> buffer);

    void signalStop();

    // Ends a wait or a read that is pending; one that begins just then may be missed, so it is repeated until the
    // reader has ended. May be called from any thread.
    void cancelIo();

    void closePipe();

    // Waits for the process's end no longer than `limit`, and lets go of it.
    void releaseProcess(std::chrono::milliseconds limit);

    void closeStopEvent();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

[[nodiscard]] std::uint64_t currentProcessId();

// Whether there is a file of this name, a directory not counted.
[[nodiscard]] bool fileExists(const std::string& path);

}  // namespace monitor
