// Where a watch and its helper meet on POSIX systems, and what they hold there.
#pragma once

#include <poll.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace monitor {

class Descriptor {
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    void close()
    {
        if (isOpen()) { ::close(std::exchange(m_number, -1)); }
    }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

struct SemaphoreCloser {
    void operator()(sem_t* semaphore) const { ::sem_close(semaphore); }
};
using Semaphore = std::unique_ptr<sem_t, SemaphoreCloser>;

// The pipe is a socket of the pipe's name in the folder for temporary files. Nothing when that is too long.
[[nodiscard]] inline std::optional<sockaddr_un> socketAddress(const std::string& pipe)
{
    const char* const folder = std::getenv("TMPDIR");
    const std::string path = std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + '/' + pipe;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) { return std::nullopt; }
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

// The stop event is a semaphore whose value stays above 0 once it is signalled. "Local\" says whose session it
// belongs to, which the name of a semaphore leaves out.
[[nodiscard]] inline std::string semaphoreName(const std::string& stopEvent)
{
    return '/' + stopEvent.substr(stopEvent.find('\\') + 1);
}

// A descriptor that can be polled for the process's end.
[[nodiscard]] inline Descriptor openProcess(pid_t id)
{
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
}

}  // namespace monitor
