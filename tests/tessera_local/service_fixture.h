// The service under test, a client that sends whatever bytes it is given, and well-formed requests to spoil.
#pragma once

#include "tests/support/database.h"
#include "tests/support/local_service.h"
#include "tests/support/temporary_folder.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

namespace tessera_local {

class Client {
public:
    explicit Client(int port)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval limit{10, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        const sockaddr_in address{AF_INET, htons(static_cast<in_port_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
        EXPECT_EQ(::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~Client() { ::close(m_socket); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(const std::string& bytes) const { ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    void finishSending() const { ::shutdown(m_socket, SHUT_WR); }

    // Waits until the other end closes, for at most 10 s.
    [[nodiscard]] std::string receiveAll() const
    {
        std::string reply(1 << 20, '\0');
        const ssize_t count = ::recv(m_socket, reply.data(), reply.size(), MSG_WAITALL);
        return reply.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
    }

private:
    int m_socket;
};

inline std::string statusOf(const std::string& reply)
{
    return reply.starts_with("HTTP/1.1 ") ? reply.substr(9, 3) : reply.empty() ? "---" : reply;
}

inline std::string bodyOf(const std::string& reply)
{
    return reply.find("\r\n\r\n") == std::string::npos ? "" : reply.substr(reply.find("\r\n\r\n") + 4);
}

// With the first `part` replaced, if there is one.
inline std::string replaced(std::string text, const std::string& part, const std::string& with)
{
    return text.find(part) == std::string::npos ? text : text.replace(text.find(part), part.size(), with);
}

// With the length of the body instead of "#".
inline std::string sized(const std::string& request)
{
    return replaced(request, "Length: #", "Length: " + std::to_string(bodyOf(request).size()));
}

// `start` is the method and the target. The length of the body is still to be set: sized().
inline std::string request(const std::string& start,
                           const std::string& headers = "Host: localhost\r\napiKey: alice-key\r\n",
                           const std::string& body = {})
{
    return start + " HTTP/1.1\r\n" + headers + "Content-Length: #\r\n\r\n" + body;
}

// A form as a browser submits it.
inline std::string form(const std::string& body, const std::string& target = "/tessera/dvd/new/?uid=1")
{
    return request("POST " + target,
                   "Host: localhost\r\nOrigin: http://localhost\r\nSec-Fetch-Site: same-origin\r\n"
                   "Content-Type: application/x-www-form-urlencoded\r\n",
                   body);
}

// A package as far as the service looks into it; `statedBytes` overrides the length that its header states.
inline std::string package(const std::string& kind, const std::string& chunks, std::uint64_t statedBytes = 0)
{
    using namespace std::string_literals;
    std::string length(8, '\0');
    qToBigEndian<quint64>(statedBytes != 0 ? statedBytes : 32 + chunks.size(), length.data());
    const std::string magic = kind == "dvd" ? "PSTP-DVD"s : "PSTPBD\0\1"s;
    return magic + "\0\1\0\x20\0\0\0\0"s + length + "\0\0\0\4\0\0\0\0"s + chunks;
}

inline std::string deflated(const std::string& bytes)
{
    return qCompress(QByteArray::fromStdString(bytes))
        .mid(4)
        .toStdString();  // Qt puts the length before the stream
}

inline std::string sha256Of(const std::string& bytes)
{
    return QCryptographicHash::hash(QByteArrayView(bytes), QCryptographicHash::Sha256).toHex().toStdString();
}

// An upload of the package `bytes` to "/api/tessera/KIND/ACTION/", sent as `stream`.
inline std::string upload(const std::string& kind, const std::string& action, const std::string& bytes,
                          const std::string& stream)
{
    return request("POST /api/tessera/" + kind + "/" + action + "/",
                   "apiKey: alice-key\r\nContent-Type: application/vnd.platterscope." + kind +
                       "-title-package\r\nContent-Encoding: deflate\r\nX-Platterscope-Package-SHA256: " +
                       sha256Of(bytes) + "\r\n",
                   stream);
}
inline std::string upload(const std::string& kind, const std::string& action, const std::string& bytes)
{
    return upload(kind, action, bytes, deflated(bytes));
}

class Service : public testing::Test {
protected:
    void start(const std::vector<std::string>& arguments = {})
    {
        m_service.reset();
        const std::vector<std::string> keys{"alice-key=alice", "bob-key=b\xC3\xB6z"};
        m_service = std::make_unique<testsupport::LocalService>(TESSERA_LOCAL_EXECUTABLE, m_database, keys,
                                                                arguments);
        ASSERT_TRUE(m_service->isReady()) << m_service->log();
    }
    void startWithDiscs()  // 1 is a DVD, 2 a Blu-ray
    {
        start();
        ASSERT_EQ(body(upload("dvd", "add", package("dvd", "one"))), "1");
        ASSERT_EQ(body(upload("bluray", "add", package("bluray", "one"))), "2");
    }
    [[nodiscard]] std::string ask(const std::string& request) const
    {
        const Client client(m_service->port());
        client.send(sized(request));
        client.finishSending();
        return client.receiveAll();
    }
    [[nodiscard]] std::string status(const std::string& request) const { return statusOf(ask(request)); }
    [[nodiscard]] std::string body(const std::string& request) const { return bodyOf(ask(request)); }

    // The first value that a statement on the database gives.
    std::string sql(const std::string& statement) const
    {
        const std::vector<QByteArray> row = testsupport::firstRow(m_database, statement);
        return row.empty() ? "" : row[0].toStdString();
    }

    testsupport::TemporaryFolder m_folder;
    std::string m_database = m_folder / "service.db";
    std::unique_ptr<testsupport::LocalService> m_service;
};

}  // namespace tessera_local
