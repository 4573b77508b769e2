// An accepted connection as the byte stream that the HTTP library reads a request from and writes the reply
// to. The library's own stream bounds neither the time of a whole request nor the size of its headers, and
// ends a connection so abruptly that a client which is still sending loses the reply; this one does all
// three.
#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdint>

namespace tessera_local {

class ClientConnection final : public httplib::Stream {
public:
    using Duration = std::chrono::milliseconds;

    // Takes over `socket`. At first `bytes` may be read, all within `time`; see allow(). As soon as
    // `stopDescriptor` becomes readable, whatever would have to wait for the client fails instead.
    ClientConnection(int socket, int stopDescriptor, std::uint64_t bytes, Duration time);

    // Ends the connection politely: no more is sent, and what the client still sends is thrown away for a
    // short time, since closing on unread bytes would reset the connection and could destroy the reply.
    ~ClientConnection() override;

    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    // From now on `bytes` more may be received, and all reading and writing must end within `time`.
    void allow(std::uint64_t bytes, Duration time);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* to, std::size_t size) override;  // 0 at the client's end; -1: limit, time or failure
    ssize_t write(const char* from, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override;

private:
    bool waitFor(short events) const;
    ssize_t receive();

    int m_socket;
    int m_stopDescriptor;
    std::uint64_t m_allowedBytes = 0;
    std::chrono::steady_clock::time_point m_deadline;
    std::array<char, 16 * 1024> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

}  // namespace tessera_local
