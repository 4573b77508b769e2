#include "tools/tessera_local/client_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tessera_local {

namespace {

constexpr std::chrono::milliseconds kFarewellTime{2000};

}  // namespace

ClientConnection::ClientConnection(int socket, int stopDescriptor, std::uint64_t bytes, Duration time)
    : m_socket(socket)
    , m_stopDescriptor(stopDescriptor)
{
    ::fcntl(m_socket, F_SETFL, ::fcntl(m_socket, F_GETFL) | O_NONBLOCK);
    allow(bytes, time);
}

ClientConnection::~ClientConnection()
{
    ::shutdown(m_socket, SHUT_WR);
    m_deadline = std::chrono::steady_clock::now() + kFarewellTime;
    while (waitFor(POLLIN) && ::recv(m_socket, m_buffer.data(), m_buffer.size(), 0) > 0) {}
    ::close(m_socket);
}

void ClientConnection::allow(std::uint64_t bytes, Duration time)
{
    m_allowedBytes = bytes;
    m_deadline = std::chrono::steady_clock::now() + time;
}

bool ClientConnection::is_readable() const
{
    return m_begin < m_end || waitFor(POLLIN);
}

bool ClientConnection::is_writable() const
{
    return waitFor(POLLOUT);
}

ssize_t ClientConnection::read(char* to, std::size_t size)
{
    if (m_begin == m_end) {
        const ssize_t received = receive();
        if (received <= 0) { return received; }
        m_begin = 0;
        m_end = static_cast<std::size_t>(received);
    }
    const std::size_t count = std::min(size, m_end - m_begin);
    std::memcpy(to, m_buffer.data() + m_begin, count);
    m_begin += count;
    return static_cast<ssize_t>(count);
}

ssize_t ClientConnection::receive()
{
    const auto limit = static_cast<std::size_t>(std::min<std::uint64_t>(m_buffer.size(), m_allowedBytes));
    if (limit == 0) { return -1; }
    while (waitFor(POLLIN)) {
        const ssize_t received = ::recv(m_socket, m_buffer.data(), limit, 0);
        if (received < 0 && (errno == EAGAIN || errno == EINTR)) { continue; }
        if (received > 0) { m_allowedBytes -= static_cast<std::uint64_t>(received); }
        return received;
    }
    return -1;
}

ssize_t ClientConnection::write(const char* from, std::size_t size)
{
    // Sends before it waits, so that a reply that fits the socket's buffer is sent even while the service stops.
    for (;;) {
        const ssize_t sent = ::send(m_socket, from, size, MSG_NOSIGNAL);
        if (sent >= 0) { return sent; }
        if (errno != EINTR && (errno != EAGAIN || !waitFor(POLLOUT))) { return -1; }
    }
}

// The service does not use the addresses.
void ClientConnection::get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}

void ClientConnection::get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}

socket_t ClientConnection::socket() const
{
    return m_socket;
}

// Waits for the events of poll(). Returns false if the time is over, the service stops or the wait fails.
bool ClientConnection::waitFor(short events) const
{
    for (;;) {
        const auto left = std::chrono::ceil<Duration>(m_deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0) { return false; }
        std::array<pollfd, 2> polled{{{m_socket, events, 0}, {m_stopDescriptor, POLLIN, 0}}};
        const int ready = ::poll(polled.data(), polled.size(), static_cast<int>(left));
        if (ready < 0 && errno == EINTR) { continue; }
        return ready > 0 && polled[1].revents == 0;
    }
}

}  // namespace tessera_local
