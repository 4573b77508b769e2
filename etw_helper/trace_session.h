// A session of Event Tracing for Windows with the file events of all processes. Only administrators may start one. A
// session that is not stopped outlives the process that started it.
#pragma once

#include <windows.h>
#include <evntrace.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace etw_helper {

class TraceSession {
public:
    TraceSession();
    ~TraceSession();  // calls stop()
    TraceSession(const TraceSession&) = delete;
    TraceSession& operator=(const TraceSession&) = delete;

    // Stops the sessions of helpers that no longer run, then starts this one. Returns the system's error number, 0 on
    // success.
    [[nodiscard]] DWORD start();
    void stop();

    [[nodiscard]] const std::wstring& name() const { return m_name; }

private:
    std::wstring m_name;
    TRACEHANDLE m_handle = 0;
};

// The session's name of the helper with this process id.
[[nodiscard]] std::wstring sessionName(std::uint32_t processId);

// The process id in a session's name; nothing if it is not the session of a helper.
[[nodiscard]] std::optional<std::uint32_t> sessionProcessId(std::wstring_view name);

}  // namespace etw_helper
