#include "monitor/helper_channel.h"
#include "monitor/helper_meeting_windows.h"
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

// Whoever the helper runs as, which may be an administrator other than the user, may wait for the stop event, and
// nobody may do more than that.
constexpr wchar_t kEverybodyMayWait[] = L"D:(A;;0x100000;;;WD)";

struct LocalFreer {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

// While it lives, the end of the process ends what is pending on the pipe.
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

    // Stops watching; whether the process has ended meanwhile.
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
            ::CancelIoEx(pipe, nullptr);  // may come before there is something to cancel
        } while (::WaitForSingleObject(m_done.get(), kCancelIntervalMs) == WAIT_TIMEOUT);
    }

    Handle m_done;
    bool m_hasProcessEnded = false;
    std::thread m_thread;
};

}  // namespace

struct HelperChannel::Native {
    Handle pipe;
    Handle stopEvent;
    Handle process;
};

HelperChannel::HelperChannel()
    : m_native(std::make_unique<Native>())
{}

HelperChannel::~HelperChannel() = default;

std::uint32_t HelperChannel::createPipe(const std::string& name)
{
    constexpr DWORD kMode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
    m_native->pipe = handleOrNull(::CreateNamedPipeW(pipePath(name).c_str(), PIPE_ACCESS_INBOUND, kMode, 1, 0,
                                                     kPipeBufferBytes, 0, nullptr));
    return m_native->pipe ? 0 : lastError();
}

std::uint32_t HelperChannel::createStopEvent(const std::string& name)
{
    PSECURITY_DESCRIPTOR memory = nullptr;
    if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(kEverybodyMayWait, SDDL_REVISION_1, &memory,
                                                               nullptr) == FALSE) {
        return lastError();
    }
    const std::unique_ptr<void, LocalFreer> descriptor(memory);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor.get(), FALSE};
    m_native->stopEvent.reset(::CreateEventW(&attributes, TRUE, FALSE, wideText(name).c_str()));
    return m_native->stopEvent ? 0 : lastError();
}

std::uint32_t HelperChannel::launch(const std::string& executable, const std::string& parameters)
{
    std::wstring file = wideText(executable);
    std::ranges::replace(file, L'/', L'\\');  // the shell is not the file system
    const std::wstring arguments = wideText(parameters);
    SHELLEXECUTEINFOW info = {};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    info.lpVerb = L"runas";
    info.lpFile = file.c_str();
    info.lpParameters = arguments.c_str();
    info.nShow = SW_HIDE;
    if (::ShellExecuteExW(&info) == FALSE) { return lastError(); }
    m_native->process.reset(info.hProcess);
    return 0;
}

std::uint32_t HelperChannel::waitForConnection()
try {
    PipeCanceller canceller(m_native->pipe.get(), m_native->process.get());
    const std::uint32_t error = ::ConnectNamedPipe(m_native->pipe.get(), nullptr) != FALSE ? 0 : lastError();
    const bool hasProcessEnded = canceller.finish();
    // It connected before the wait; ERROR_NO_DATA: and has closed its end, but what it wrote is still there.
    if (error == ERROR_PIPE_CONNECTED || error == ERROR_NO_DATA) { return 0; }
    return error == ERROR_OPERATION_ABORTED && hasProcessEnded ? ERROR_BROKEN_PIPE : error;
} catch (const std::system_error&) {
    return ERROR_NO_SYSTEM_RESOURCES;  // no thread for the canceller
}

std::size_t HelperChannel::read(std::span<std::uint8_t> buffer)
{
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(buffer.size(), MAXLONG));
    DWORD count = 0;
    return ::ReadFile(m_native->pipe.get(), buffer.data(), wanted, &count, nullptr) != FALSE ? count : 0;
}

void HelperChannel::signalStop()
{
    if (m_native->stopEvent) { ::SetEvent(m_native->stopEvent.get()); }
}

void HelperChannel::cancelIo()
{
    if (m_native->pipe) { ::CancelIoEx(m_native->pipe.get(), nullptr); }
}

void HelperChannel::closePipe()
{
    if (m_native->pipe) { ::DisconnectNamedPipe(m_native->pipe.get()); }
    m_native->pipe.reset();
}

void HelperChannel::releaseProcess(std::chrono::milliseconds limit)
{
    if (m_native->process) {
        ::WaitForSingleObject(m_native->process.get(), static_cast<DWORD>(limit.count()));
    }
    m_native->process.reset();
}

void HelperChannel::closeStopEvent()
{
    m_native->stopEvent.reset();
}

std::uint64_t currentProcessId()
{
    return ::GetCurrentProcessId();
}

bool fileExists(const std::string& path)
{
    const DWORD attributes = ::GetFileAttributesW(wideText(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace monitor
