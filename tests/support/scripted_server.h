// A real HTTP server on 127.0.0.1 that plays the replies a test wrote down, faulty ones included, and records what it was
// asked. One thread serves one connection after the other and closes each after its reply.
#pragma once

#include <ext/stdio_filebuf.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <istream>
#include <map>
#include <mutex>
#include <optional>
#include <semaphore>
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
    std::optional<std::string> rawBytes = std::nullopt;  // sent instead of all this; empty: just close
    bool isHeld = false;                                 // not sent before release(); may be for ever

    // Sent after all that, so many times: a body or a head of any size that takes no memory here.
    std::string repeated = {};
    std::uint64_t repeats = 0;
    std::chrono::milliseconds interval{0};  // a time to wait before each
    std::string end = {};                   // sent after the last of them
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

    [[nodiscard]] std::string url() const { return m_port.url(); }

    // Queues a reply. Replies are played in this order, one per request, whatever is asked.
    void play(const ScriptedReply& reply)
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(reply);
    }

    // The reply to every request for this path (its query apart) that finds the queue empty. A request that nothing was
    // scripted for is answered 501 with a text.
    void playFor(const std::string& path, const ScriptedReply& reply)
    {
        const std::lock_guard lock(m_mutex);
        m_repliesByPath[path] = reply;
    }

    // Lets one held reply go: the one being held, else the next to be.
    void release() { m_releases.release(); }

    // The requests so far, each recorded when it is complete and before it is answered.
    [[nodiscard]] std::vector<RecordedRequest> requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    static bool send(int client, const std::string& bytes)
    {
        return ::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    // Nothing if the client ends the connection before its request is complete.
    static std::optional<RecordedRequest> receive(int client, std::istream& in)
    {
        RecordedRequest request;
        std::string line;
        in >> request.method >> request.target;
        std::getline(in, line);  // the rest of the request line
        while (std::getline(in, line) && line != "\r") {
            request.headerLines.push_back(line.substr(0, line.size() - 1));
        }
        if (!request.header("Expect").empty()) { send(client, "HTTP/1.1 100 Continue\r\n\r\n"); }
        const std::string length = request.header("Content-Length");
        request.body.resize(length.empty() ? 0 : std::stoul(length));
        in.read(request.body.data(), static_cast<std::streamsize>(request.body.size()));
        return in ? std::optional(std::move(request)) : std::nullopt;
    }

    void sendReply(int client, const ScriptedReply& reply)
    {
        if (reply.isHeld) { m_releases.acquire(); }
        const std::string head = "HTTP/1.1 " + std::to_string(reply.status) +
                                 " Scripted\r\nContent-Length: " + std::to_string(reply.body.size()) +
                                 "\r\nConnection: close\r\n\r\n";
        bool isTaken = send(client, reply.rawBytes.value_or(head + reply.body));
        for (std::uint64_t i = 0; isTaken && i < reply.repeats; ++i) {
            std::this_thread::sleep_for(reply.interval);
            isTaken = send(client, reply.repeated);
        }
        if (isTaken) { send(client, reply.end); }
    }

    void serveConnections()
    {
        for (int client = 0; (client = ::accept4(m_port.socket(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            __gnu_cxx::stdio_filebuf<char> buffer(client, std::ios::in | std::ios::binary);  // will close it
            std::istream in(&buffer);
            if (const auto request = receive(client, in)) { sendReply(client, takeReply(*request)); }
        }
    }

    ScriptedReply takeReply(const RecordedRequest& request)
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        if (m_queue.empty()) {
            const auto found = m_repliesByPath.find(request.target.substr(0, request.target.find('?')));
            if (found != m_repliesByPath.end()) { return found->second; }
            return {.status = 501, .body = "no reply scripted for " + request.target};
        }
        ScriptedReply reply = std::move(m_queue.front());
        m_queue.pop_front();
        return reply;
    }

    LoopbackPort m_port;
    std::counting_semaphore<> m_releases{0};
    mutable std::mutex m_mutex;  // guards what follows
    std::deque<ScriptedReply> m_queue;
    std::map<std::string, ScriptedReply> m_repliesByPath;
    std::vector<RecordedRequest> m_requests;

    std::thread m_thread{&ScriptedServer::serveConnections, this};
};

}  // namespace testsupport
