// Reads the events of a trace session on a thread of its own and hands them to the report.
#pragma once

#include "etw_helper/access_report.h"
#include "etw_helper/trace_session.h"

#include <evntcons.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>

namespace etw_helper {

class FileTrace {
public:
    // From start() to stop() only the trace's thread uses the report.
    explicit FileTrace(AccessReport& report);
    ~FileTrace();  // calls stop()
    FileTrace(const FileTrace&) = delete;
    FileTrace& operator=(const FileTrace&) = delete;

    // Returns a sentence on failure, nothing on success. Later failures go to the report.
    [[nodiscard]] std::optional<std::string> start();

    // Ends the session and the thread. Nothing is reported after it has returned.
    void stop();

private:
    static void WINAPI onEvent(EVENT_RECORD* event);
    void take(EVENT_RECORD& event);
    void run();

    AccessReport& m_report;
    TraceSession m_session;
    TRACEHANDLE m_reader = INVALID_PROCESSTRACE_HANDLE;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};

}  // namespace etw_helper
