#include "tests/support/scripted_server.h"

#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <span>
#include <stdexcept>
#include <utility>

namespace testsupport {

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr char kHeadEnd[] = "\r\n\r\n";
constexpr std::chrono::milliseconds kForEver{-1};

// Takes the next line off `text`, without its line end.
std::string takeLine(std::string& text)
{
    const std::size_t end = text.find(kLineEnd);
    std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 2);
    return line;
}

// Request line and header lines; the body comes later.
RecordedRequest parseHead(std::string head)
{
    RecordedRequest request;
    const std::string requestLine = takeLine(head);
    const std::size_t target = requestLine.find(' ') + 1;
    request.method = requestLine.substr(0, target - 1);
    request.target = requestLine.substr(target, requestLine.find(' ', target) - target);
    while (!head.empty()) {
        request.headerLines.push_back(takeLine(head));
    }
    return request;
}

// Waits until either is ready: the connection, or the eventfd behind it, which it resets.
bool pollAndTakeWakeUp(std::span<pollfd, 2> watched, int timeoutMs = -1)
{
    if (::poll(watched.data(), watched.size(), timeoutMs) < 0 && errno != EINTR) { return false; }
    eventfd_t ignored = 0;
    ::eventfd_read(watched[1].fd, &ignored);
    return true;
}

std::string wireBytes(const ScriptedReply& reply)
{
    if (reply.rawBytes) { return *reply.rawBytes; }
    std::string bytes = "HTTP/1.1 " + std::to_string(reply.status) + " Scripted\r\n";
    bytes += "Content-Length: " + std::to_string(reply.body.size()) + "\r\nConnection: close\r\n";
    for (const std::string& line : reply.headerLines) {
        bytes += line + kLineEnd;
    }
    return bytes + kLineEnd + reply.body.substr(0, reply.bodyBytesBeforeCut.value_or(std::string::npos));
}

}  // namespace

std::string RecordedRequest::header(const std::string& name) const
{
    for (const std::string& line : headerLines) {
        const std::size_t colon = line.find(':');
        if (::strcasecmp(line.substr(0, colon).c_str(), name.c_str()) != 0) { continue; }
        const std::size_t value = line.find_first_not_of(" :", colon);
        return value == std::string::npos ? std::string() : line.substr(value);
    }
    return {};
}

ScriptedServer::ScriptedServer()
    : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 16) != 0 ||
        ::getsockname(m_listener, generic, &size) != 0 || m_wakeUp < 0) {
        throw std::runtime_error("no loopback server");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::thread(&ScriptedServer::serveConnections, this);
}

ScriptedServer::~ScriptedServer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    wake();
    m_thread.join();
    ::close(m_listener);
    ::close(m_wakeUp);
}

std::string ScriptedServer::url() const
{
    return "http://127.0.0.1:" + std::to_string(m_port);
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
    {
        const std::lock_guard lock(m_mutex);
        ++m_releases;
    }
    wake();
}

std::vector<RecordedRequest> ScriptedServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

bool ScriptedServer::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(m_mutex);
    return m_recorded.wait_for(lock, timeout, [&] { return m_requests.size() >= count; });
}

void ScriptedServer::serveConnections()
{
    while (waitUntilReady(m_listener, POLLIN)) {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (client < 0) { continue; }
        serve(client);
        ::close(client);
    }
}

void ScriptedServer::serve(int client)
{
    std::optional<RecordedRequest> request = receive(client);
    if (!request) { return; }
    const ScriptedReply reply = takeReply(*request);
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(*std::move(request));
    }
    m_recorded.notify_all();
    if (reply.isHeld && !waitForRelease(client)) { return; }
    if (sendReply(client, reply) && reply.staysOpen) { waitForClientsEnd(client, kForEver); }
    if (reply.endsByReset) {
        const linger atOnce = {.l_onoff = 1, .l_linger = 0};
        ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
}

