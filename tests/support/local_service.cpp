#include "tests/support/local_service.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testsupport {

namespace {

constexpr std::chrono::milliseconds kStartTime{10'000};
constexpr char kReadyText[] = "tessera_local: listening on ";
constexpr int kNotStarted = 127;

// In the child, between fork and exec: nothing here may allocate or lock.
[[noreturn]] void becomeService(char* const* arguments, int output, const char* logPath)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int log = ::open(logPath, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(log, STDERR_FILENO);
    ::execv(arguments[0], arguments);
    ::_exit(kNotStarted);
}

std::vector<std::string> commandLine(const std::string& executable, const std::string& database,
                                     const std::vector<std::string>& keys,
                                     const std::vector<std::string>& arguments)
{
    std::vector<std::string> line{executable, "--database", database};
    for (const std::string& key : keys) {
        line.insert(line.end(), {"--key", key});
    }
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
}

}  // namespace

LocalService::LocalService(const std::string& executable, const std::string& database,
                           const std::vector<std::string>& keys, const std::vector<std::string>& arguments)
    : m_logPath(database + ".log")
{
    std::vector<std::string> line = commandLine(executable, database, keys, arguments);
    std::vector<char*> pointers(line.size() + 1, nullptr);  // execv wants a null pointer at the end
    std::transform(line.begin(), line.end(), pointers.begin(), [](std::string& text) { return text.data(); });

    std::array<int, 2> output{};
    if (::pipe2(output.data(), O_CLOEXEC) != 0) { return; }
    m_processId = ::fork();
    if (m_processId == 0) { becomeService(pointers.data(), output[1], m_logPath.c_str()); }
    ::close(output[1]);
    m_outputPipe = output[0];
    awaitReadyLine();
}

LocalService::~LocalService()
{
    stop();
}

// Waits for more output. False at its end (the process's end, too) or at the deadline.
bool LocalService::readOutput(std::chrono::steady_clock::time_point deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd polled{m_outputPipe, POLLIN, 0};
    if (left.count() <= 0 || ::poll(&polled, 1, static_cast<int>(left.count())) <= 0) { return false; }
    std::array<char, 256> buffer;
    const ssize_t count = ::read(m_outputPipe, buffer.data(), buffer.size());
    if (count <= 0) { return false; }
    m_output.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

void LocalService::awaitReadyLine()
{
    const auto deadline = std::chrono::steady_clock::now() + kStartTime;
    while (m_output.find('\n') == std::string::npos && readOutput(deadline)) {}
    const std::size_t end = m_output.find('\n');
    if (end == std::string::npos || !m_output.starts_with(kReadyText)) { return; }
    const std::size_t begin = sizeof kReadyText - 1;
    m_baseUrl = m_output.substr(begin, end - begin);
    m_port = std::atoi(m_baseUrl.c_str() + m_baseUrl.rfind(':') + 1);
}

std::string LocalService::log() const
{
    std::ifstream file(m_logPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int LocalService::stop()
{
    return stop(SIGTERM);
}

int LocalService::stop(int signal, std::chrono::milliseconds limit)
{
    if (m_processId <= 0) { return -1; }
    if (signal != 0) { ::kill(m_processId, signal); }
    // Its end closes the pipe; after the limit it is killed, which closes it as well.
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (readOutput(deadline)) {}
    const bool hasEnded = std::chrono::steady_clock::now() < deadline;
    if (!hasEnded) { ::kill(m_processId, SIGKILL); }
    ::close(m_outputPipe);
    int status = 0;
    ::waitpid(m_processId, &status, 0);
    m_processId = -1;
    return hasEnded && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace testsupport
