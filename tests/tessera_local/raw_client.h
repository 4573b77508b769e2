// A client that sends whatever bytes it is given.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <string>

namespace tessera_local {

class RawClient {
public:
    explicit RawClient(int port)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval limit{10, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_isConnected = ::connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~RawClient() { ::close(m_socket); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool isConnected() const { return m_isConnected; }

    // False when the other end has given up.
    bool send(const std::string& bytes)
    {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) { return false; }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }
    void finishSending() { ::shutdown(m_socket, SHUT_WR); }

    // All that comes until the other end closes. "(timeout)" when it does not within 10 s.
    std::string receiveAll()
    {
        std::string reply;
        std::array<char, 4096> buffer;
        ssize_t count = 0;
        while ((count = ::recv(m_socket, buffer.data(), buffer.size(), 0)) > 0) {
            reply.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return count == 0 || errno == ECONNRESET ? reply : "(timeout)";
    }

private:
    int m_socket;
    bool m_isConnected = false;
};

}  // namespace tessera_local
