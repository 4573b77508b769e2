// The helper's side of the channel: connects to the pipe, writes to it and waits for the stop event
// (helper_client_windows.cpp; only Windows has a helper).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace monitor {

class HelperClient {
public:
    HelperClient();
    ~HelperClient();
    HelperClient(const HelperClient&) = delete;
    HelperClient& operator=(const HelperClient&) = delete;

    // Opens the parent process, the stop event and the pipe. Returns the system's error number, 0 on success.
    [[nodiscard]] std::uint32_t connect(const std::string& pipe, const std::string& stopEvent,
                                        std::uint64_t parentProcessId);

    // Writes all bytes. Returns false if the other side has closed the pipe. One thread at a time.
    [[nodiscard]] bool write(std::string_view bytes);

    // Blocks until the stop event is signalled or the parent process has ended.
    void waitForStop();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

}  // namespace monitor