std::optional<RecordedRequest> ScriptedServer::receive(int client)
{
    std::string buffer;
    std::size_t headEnd = std::string::npos;
    while ((headEnd = buffer.find(kHeadEnd)) == std::string::npos) {
        if (!receiveMore(client, buffer)) { return std::nullopt; }
    }
    RecordedRequest request = parseHead(buffer.substr(0, headEnd));
    request.body = buffer.substr(headEnd + 4);
    if (!request.header("Expect").empty()) { send(client, "HTTP/1.1 100 Continue\r\n\r\n"); }
    const std::string length = request.header("Content-Length");
    const std::size_t bodyBytes = length.empty() ? 0 : std::stoul(length);
    while (request.body.size() < bodyBytes) {
        if (!receiveMore(client, request.body)) { return std::nullopt; }
    }
    return request;
}

bool ScriptedServer::receiveMore(int client, std::string& buffer)
{
    char chunk[16384];
    if (!waitUntilReady(client, POLLIN)) { return false; }
    const ssize_t count = ::recv(client, chunk, sizeof chunk, 0);
    if (count <= 0) { return false; }
    buffer.append(chunk, static_cast<std::size_t>(count));
    return true;
}

bool ScriptedServer::send(int client, const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        if (!waitUntilReady(client, POLLOUT)) { return false; }
        const ssize_t count = ::send(client, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0) { return false; }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool ScriptedServer::sendReply(int client, const ScriptedReply& reply)
{
    const std::string bytes = wireBytes(reply);
    if (reply.byteInterval.count() > 0) { return sendSlowly(client, bytes, reply.byteInterval); }
    if (!send(client, bytes)) { return false; }
    for (std::uint64_t i = 0; i < reply.repeats; ++i) {
        if (!send(client, reply.repeated)) { return false; }
    }
    return send(client, reply.end);
}

bool ScriptedServer::sendSlowly(int client, const std::string& bytes, std::chrono::milliseconds interval)
{
    for (const char byte : bytes) {
        if (waitForClientsEnd(client, interval) || !send(client, std::string(1, byte))) { return false; }
    }
    return true;
}

ScriptedReply ScriptedServer::takeReply(const RecordedRequest& request)
{
    const std::lock_guard lock(m_mutex);
    if (!m_queue.empty()) {
        ScriptedReply reply = std::move(m_queue.front());
        m_queue.pop_front();
        return reply;
    }
    const auto found = m_repliesByPath.find(request.target.substr(0, request.target.find('?')));
    if (found != m_repliesByPath.end()) { return found->second; }
    return {.status = 501, .body = "no reply scripted for " + request.target};
}

// False when the server is being destroyed. The flag is looked at before each wait: another wait may have
// taken the wake-up that came with it.
bool ScriptedServer::waitUntilReady(int descriptor, short events)
{
    pollfd watched[] = {{descriptor, events, 0}, {m_wakeUp, POLLIN, 0}};
    for (;;) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_isStopping) { return false; }
        }
        if (watched[0].revents != 0) { return true; }
        if (!pollAndTakeWakeUp(watched)) { return false; }
    }
}

// False when the client went away or the server is being destroyed.
bool ScriptedServer::waitForRelease(int client)
{
    pollfd watched[] = {{client, POLLRDHUP, 0}, {m_wakeUp, POLLIN, 0}};
    for (;;) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_isStopping || watched[0].revents != 0) { return false; }
            if (m_releases > 0) {
                --m_releases;
                return true;
            }
        }
        if (!pollAndTakeWakeUp(watched)) { return false; }
    }
}

// Whether the client went away, or the server is being destroyed, within `timeout`.
bool ScriptedServer::waitForClientsEnd(int client, std::chrono::milliseconds timeout)
{
    pollfd watched[] = {{client, POLLRDHUP, 0}, {m_wakeUp, POLLIN, 0}};
    do {
        const bool isPolled = pollAndTakeWakeUp(watched, static_cast<int>(timeout.count()));
        const std::lock_guard lock(m_mutex);
        if (!isPolled || m_isStopping || watched[0].revents != 0) { return true; }
    } while (timeout == kForEver);
    return false;
}

void ScriptedServer::wake() const
{
    ::eventfd_write(m_wakeUp, 1);
}

}  // namespace testsupport
