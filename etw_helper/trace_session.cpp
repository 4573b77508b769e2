#include "etw_helper/trace_session.h"

#include "base/native/handle_windows.h"
#include "etw_helper/process_id.h"

#include <array>
#include <cstddef>
#include <vector>

namespace etw_helper {

namespace {

constexpr std::wstring_view kNamePrefix = L"Platterscope-ETW-Helper-";

constexpr GUID kFileProvider = {0xEDD08927, 0x9CC4, 0x4E65, {0xB9, 0x70, 0xC2, 0x56, 0x0F, 0xB5, 0xC2, 0x89}};
constexpr ULONGLONG kFileIoKeyword = 0x20;  // enables Cleanup
constexpr ULONGLONG kOpEndKeyword = 0x40;   // enables OperationEnd
constexpr ULONGLONG kCreateKeyword = 0x80;  // enables Create
constexpr UCHAR kEveryLevel = 0xFF;

constexpr ULONG kQpcClock = 1;
constexpr ULONG kBufferKilobytes = 64;
constexpr ULONG kMinimumBuffers = 64;
constexpr ULONG kMaximumBuffers = 256;
constexpr ULONG kFlushSeconds = 1;      // flush interval of buffers that are not full
constexpr ULONG kMaximumSessions = 64;  // the system's own limit
constexpr std::size_t kMaximumNameUnits = 1024;

// The properties, and room for the names, which the system writes after them.
struct SessionProperties {
    SessionProperties()
    {
        properties.Wnode.BufferSize = sizeof(SessionProperties);
        properties.LoggerNameOffset = offsetof(SessionProperties, name);
        properties.LogFileNameOffset = offsetof(SessionProperties, logFile);
    }

    EVENT_TRACE_PROPERTIES properties = {};
    std::array<wchar_t, kMaximumNameUnits> name = {};
    std::array<wchar_t, kMaximumNameUnits> logFile = {};
};

SessionProperties newSessionProperties()
{
    SessionProperties session;
    session.properties.Wnode.Flags = WNODE_FLAG_TRACED_GUID;
    session.properties.Wnode.ClientContext = kQpcClock;
    session.properties.BufferSize = kBufferKilobytes;
    session.properties.MinimumBuffers = kMinimumBuffers;
    session.properties.MaximumBuffers = kMaximumBuffers;
    session.properties.LogFileMode = EVENT_TRACE_REAL_TIME_MODE;
    session.properties.LogFileNameOffset = 0;  // no log file
    session.properties.FlushTimer = kFlushSeconds;
    return session;
}

void stopSession(const std::wstring& name)
{
    SessionProperties session;
    ::ControlTraceW(0, name.c_str(), &session.properties, EVENT_TRACE_CONTROL_STOP);
}

bool isRunning(std::uint32_t processId)
{
    const native::Handle process(::OpenProcess(SYNCHRONIZE, FALSE, processId));
    if (!process) { return ::GetLastError() != ERROR_INVALID_PARAMETER; }  // then no process has this id
    return ::WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

void stopOrphanedSessions()
{
    std::vector<SessionProperties> sessions(kMaximumSessions);
    std::vector<EVENT_TRACE_PROPERTIES*> pointers;
    pointers.reserve(sessions.size());
    for (SessionProperties& session : sessions) {
        pointers.push_back(&session.properties);
    }
    ULONG count = 0;
    const ULONG error = ::QueryAllTracesW(pointers.data(), kMaximumSessions, &count);
    if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) { return; }
    for (ULONG i = 0; i < count && i < kMaximumSessions; ++i) {
        const std::wstring name = sessions[i].name.data();
        const auto processId = sessionProcessId(name);
        if (processId && !isRunning(*processId)) { stopSession(name); }
    }
}

}  // namespace

TraceSession::TraceSession()
    : m_name(sessionName(::GetCurrentProcessId()))
{}

TraceSession::~TraceSession()
{
    stop();
}

DWORD TraceSession::start()
{
    stopOrphanedSessions();
    stopSession(m_name);  // left by an earlier process of the same id
    SessionProperties session = newSessionProperties();
    const ULONG started = ::StartTraceW(&m_handle, m_name.c_str(), &session.properties);
    if (started != ERROR_SUCCESS) {
        m_handle = 0;
        return started;
    }
    const ULONG enabled =
        ::EnableTraceEx2(m_handle, &kFileProvider, EVENT_CONTROL_CODE_ENABLE_PROVIDER, kEveryLevel,
                         kFileIoKeyword | kOpEndKeyword | kCreateKeyword, 0, 0, nullptr);
    if (enabled != ERROR_SUCCESS) { stop(); }
    return enabled;
}

void TraceSession::stop()
{
    if (m_handle == 0) { return; }
    SessionProperties session;
    ::ControlTraceW(m_handle, nullptr, &session.properties, EVENT_TRACE_CONTROL_STOP);
    m_handle = 0;
}

std::wstring sessionName(std::uint32_t processId)
{
    return std::wstring(kNamePrefix) + std::to_wstring(processId);
}

std::optional<std::uint32_t> sessionProcessId(std::wstring_view name)
{
    if (!name.starts_with(kNamePrefix)) { return std::nullopt; }
    const std::uint32_t processId = processIdOf(name.substr(kNamePrefix.size()));
    return processId != 0 ? std::optional(processId) : std::nullopt;
}

}  // namespace etw_helper
