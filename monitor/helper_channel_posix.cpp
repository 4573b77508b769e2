#include "monitor/helper_channel.h"
#include "monitor/helper_meeting_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <semaphore.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>
#include <vector>

namespace monitor {

namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr std::string_view kBlanks = " \t";

std::uint32_t lastError()
{
    return static_cast<std::uint32_t>(errno);
}

// Takes the argument that begins at the front of `parameters` away from it. Backslashes count as escapes where
// they reach up to a quote alone, two for each one meant.
std::string takeArgument(std::string_view& parameters)
{
    std::string argument;
    bool isQuoted = false;
    while (!parameters.empty() && (isQuoted || kBlanks.find(parameters.front()) == kBlanks.npos)) {
        const std::size_t backslashes = std::min(parameters.find_first_not_of('\\'), parameters.size());
        parameters.remove_prefix(backslashes);
        const bool isBeforeQuote = parameters.starts_with('"');
        argument.append(isBeforeQuote ? backslashes / 2 : backslashes, '\\');
        if (isBeforeQuote && backslashes % 2 == 0) {
            isQuoted = !isQuoted;
            parameters.remove_prefix(1);
        } else if (isBeforeQuote || backslashes == 0) {
            argument += parameters.front();
            parameters.remove_prefix(1);
        }
    }
    return argument;
}

std::vector<std::string> splitArguments(std::string_view parameters)
{
    std::vector<std::string> arguments;
    for (;;) {
        parameters.remove_prefix(std::min(parameters.find_first_not_of(kBlanks), parameters.size()));
        if (parameters.empty()) { return arguments; }
        arguments.push_back(takeArgument(parameters));
    }
}

// Waits until one of `entries` has something to say. A negative descriptor has nothing.
bool waitForAny(std::span<pollfd> entries)
{
    int count = -1;
    do {
        count = ::poll(entries.data(), entries.size(), -1);
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

// Whether the process ends within `limit`.
bool waitForEnd(const Descriptor& process, std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + limit;
    pollfd entry = {.fd = process.number(), .events = POLLIN, .revents = 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        const int count = ::poll(&entry, 1, static_cast<int>(std::max(left.count(), decltype(left)::rep{0})));
        if (count >= 0 || errno != EINTR) { return count > 0; }
    }
}

void reap(pid_t process)
{
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {}
}

}  // namespace

struct HelperChannel::Native {
    std::string socketPath;  // while the socket has a name
    Descriptor listener;
    Descriptor connection;
    Descriptor cancel;  // readable from the first cancelIo() on
    std::string stopEventName;
    Semaphore stopEvent;
    pid_t processId = 0;
    Descriptor process;
};

HelperChannel::HelperChannel()
    : m_native(std::make_unique<Native>())
{}

HelperChannel::~HelperChannel()
{
    closePipe();
    releaseProcess({});
    closeStopEvent();
}

std::uint32_t HelperChannel::createPipe(const std::string& name)
{
    const std::optional<sockaddr_un> address = socketAddress(name);
    if (!address) { return ENAMETOOLONG; }
    m_native->cancel = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_native->cancel.isOpen()) { return lastError(); }
    Descriptor& listener = m_native->listener;
    listener = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // The rights are taken from the socket when it gets its name, so there is no moment for another user.
    if (!listener.isOpen() || ::fchmod(listener.number(), kOwnerOnly) != 0 ||
        ::bind(listener.number(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        return lastError();
    }
    m_native->socketPath = address->sun_path;
    return ::listen(listener.number(), 1) == 0 ? 0 : lastError();
}

std::uint32_t HelperChannel::createStopEvent(const std::string& name)
{
    const std::string semaphore = semaphoreName(name);
    m_native->stopEvent.reset(::sem_open(semaphore.c_str(), O_CREAT | O_EXCL, kOwnerOnly, 0));
    if (!m_native->stopEvent) { return lastError(); }
    m_native->stopEventName = semaphore;
    return 0;
}

std::uint32_t HelperChannel::launch(const std::string& executable, const std::string& parameters)
{
    std::vector<std::string> arguments = splitArguments(parameters);
    arguments.insert(arguments.begin(), executable);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    const int error =
        ::posix_spawn(&process, executable.c_str(), nullptr, nullptr, pointers.data(), ::environ);
    if (error != 0) { return static_cast<std::uint32_t>(error); }
    m_native->process = openProcess(process);
    if (!m_native->process.isOpen()) {
        const std::uint32_t openError = lastError();
        ::kill(process, SIGKILL);
        reap(process);
        return openError;
    }
    m_native->processId = process;
    return 0;
}

std::uint32_t HelperChannel::waitForConnection()
{
    pollfd entries[] = {{.fd = m_native->cancel.number(), .events = POLLIN, .revents = 0},
                        {.fd = m_native->listener.number(), .events = POLLIN, .revents = 0},
                        {.fd = m_native->process.number(), .events = POLLIN, .revents = 0}};
    const auto& [cancel, listener, process] = entries;
    for (;;) {
        if (!waitForAny(entries)) { return lastError(); }
        if (cancel.revents != 0) { return ECANCELED; }
        // Asked for after the process was seen to have ended, so a connection that it made before is found.
        m_native->connection = Descriptor(
            ::accept4(m_native->listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (m_native->connection.isOpen()) {
            m_native->listener.close();
            return 0;
        }
        if (errno != EAGAIN && errno != EINTR) { return lastError(); }
        if (process.revents != 0) { return EPIPE; }
    }
}

std::size_t HelperChannel::read(std::span<std::uint8_t> buffer)
{
    pollfd entries[] = {{.fd = m_native->cancel.number(), .events = POLLIN, .revents = 0},
                        {.fd = m_native->connection.number(), .events = POLLIN, .revents = 0}};
    for (;;) {
        if (!waitForAny(entries) || entries[0].revents != 0) { return 0; }
        const ssize_t count = ::recv(m_native->connection.number(), buffer.data(), buffer.size(), 0);
        if (count >= 0) { return static_cast<std::size_t>(count); }
        if (errno != EAGAIN && errno != EINTR) { return 0; }
    }
}

void HelperChannel::signalStop()
{
    if (m_native->stopEvent) { ::sem_post(m_native->stopEvent.get()); }
}

void HelperChannel::cancelIo()
{
    if (m_native->cancel.isOpen()) { ::eventfd_write(m_native->cancel.number(), 1); }
}

void HelperChannel::closePipe()
{
    m_native->connection.close();
    m_native->listener.close();
    m_native->cancel.close();
    if (!m_native->socketPath.empty()) { ::unlink(std::exchange(m_native->socketPath, {}).c_str()); }
}

void HelperChannel::releaseProcess(std::chrono::milliseconds limit)
{
    if (!m_native->process.isOpen()) { return; }
    // Its parent alone can reap it, and that has no other occasion.
    if (!waitForEnd(m_native->process, limit)) { ::kill(m_native->processId, SIGKILL); }
    reap(m_native->processId);
    m_native->process.close();
}

void HelperChannel::closeStopEvent()
{
    if (!m_native->stopEvent) { return; }
    m_native->stopEvent.reset();
    ::sem_unlink(m_native->stopEventName.c_str());
}

std::uint64_t currentProcessId()
{
    return static_cast<std::uint64_t>(::getpid());
}

bool fileExists(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

}  // namespace monitor
