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
    // From start() to stop() the report is used on the trace's thread alone.
    explicit FileTrace(AccessReport& report);
    ~FileTrace();  // stops
    FileTrace(const FileTrace&) = delete;
    FileTrace& operator=(const FileTrace&) = delete;

    // The sentence that says what failed, or nothing; what fails later goes to the report.
    [[nodiscard]] std::optional<std::string> start();

    // What was traced up to now may still be reported meanwhile, nothing afterwards.
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
