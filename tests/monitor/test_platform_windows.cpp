#include "tests/monitor/test_platform.h"

#include <windows.h>
#include <shellapi.h>

#include <memory>

namespace testsupport {

namespace {

struct LocalMemory {
    void operator()(LPWSTR* memory) const { ::LocalFree(memory); }
};

std::string utf8(LPCWSTR text)
{
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), bytes, nullptr, nullptr);
    result.pop_back();  // the end of the text
    return result;
}

}  // namespace

const std::uint32_t kBrokenPipe = ERROR_BROKEN_PIPE;

std::vector<std::string> argumentsInUtf8(int, char**)
{
    int count = 0;
    const std::unique_ptr<LPWSTR, LocalMemory> texts(::CommandLineToArgvW(::GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(utf8(texts.get()[i]));
    }
    return arguments;
}

void killThisProcess()
{
    ::TerminateProcess(::GetCurrentProcess(), 9);
    ::ExitProcess(9);
}

// Handles and threads come and go with the shell's own, so the names alone are looked at.
std::string heldResources(const monitor::HelperNames& names)
{
    std::string held;
    if (const HANDLE event = ::OpenEventA(SYNCHRONIZE, FALSE, names.stopEvent.c_str())) {
        ::CloseHandle(event);
        held += "the stop event ";
    }
    ::WaitNamedPipeA(("\\\\.\\pipe\\" + names.pipe).c_str(), 1);
    if (::GetLastError() != ERROR_FILE_NOT_FOUND) { held += "the pipe"; }
    return held;
}

}  // namespace testsupport
