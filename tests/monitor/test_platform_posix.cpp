#include "tests/monitor/test_platform.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

namespace testsupport {

namespace {

std::string entryCount(const char* folder)
{
    const std::filesystem::directory_iterator entries(folder);
    return std::to_string(std::distance(begin(entries), end(entries)));
}

// Whether an entry of `folder` ends in `name`.
bool holdsName(const std::filesystem::path& folder, const std::string& name)
{
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().ends_with(name)) { return true; }
    }
    return false;
}

// The thread sanitizer starts a thread of its own with the program's first, which is no leak of a test. The
// joined one stays listed for a moment.
bool hasHadThread()
{
    pid_t id = 0;
    std::thread([&id] { id = ::gettid(); }).join();
    while (std::filesystem::exists("/proc/self/task/" + std::to_string(id))) {
        std::this_thread::yield();
    }
    return true;
}

}  // namespace

const std::uint32_t kBrokenPipe = EPIPE;

std::vector<std::string> argumentsInUtf8(int argc, char** argv)
{
    return {argv + 1, argv + argc};
}

void killThisProcess()
{
    ::kill(::getpid(), SIGKILL);
    std::abort();
}

std::string heldResources(const monitor::HelperNames& names)
{
    [[maybe_unused]] static const bool isThreadLibraryReady = hasHadThread();
    const std::string event = names.stopEvent.substr(names.stopEvent.find('\\') + 1);
    std::string held =
        entryCount("/proc/self/fd") + " descriptors, " + entryCount("/proc/self/task") + " threads";
    siginfo_t child = {};
    if (::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0) { held += ", a child"; }
    if (holdsName(std::filesystem::temp_directory_path(), names.pipe)) { held += ", the pipe"; }
    if (holdsName("/dev/shm", event)) { held += ", the stop event"; }
    return held;
}

}  // namespace testsupport
