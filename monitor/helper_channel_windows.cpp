#include "base/native/handle_windows.h"
#include "monitor/helper_channel.h"
#include "monitor/helper_endpoint_windows.h"
#include "monitor/helper_message.h"

#include <sddl.h>
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <thread>

namespace monitor {

namespace {

constexpr DWORD kPipeBufferBytes = kMessageHeaderBytes + kMaximumPayloadBytes;
constexpr DWORD kCancelIntervalMs = 10;

// Everybody may wait for the stop event, and nothing more: the helper may run as an administrator who is not the user.
constexpr wchar_t kEverybodyMayWait[] = L"D:(A;;0x100000;;;WD)";

// Cancels pending I/O on the pipe when the process ends, from construction until finish().
class PipeCanceller {
public:
    PipeCanceller(HANDLE pipe, HANDLE process)
        : m_done(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        if (m_done && process != nullptr) {
            m_thread = std::thread(&PipeCanceller::run, this, pipe, process);
        }
    }
    ~PipeCanceller() { finish(); }
    PipeCanceller(const PipeCanceller&) = delete;
    PipeCanceller& operator=(const PipeCanceller&) = delete;

    // Stops watching the process. Returns whether it has ended.
    bool finish()
    {
        if (m_thread.joinable()) {
            ::SetEvent(m_done.get());
            m_thread.join();
        }
        return m_hasProcessEnded;
    }

private:
    void run(HANDLE pipe, HANDLE process)
    {
        const std::array handles = {m_done.get(), process};
        const DWORD ended =
            ::WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, INFINITE);
        if (ended != WAIT_OBJECT_0 + 1) { return; }
        m_hasProcessEnded = true;
        do {
            ::CancelIoEx(pipe, nullptr);  // repeated: the I/O may not be pending yet
        } while (::WaitForSingleObject(m_done.get(), kCancelIntervalMs) == WAIT_TIMEOUT);
    }

    native::Handle m_done;
    bool m_hasProcessEnded = false;
    std::thread m_thread;
};

class WindowsHelperChannel final : public HelperChannel {
public:
    std::uint32_t createPipe(const std::string& name) override
    {
        constexpr DWORD kMode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
        m_pipe = native::handleOrNull(::CreateNamedPipeW(pipePath(name).c_str(), PIPE_ACCESS_INBOUND, kMode,
                                                         1, 0, kPipeBufferBytes, 0, nullptr));
        return m_pipe ? 0 : native::lastError();
    }

    std::uint32_t createStopEvent(const std::string& name) override
    {
        PSECURITY_DESCRIPTOR memory = nullptr;
        if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(kEverybodyMayWait, SDDL_REVISION_1,
                                                                   &memory, nullptr) == FALSE) {
            return native::lastError();
        }
        const native::LocalMemory<void> descriptor(memory);
        SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor.get(), FALSE};
        m_stopEvent.reset(::CreateEventW(&attributes, TRUE, FALSE, native::wideText(name).c_str()));
        return m_stopEvent ? 0 : native::lastError();
    }

    [[nodiscard]] bool fileExists(const std::string& path) const override
    {
        const DWORD attributes = ::GetFileAttributesW(native::wideText(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }

    [[nodiscard]] std::uint64_t currentProcessId() const override { return ::GetCurrentProcessId(); }

    std::uint32_t launch(const std::string& executable, const std::string& parameters) override
    {
        std::wstring file = native::wideText(executable);
        std::ranges::replace(file, L'/', L'\\');  // the shell does not take slashes as the file system does
        const std::wstring arguments = native::wideText(parameters);
        SHELLEXECUTEINFOW info = {};
        info.cbSize = sizeof info;
        info.fMask = SEE_MASK_NOCLOSEPROCESS;
        info.lpVerb = L"runas";
        info.lpFile = file.c_str();
        info.lpParameters = arguments.c_str();
        info.nShow = SW_HIDE;
        if (::ShellExecuteExW(&info) == FALSE) { return native::lastError(); }
        m_process.reset(info.hProcess);
        return 0;
    }

    std::uint32_t waitForConnection() override
    try {
        PipeCanceller canceller(m_pipe.get(), m_process.get());
        const std::uint32_t error =
            ::ConnectNamedPipe(m_pipe.get(), nullptr) != FALSE ? 0 : native::lastError();
        const bool hasProcessEnded = canceller.finish();
        // The helper connected before the call. After ERROR_NO_DATA it has closed its end too, but what it wrote can
        // still be read.
        if (error == ERROR_PIPE_CONNECTED || error == ERROR_NO_DATA) { return 0; }
        return error == ERROR_OPERATION_ABORTED && hasProcessEnded ? ERROR_BROKEN_PIPE : error;
    } catch (const std::system_error&) {
        return ERROR_NO_SYSTEM_RESOURCES;  // no thread for the canceller
    }

    std::size_t read(std::span<std::uint8_t> buffer) override
    {
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(buffer.size(), MAXLONG));
        DWORD count = 0;
        return ::ReadFile(m_pipe.get(), buffer.data(), wanted, &count, nullptr) != FALSE ? count : 0;
    }

    void signalStop() override
    {
        if (m_stopEvent) { ::SetEvent(m_stopEvent.get()); }
    }

    void cancelIo() override
    {
        if (m_pipe) { ::CancelIoEx(m_pipe.get(), nullptr); }
    }

    void closePipe() override
    {
        if (m_pipe) { ::DisconnectNamedPipe(m_pipe.get()); }
        m_pipe.reset();
    }

    void releaseProcess(std::chrono::milliseconds limit) override
    {
        if (m_process) { ::WaitForSingleObject(m_process.get(), static_cast<DWORD>(limit.count())); }
        m_process.reset();
    }

    void closeStopEvent() override { m_stopEvent.reset(); }

private:
    native::Handle m_pipe;
    native::Handle m_stopEvent;
    native::Handle m_process;
};

}  // namespace

std::unique_ptr<HelperChannel> makeHelperChannel()
{
    return std::make_unique<WindowsHelperChannel>();
}

}  // namespace monitor
