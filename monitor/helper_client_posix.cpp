#include "monitor/helper_client.h"
#include "monitor/helper_meeting_posix.h"

#include <poll.h>
#include <semaphore.h>
#include <sys/socket.h>

#include <cerrno>
#include <ctime>

namespace monitor {

namespace {

// A semaphore and a process cannot be waited for together, so the parent's end is noticed within one step.
constexpr long kStepNs = 100'000'000;
constexpr long kNsPerSecond = 1'000'000'000;

timespec oneStepFromNow()
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_nsec += kStepNs;
    time.tv_sec += time.tv_nsec / kNsPerSecond;
    time.tv_nsec %= kNsPerSecond;
    return time;
}

bool hasEnded(const Descriptor& process)
{
    pollfd entry = {.fd = process.number(), .events = POLLIN, .revents = 0};
    return ::poll(&entry, 1, 0) > 0;
}

}  // namespace

struct HelperClient::Native {
    Semaphore stopEvent;
    Descriptor parent;
    Descriptor connection;
};

HelperClient::HelperClient()
    : m_native(std::make_unique<Native>())
{}

HelperClient::~HelperClient() = default;

std::uint32_t HelperClient::connect(const std::string& pipe, const std::string& stopEvent,
                                    std::uint64_t parentProcessId)
{
    const std::optional<sockaddr_un> address = socketAddress(pipe);
    if (!address) { return ENAMETOOLONG; }
    m_native->stopEvent.reset(::sem_open(semaphoreName(stopEvent).c_str(), 0));
    if (!m_native->stopEvent) { return static_cast<std::uint32_t>(errno); }
    m_native->parent = openProcess(static_cast<pid_t>(parentProcessId));
    if (!m_native->parent.isOpen()) { return static_cast<std::uint32_t>(errno); }
    // Last, so that the other side sees a connection only from a helper that can be stopped.
    m_native->connection = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!m_native->connection.isOpen() ||
        ::connect(m_native->connection.number(), reinterpret_cast<const sockaddr*>(&*address),
                  sizeof *address) != 0) {
        return static_cast<std::uint32_t>(errno);
    }
    return 0;
}

bool HelperClient::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_native->connection.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) { return false; }
        if (count > 0) { bytes.remove_prefix(static_cast<std::size_t>(count)); }
    }
    return true;
}

void HelperClient::waitForStop()
{
    if (!m_native->stopEvent || !m_native->parent.isOpen()) { return; }
    for (;;) {
        const timespec step = oneStepFromNow();
        if (::sem_clockwait(m_native->stopEvent.get(), CLOCK_MONOTONIC, &step) == 0) {
            ::sem_post(m_native->stopEvent.get());  // stays signalled for whoever asks next
            return;
        }
        if (hasEnded(m_native->parent)) { return; }
    }
}

}  // namespace monitor
