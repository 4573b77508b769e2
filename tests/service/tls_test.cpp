// Part of tls_test.sh: serves https on this computer with the certificate and key given, for the host name
// "localhost", and authenticates with it under that name and under 127.0.0.1; without arguments, with servers that
// speak no TLS. Prints how each attempt ended.
#include "service/authentication.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#define CPPHTTPLIB_OPENSSL_SUPPORT
#include <httplib.h>

namespace {

void authenticate(const std::string& host, int port)
{
    const std::string address = "https://" + host + ":" + std::to_string(port);
    ::setenv("PLATTERSCOPE_SERVICE_URL", address.c_str(), 1);
    const service::AuthenticationOutcome outcome = service::authenticate(QStringLiteral("some key"));
    const std::string result = outcome.ok ? "accepted" : outcome.errorText.toStdString();
    std::printf("%s: %s\n", host.c_str(), result.c_str());
}

// Speaks no TLS: answers whatever begins a connection with the bytes given, closes it, and keeps what it received.
class PlainServer {
public:
    explicit PlainServer(std::string answer)
        : m_answer(std::move(answer))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 1) != 0 ||
            ::getsockname(m_listener, generic, &size) != 0) {
            throw std::runtime_error("no loopback server");
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serveOnce(); });
    }
    ~PlainServer() { ::close(m_listener); }
    PlainServer(const PlainServer&) = delete;
    PlainServer& operator=(const PlainServer&) = delete;

    int port() const { return m_port; }

    std::string received()
    {
        m_thread.join();
        return m_received;
    }

private:
    void serveOnce()
    {
        const int client = ::accept(m_listener, nullptr, nullptr);
        std::array<char, 4096> buffer = {};
        ssize_t count = ::recv(client, buffer.data(), buffer.size(), 0);
        ::send(client, m_answer.data(), m_answer.size(), MSG_NOSIGNAL);
        ::shutdown(client, SHUT_WR);
        for (; count > 0; count = ::recv(client, buffer.data(), buffer.size(), 0)) {
            m_received.append(buffer.data(), static_cast<std::size_t>(count));
        }
        ::close(client);
    }

    int m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_port = 0;
    std::string m_answer;
    std::string m_received;
    std::thread m_thread;
};

void authenticateWithoutTls(const char* name, const std::string& answer)
{
    PlainServer server(answer);
    std::printf("%s: ", name);
    authenticate("127.0.0.1", server.port());
    const bool hasKey = server.received().find("some key") != std::string::npos;
    std::printf("the key was %s\n", hasKey ? "sent" : "not sent");
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 1) {
        authenticateWithoutTls("plain HTTP", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
        authenticateWithoutTls("closed", "");
        return EXIT_SUCCESS;
    }
    if (argc != 3) { return EXIT_FAILURE; }
    httplib::SSLServer server(argv[1], argv[2]);
    int requestCount = 0;
    server.Post("/api/tessera/user/", [&](const httplib::Request&, httplib::Response& response) {
        ++requestCount;
        response.set_content(R"({"UID": 1, "Username": "ada"})", "application/json");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    if (port <= 0) { return EXIT_FAILURE; }
    std::thread thread([&] { server.listen_after_bind(); });
    authenticate("localhost", port);
    authenticate("127.0.0.1", port);
    server.stop();
    thread.join();
    std::printf("requests served: %d\n", requestCount);
    return EXIT_SUCCESS;
}
