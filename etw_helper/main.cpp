// The helper process, which has the rights to trace file accesses (README.md).
#include "base/native/handle_windows.h"
#include "etw_helper/file_trace.h"
#include "etw_helper/helper_arguments.h"
#include "monitor/helper_client.h"

#include <cstdio>
#include <span>
#include <string>

namespace {

constexpr int kNoConnection = 1;
constexpr int kWrongUse = 2;
constexpr int kCannotTrace = 3;

constexpr char kUsage[] = "Usage: PlatterscopeEtwHelper --pipe NAME --root DIRECTORY --stop-event NAME "
                          "--parent-pid NUMBER\n"
                          "Platterscope starts this program by itself.\n";

// If the helper runs as an administrator who is not the user, it needs this privilege to open the user's process, whose
// end it waits for. A failure is ignored: connect() fails then if the privilege was needed.
void enableDebugPrivilege()
{
    HANDLE token = nullptr;
    if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &token) == FALSE) { return; }
    const native::Handle closer(token);
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (::LookupPrivilegeValueW(nullptr, SE_DEBUG_NAME, &privileges.Privileges[0].Luid) != FALSE) {
        ::AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr);
    }
}

int watch(const std::wstring& root, monitor::HelperClient& client)
{
    const auto send = [&client](monitor::MessageKind kind, const std::string& payload) {
        return client.write(monitor::encodeMessage(kind, payload));
    };
    DWORD errorNumber = ERROR_SUCCESS;
    const auto deviceRoot = etw_helper::deviceForm(root, errorNumber);
    if (!deviceRoot) {
        (void)send(monitor::MessageKind::Failed,
                   "The Windows ETW helper could not find the disc's directory (error " +
                       std::to_string(errorNumber) + ").");
        return kCannotTrace;
    }
    etw_helper::AccessReport report(etw_helper::WatchedRoot(root, *deviceRoot), send);
    etw_helper::FileTrace trace(report);
    if (const auto problem = trace.start()) {
        trace.stop();
        report.fail(*problem);
        return kCannotTrace;
    }
    client.waitForStop();
    trace.stop();
    return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::span<const wchar_t* const> arguments(argv, static_cast<std::size_t>(argc));
    const auto parsed = etw_helper::parseHelperArguments(arguments.subspan(argc > 0 ? 1 : 0));
    if (!parsed) {
        std::fputs(kUsage, stderr);
        return kWrongUse;
    }
    enableDebugPrivilege();
    monitor::HelperClient client;
    if (client.connect(parsed->pipe, parsed->stopEvent, parsed->parentProcessId) != 0) {
        return kNoConnection;
    }
    return watch(parsed->root, client);
}
