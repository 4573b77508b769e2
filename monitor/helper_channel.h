// The system's side of one watch through a helper process: the pipe that the helper writes to, the event that stops
// the helper, and the process itself. An interface, so that HelperWatch can be tested on every system. Functions that
// return std::uint32_t return the system's error number, 0 on success. Closing what is not open does nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace monitor {

class HelperChannel {
public:
    HelperChannel() = default;
    virtual ~HelperChannel() = default;  // implementations close everything
    HelperChannel(const HelperChannel&) = delete;
    HelperChannel& operator=(const HelperChannel&) = delete;

    // Creates the pipe: inbound, one instance, a byte stream, with a buffer of one maximal message.
    [[nodiscard]] virtual std::uint32_t createPipe(const std::string& name) = 0;

    // Creates the stop event: manual reset, not signalled.
    [[nodiscard]] virtual std::uint32_t createStopEvent(const std::string& name) = 0;

    // Whether `path` exists and is not a directory.
    [[nodiscard]] virtual bool fileExists(const std::string& path) const = 0;

    [[nodiscard]] virtual std::uint64_t currentProcessId() const = 0;

    // Starts the helper with administrator rights (the elevation prompt), without a window. `parameters` is its
    // command line, quoted by the rules of Windows.
    [[nodiscard]] virtual std::uint32_t launch(const std::string& executable,
                                               const std::string& parameters) = 0;

    // Blocks until the helper has connected, which it may have done before the call. Returns the number of a broken
    // pipe if the helper's process ends first, and the number of an aborted operation after cancelIo().
    [[nodiscard]] virtual std::uint32_t waitForConnection() = 0;

    // Blocks until there is something to read. Returns the count of bytes read; 0 at the end of the pipe, on failure
    // and after cancelIo().
    [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> buffer) = 0;

    virtual void signalStop() = 0;

    // Ends a pending wait or read. Misses one that is just about to begin, so the caller repeats the call until the
    // reader has ended. May be called from any thread.
    virtual void cancelIo() = 0;

    virtual void closePipe() = 0;

    // Waits at most `limit` for the process to end, then closes its handle.
    virtual void releaseProcess(std::chrono::milliseconds limit) = 0;

    virtual void closeStopEvent() = 0;
};

// The channel of Windows (helper_channel_windows.cpp); other systems have none.
[[nodiscard]] std::unique_ptr<HelperChannel> makeHelperChannel();

}  // namespace monitor
