// A helper process's side of the channel: how it reaches the pipe and hears that it is to stop
// (helper_client_windows.cpp, helper_client_posix.cpp).
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

    // The system's error number, 0 for success.
    [[nodiscard]] std::uint32_t connect(const std::string& pipe, const std::string& stopEvent,
                                        std::uint64_t parentProcessId);

    // Writes all of it; false when the other side is gone. One thread at a time.
    [[nodiscard]] bool write(std::string_view bytes);

    // Blocks until the stop event is signalled or the parent process has ended.
    void waitForStop();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

}  // namespace monitor
