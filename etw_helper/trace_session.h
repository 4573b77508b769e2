// A session of the system's event tracing that tells of every file any process opens and closes. Administrators
// alone may start one, and it outlives the process that did, unless it is stopped.
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
    ~TraceSession();  // stops
    TraceSession(const TraceSession&) = delete;
    TraceSession& operator=(const TraceSession&) = delete;

    // The system's error number, 0 for success. First stops what helpers have left behind that are no more.
    [[nodiscard]] DWORD start();
    void stop();

    [[nodiscard]] const std::wstring& name() const { return m_name; }

private:
    std::wstring m_name;
    TRACEHANDLE m_handle = 0;
};

// The name of the session of the helper with this process id.
[[nodiscard]] std::wstring sessionName(std::uint32_t processId);

// The way back; nothing for a session that is no helper's.
[[nodiscard]] std::optional<std::uint32_t> sessionProcessId(std::wstring_view name);

}  // namespace etw_helper
