#include "tests/support/scripted_server.h"

#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>
#include <utility>

namespace testsupport {

namespace {

bool receiveMore(int client, std::string& buffer)
{
    char chunk[16384];
    const ssize_t count = ::recv(client, chunk, sizeof chunk, 0);
    if (count > 0) { buffer.append(chunk, static_cast<std::size_t>(count)); }
    return count > 0;
}

bool send(int client, const std::string& bytes)
{
    return ::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

// Empty if the client ends the connection before its request is complete.
std::optional<RecordedRequest> receive(int client)
{
    std::string buffer;
    std::size_t headEnd = std::string::npos;
    while ((headEnd = buffer.find("\r\n\r\n")) == std::string::npos) {
        if (!receiveMore(client, buffer)) { return std::nullopt; }
    }
    RecordedRequest request;
    std::istringstream head(buffer.substr(0, headEnd + 2));
    std::string line;
    head >> request.method >> request.target;
    std::getline(head, line);  // the rest of the request line
    while (std::getline(head, line)) {
        request.headerLines.push_back(line.substr(0, line.size() - 1));
    }
    request.body = buffer.substr(headEnd + 4);
    if (!request.header("Expect").empty()) { send(client, "HTTP/1.1 100 Continue\r\n\r\n"); }
    const std::string length = request.header("Content-Length");
    while (request.body.size() < (length.empty() ? 0 : std::stoul(length))) {
        if (!receiveMore(client, request.body)) { return std::nullopt; }
    }
    return request;
}

std::string wireBytes(const ScriptedReply& reply)
{
    if (reply.rawBytes) { return *reply.rawBytes; }
    std::string bytes = "HTTP/1.1 " + std::to_string(reply.status) + " Scripted\r\n";
    bytes += "Content-Length: " + std::to_string(reply.body.size()) + "\r\nConnection: close\r\n";
    for (const std::string& line : reply.headerLines) {
        bytes += line + "\r\n";
    }
    return bytes + "\r\n" + reply.body.substr(0, reply.bodyBytesBeforeCut.value_or(std::string::npos));
}

void sendReply(int client, const ScriptedReply& reply)
{
    bool isTaken = send(client, wireBytes(reply));
    for (std::uint64_t i = 0; isTaken && i < reply.repeats; ++i) {
        std::this_thread::sleep_for(reply.interval);
        isTaken = send(client, reply.repeated);
    }
    isTaken = isTaken && send(client, reply.end);
    for (std::string ignored; isTaken && reply.staysOpen;) {
        isTaken = receiveMore(client, ignored);
    }
}

}  // namespace

LoopbackPort::LoopbackPort(bool isListening)
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

std::string RecordedRequest::header(const std::string& name) const
{
    const std::string begin = name + ": ";
    for (const std::string& line : headerLines) {
        if (::strncasecmp(line.c_str(), begin.c_str(), begin.size()) == 0) {
            return line.substr(begin.size());
        }
    }
    return {};
}

ScriptedServer::~ScriptedServer()
{
    ::shutdown(m_port.socket(), SHUT_RDWR);  // ends the wait for a connection
    release();
    m_thread.join();
}

void ScriptedServer::play(ScriptedReply reply)
{
    const std::lock_guard lock(m_mutex);
    m_queue.push_back(std::move(reply));
}

void ScriptedServer::playFor(const std::string& path, ScriptedReply reply)
{
    const std::lock_guard lock(m_mutex);
    m_repliesByPath.insert_or_assign(path, std::move(reply));
}

void ScriptedServer::release()
{
    const std::lock_guard lock(m_mutex);
    ++m_releases;
    m_changed.notify_all();
}

std::vector<RecordedRequest> ScriptedServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

bool ScriptedServer::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_requests.size() >= count; });
}

void ScriptedServer::serveConnections()
{
    for (;;) {
        const int client = ::accept4(m_port.socket(), nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) { return; }
        if (std::optional<RecordedRequest> request = receive(client)) {
            sendReply(client, takeReply(*std::move(request)));
        }
        ::close(client);
    }
}

ScriptedReply ScriptedServer::takeReply(RecordedRequest request)
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
    m_requests.push_back(std::move(request));
    m_changed.notify_all();
    if (reply.isHeld) {
        m_changed.wait(lock, [this] { return m_releases > 0; });
        --m_releases;
    }
    return reply;
}

}  // namespace testsupport
