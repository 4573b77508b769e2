// An accepted connection as the byte stream that the HTTP library reads a request from and writes the reply to. In
// contrast to the library's own stream it limits the time of the whole request and the size of the headers, and it
// closes the connection so that a client that is still sending receives the reply.
#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdint>

namespace tessera_local {

class ClientConnection final : public httplib::Stream {
public:
    using Duration = std::chrono::milliseconds;

    // Owns `socket` from now on. The first limits are `bytes` and `time`; see allow(). While `stopDescriptor` is
    // readable, a function that would have to wait for the client fails instead.
    ClientConnection(int socket, int stopDescriptor, std::uint64_t bytes, Duration time);

    // Ends the sending, then discards what the client still sends for a short time: to close a socket with unread bytes
    // would reset the connection and could destroy the reply.
    ~ClientConnection() override;

    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    // Allows `bytes` more to be received; all reading and writing must end within `time` from now.
    void allow(std::uint64_t bytes, Duration time);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t
    read(char* to,
         std::size_t size) override;  // 0 if the client has ended its sending; -1 at a limit or on failure
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
