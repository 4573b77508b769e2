// The limits of a request, made small enough to be met in a test: the server within the test's own process.
#include "tests/support/fault_table.h"
#include "tests/tessera_local/raw_client.h"
#include "tests/tessera_local/test_package.h"
#include "tools/tessera_local/server.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>
#include <vector>

namespace tessera_local {

namespace {

class ServerLimits : public testing::Test {
protected:
    int start(const Limits& limits)
    {
        m_server = std::make_unique<Server>(m_store, std::vector<User>{{1, "alice", "k"}}, "", limits);
        const int port = m_server->bind("127.0.0.1", 0);
        m_serving = std::thread([this] { m_server->serve(); });
        while (!m_server->isServing()) {
            std::this_thread::yield();
        }
        return port;
    }
    void addDisc()
    {
        const std::array<std::uint8_t, 1> package{};
        m_store.addDisc(DiscKind::Dvd, sha256Of(m_package), package);
    }
    void TearDown() override
    {
        m_server->stop();
        m_serving.join();
    }

    static std::string uploadHead(std::size_t length)
    {
        return "POST /api/tessera/dvd/find/ HTTP/1.1\r\napiKey: k\r\n"
               "Content-Type: application/vnd.platterscope.dvd-title-package\r\nContent-Encoding: deflate\r\n"
               "X-Platterscope-Package-SHA256: " +
               sha256Of(m_package) + "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
    }

    inline static const std::string m_package = package(DiscKind::Dvd, std::string(10'000, 'c'));
    inline static const std::string m_stream = deflated(m_package, 0);  // stored: as long as the package

private:
    TemporaryFolder m_folder;
    Store m_store{m_folder.file("db")};
    std::unique_ptr<Server> m_server;
    std::thread m_serving;
};

}  // namespace

// Twice as many as the service has threads, half of them in the middle of a request. They stay until the end.
TEST_F(ServerLimits, SlowClientsDoNotKeepOthersOut)
{
    Limits limits;
    limits.headerTime = std::chrono::milliseconds(50);
    const int port = start(limits);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 32; ++i) {
        clients.push_back(std::make_unique<RawClient>(port));
        ASSERT_TRUE(clients.back()->send(i % 2 == 0 ? "" : "POST /api/tessera/user/ HTTP/1.1\r\napiKey: "));
    }
    RawClient other(port);
    ASSERT_TRUE(other.send("POST /api/tessera/user/ HTTP/1.1\r\napiKey: k\r\nContent-Length: 0\r\n\r\n"));
    const std::string reply = other.receiveAll();
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 200 ")) << reply;
    testsupport::recordFault("Local service: more slow clients than it has threads",
                             "the others are answered when their time is over");
}

// Chunked, which says nothing of the length.
TEST_F(ServerLimits, EndlessFormsAreGivenUp)
{
    Limits limits;
    limits.formBytes = 100'000;
    const int port = start(limits);
    addDisc();
    RawClient client(port);
    ASSERT_TRUE(
        client.send("POST /tessera/dvd/new/?uid=1 HTTP/1.1\r\nHost: localhost\r\nOrigin: http://localhost\r\n"
                    "Content-Type: application/x-www-form-urlencoded\r\nTransfer-Encoding: chunked\r\n\r\n"));
    for (int i = 0; i < 1000 && client.send("2710\r\n" + std::string(10'000, 'x') + "\r\n"); ++i) {}
    const std::string reply = client.receiveAll();
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 4")) << reply;
    testsupport::recordFault("Local service: a form without end", "refused at the limit");
}

TEST_F(ServerLimits, SlowHeadersAreGivenUp)
{
    Limits limits;
    limits.headerTime = std::chrono::milliseconds(50);
    RawClient client(start(limits));
    ASSERT_TRUE(client.send("POST /api/tessera/user/ HTTP/1.1\r\napiKey: "));
    const std::string reply = client.receiveAll();
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 400 ")) << reply;
    testsupport::recordFault("Local service: a request that stalls", "given up at its time limit");
}

TEST_F(ServerLimits, SlowBodiesAreGivenUp)
{
    Limits limits;
    limits.bodyTime = std::chrono::milliseconds(50);
    RawClient client(start(limits));
    ASSERT_TRUE(client.send(uploadHead(m_stream.size()) + m_stream.substr(1)));
    // The reply's time is over as well, but what need not wait is sent.
    const std::string reply = client.receiveAll();
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 400 ")) << reply;
    testsupport::recordFault("Local service: a request that stalls", "given up at its time limit");
}

// A form needs no key, so it gets less time than an upload.
TEST_F(ServerLimits, SlowFormsAreGivenUp)
{
    Limits limits;
    limits.formTime = std::chrono::milliseconds(50);
    const int port = start(limits);
    addDisc();
    RawClient client(port);
    ASSERT_TRUE(
        client.send("POST /tessera/dvd/new/?uid=1 HTTP/1.1\r\nHost: localhost\r\nOrigin: http://localhost\r\n"
                    "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 100\r\n\r\ndisc"));
    const std::string reply = client.receiveAll();
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 400 ")) << reply;
    testsupport::recordFault("Local service: a request that stalls", "given up at its time limit");
}

TEST_F(ServerLimits, HeadersAndBodiesOverTheLimitAreRefused)
{
    Limits limits;
    limits.headerBytes = 2000;
    limits.bodyBytes = m_stream.size();
    const int port = start(limits);
    const auto replyTo = [port](const std::string& bytes) {
        RawClient client(port);
        client.send(bytes);
        return client.receiveAll();
    };
    EXPECT_TRUE(replyTo(uploadHead(m_stream.size()) + m_stream).starts_with("HTTP/1.1 200 "));
    EXPECT_TRUE(replyTo(uploadHead(m_stream.size() + 1) + m_stream).starts_with("HTTP/1.1 413 "));
    EXPECT_TRUE(replyTo("GET / HTTP/1.1\r\nX: " + std::string(3000, 'x')).starts_with("HTTP/1.1 400 "));
    testsupport::recordFault("Local service: headers or a body over their limit", "refused", 2);
}

TEST_F(ServerLimits, PackagesOverTheLimitAreRefused)
{
    Limits limits;
    limits.packageBytes = m_package.size() - 1;
    RawClient client(start(limits));
    ASSERT_TRUE(client.send(uploadHead(m_stream.size()) + m_stream));
    EXPECT_TRUE(client.receiveAll().starts_with("HTTP/1.1 413 "));
}

}  // namespace tessera_local
