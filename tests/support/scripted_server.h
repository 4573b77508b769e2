// A real HTTP server on 127.0.0.1 that plays the replies a test wrote down, faulty ones included, and records
// what it was asked:
//
//   ScriptedServer server;
//   ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", server.url());
//   server.play({.status = 403, .body = "Key revoked."});
//   ... the code under test ...
//   EXPECT_EQ(server.requests().at(0).header("apiKey"), "some key");
//
// One thread serves one connection after the other and closes each after its reply.
#pragma once

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

// A port of this computer, chosen by the system. If it listens and nobody accepts, connections are made and never
// answered; if it does not listen, they are refused.
class LoopbackPort {
public:
    explicit LoopbackPort(bool isListening = true);
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
    [[nodiscard]] std::string header(const std::string& name) const;
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
    ~ScriptedServer();  // releases a held reply and waits for the client that is being served
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    [[nodiscard]] std::string url() const { return m_port.url(); }

    // Queues a reply. Replies are played in this order, one per request, whatever is asked.
    void play(ScriptedReply reply);

    // The reply to every request for this path (its query apart) that finds the queue empty. A request that
    // nothing was scripted for is answered 501 with a text that says so.
    void playFor(const std::string& path, ScriptedReply reply);

    // Lets one held reply go: the one being held, else the next to be.
    void release();

    // The requests so far, each recorded when it is complete and before it is answered.
    [[nodiscard]] std::vector<RecordedRequest> requests() const;

    // Blocks until so many requests are recorded; false when `timeout` passed first.
    [[nodiscard]] bool waitForRequests(std::size_t count,
                                       std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

private:
    void serveConnections();
    ScriptedReply takeReply(RecordedRequest request);

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
