// A real HTTP server on 127.0.0.1 that plays the replies a test wrote down, faulty ones included, and records what it was
// asked:
//
//   ScriptedServer server;
//   ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", server.url());
//   server.play({.status = 403, .body = "Key revoked."});
//   ... the code under test ...
//   EXPECT_EQ(server.requests().at(0).header("apiKey"), "some key");
//
// One thread serves one connection after the other and closes each after its reply.
#pragma once

#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

// A port of this computer, chosen by the system. If it listens and nobody accepts, connections are made and never
// answered; if it does not listen, they are refused.
class LoopbackPort {
public:
    explicit LoopbackPort(bool isListening = true)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_socket, generic, size) != 0 || ::getsockname(m_socket, generic, &size) != 0 ||
            (isListening && ::listen(m_socket, 16) != 0)) {
            throw std::runtime_error("no loopback port");
        }
        m_number = ntohs(address.sin_port);
    }
    ~LoopbackPort() { ::close(m_socket); }
    LoopbackPort(const LoopbackPort&) = delete;
    LoopbackPort& operator=(const LoopbackPort&) = delete;

    [[nodiscard]] int socket() const { return m_socket; }
    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] std::string url() const { return "http://127.0.0.1:" + std::to_string(m_number); }

private:
    int m_socket;
    int m_number = 0;
};

struct RecordedRequest {
    std::string method;
    std::string target;                    // path and query
    std::vector<std::string> headerLines;  // as received, in order
    std::string body;

    // The value of the first header of this name, in any case; empty when there is none.
    [[nodiscard]] std::string header(const std::string& name) const
    {
        const std::string begin = name + ": ";
        for (const std::string& line : headerLines) {
            if (::strncasecmp(line.c_str(), begin.c_str(), begin.size()) == 0) {
                return line.substr(begin.size());
            }
        }
        return {};
    }
};

struct ScriptedReply {
    int status = 200;
    std::string body = {};
    std::vector<std::string> headerLines = {};                     // besides Content-Length and Connection
    std::optional<std::size_t> bodyBytesBeforeCut = std::nullopt;  // the connection ends after so many
    std::optional<std::string> rawBytes = std::nullopt;  // sent instead of all this; empty: just close
    bool isHeld = false;                                 // not sent before release(); may be for ever

    // Sent after all that, so many times: a body or a head of any size that takes no memory here.
    std::string repeated = {};
    std::uint64_t repeats = 0;
    std::chrono::milliseconds interval{0};  // a time to wait before each
    std::string end = {};                   // sent after the last of them

    bool staysOpen = false;  // nothing follows, but the connection lasts until the client ends it
};

class ScriptedServer {
public:
    ScriptedServer() = default;
    // Releases a held reply and waits for the client that is being served.
    ~ScriptedServer()
    {
        ::shutdown(m_port.socket(), SHUT_RDWR);  // ends the wait for a connection
        release();
        m_thread.join();
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    [[nodiscard]] std::string url() const { return m_port.url(); }

    // Queues a reply. Replies are played in this order, one per request, whatever is asked.
    void play(const ScriptedReply& reply)
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(reply);
    }

    // The reply to every request for this path (its query apart) that finds the queue empty. A request that nothing was
    // scripted for is answered 501 with a text that says so.
    void playFor(const std::string& path, const ScriptedReply& reply)
    {
        const std::lock_guard lock(m_mutex);
        m_repliesByPath[path] = reply;
    }

    // Lets one held reply go: the one being held, else the next to be.
    void release()
    {
        const std::lock_guard lock(m_mutex);
        ++m_releases;
        m_changed.notify_all();
    }

    // The requests so far, each recorded when it is complete and before it is answered.
    [[nodiscard]] std::vector<RecordedRequest> requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

    // Blocks until so many requests are recorded; false if `timeout` passes first.
    [[nodiscard]] bool waitForRequests(std::size_t count,
                                       std::chrono::seconds timeout = std::chrono::seconds(10)) const
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, timeout, [&] { return m_requests.size() >= count; });
    }

private:
    static bool receiveMore(int client, std::string& buffer)
    {
        char chunk[16384];
        const ssize_t count = ::recv(client, chunk, sizeof chunk, 0);
        if (count > 0) { buffer.append(chunk, static_cast<std::size_t>(count)); }
        return count > 0;
    }

    static bool send(int client, const std::string& bytes)
    {
        return ::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    // Empty if the client ends the connection before its request is complete.
    static std::optional<RecordedRequest> receive(int client)
    {
        std::string buffer;
        while (buffer.find("\r\n\r\n") == std::string::npos) {
            if (!receiveMore(client, buffer)) { return std::nullopt; }
        }
        RecordedRequest request;
        std::istringstream head(buffer);
        std::string line;
        head >> request.method >> request.target;
        std::getline(head, line);  // the rest of the request line
        while (std::getline(head, line) && line != "\r") {
            request.headerLines.push_back(line.substr(0, line.size() - 1));
        }
        request.body = buffer.substr(buffer.find("\r\n\r\n") + 4);
        if (!request.header("Expect").empty()) { send(client, "HTTP/1.1 100 Continue\r\n\r\n"); }
        const std::string length = request.header("Content-Length");
        while (request.body.size() < (length.empty() ? 0 : std::stoul(length))) {
            if (!receiveMore(client, request.body)) { return std::nullopt; }
        }
        return request;
    }

    static void sendReply(int client, const ScriptedReply& reply)
    {
        std::string bytes = "HTTP/1.1 " + std::to_string(reply.status) + " Scripted\r\n";
        bytes += "Content-Length: " + std::to_string(reply.body.size()) + "\r\nConnection: close\r\n";
        for (const std::string& line : reply.headerLines) {
            bytes += line + "\r\n";
        }
        bytes += "\r\n" + reply.body.substr(0, reply.bodyBytesBeforeCut.value_or(std::string::npos));
        bool isTaken = send(client, reply.rawBytes.value_or(bytes));
        for (std::uint64_t i = 0; isTaken && i < reply.repeats; ++i) {
            std::this_thread::sleep_for(reply.interval);
            isTaken = send(client, reply.repeated);
        }
        isTaken = isTaken && send(client, reply.end);
        for (std::string ignored; isTaken && reply.staysOpen;) {
            isTaken = receiveMore(client, ignored);
        }
    }

    void serveConnections()
    {
        for (int client = 0; (client = ::accept4(m_port.socket(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;
             ::close(client)) {
            if (const auto request = receive(client)) { sendReply(client, takeReply(*request)); }
        }
    }

    ScriptedReply takeReply(const RecordedRequest& request)
    {
        std::unique_lock lock(m_mutex);
        ScriptedReply reply = {.status = 501, .body = "no reply scripted for " + request.target};
        const auto found = m_repliesByPath.find(request.target.substr(0, request.target.find('?')));
        if (!m_queue.empty()) {
            reply = std::move(m_queue.front());
            m_queue.pop_front();
        } else if (found != m_repliesByPath.end()) {
            reply = found->second;
        }
        m_requests.push_back(request);
        m_changed.notify_all();
        if (reply.isHeld) {
            m_changed.wait(lock, [this] { return m_releases > 0; });
            --m_releases;
        }
        return reply;
    }

    LoopbackPort m_port;
    mutable std::mutex m_mutex;  // guards what follows
    mutable std::condition_variable m_changed;
    std::deque<ScriptedReply> m_queue;
    std::map<std::string, ScriptedReply> m_repliesByPath;
    std::vector<RecordedRequest> m_requests;
    int m_releases = 0;

    std::thread m_thread{&ScriptedServer::serveConnections, this};
};

}  // namespace testsupport
