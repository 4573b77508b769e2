// What the four operations make of everything that a network or a broken service can answer.
#include "service/authentication.h"
#include "service/configuration_request.h"
#include "service/disc_requests.h"
#include "service/http_client.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fault_table.h"

#include <QCryptographicHash>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;
using testsupport::recordFault;
using testsupport::ScopedEnvironment;
using testsupport::ScriptedReply;

namespace {

constexpr char kKey[] = "K3Y-5ECRET";

struct Ended {
    bool ok = false;
    std::string text;
};

struct Operation {
    const char* name;
    std::function<Ended()> run;
    const char* invalidText;  // where a whole reply with status 200 makes no sense
};

service::TitlePackage package()
{
    const QByteArray bytes = "package bytes";
    return {service::DiscKind::Dvd, bytes, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256)};
}

template <typename Outcome>
Ended ended(const Outcome& outcome)
{
    return {outcome.ok, outcome.errorText.toStdString()};
}

const std::vector<Operation>& operations()
{
    static const QString key = QString::fromLatin1(kKey);
    static const std::vector<Operation> all = {
        {"authenticate", [] { return ended(service::authenticate(key)); },
         "Tessera returned an invalid authentication response."},
        {"find", [] { return ended(service::findDisc(package(), key)); },
         "Tessera returned an invalid find response."},
        {"add", [] { return ended(service::addDisc(package(), key)); },
         "Tessera returned an invalid disc identifier."},
        {"configurations", [] { return ended(service::getConfigurations(service::DiscKind::Dvd, 17, key)); },
         "Tessera returned an invalid configurations response."},
    };
    return all;
}

// Replies that are the same text in UTF-8 and as received, unless `shown` says otherwise.
struct Body {
    std::string bytes;
    std::string shown;
};

const Body kBodies[] = {
    {"", ""},
    {"The service rests.\n", "The service rests.\n"},
    {R"({"Disc ID": {}, "UID": []})", R"({"Disc ID": {}, "UID": []})"},
    {R"({"Disc ID": 17)", R"({"Disc ID": 17)"},
    {"\xFF\xC3(\xED\xA0\x80", "\uFFFD\uFFFD(\uFFFD\uFFFD\uFFFD"},
    {std::string("a\0b", 3), std::string("a\0b", 3)},
    {" \r\n\t", " \r\n\t"},
    {"<!DOCTYPE html><html><b>502</b></html>", "<!DOCTYPE html><html><b>502</b></html>"},
};

// A port of this computer where no connection is ever answered; where it does not even listen, each is refused.
class UnservedPort {
public:
    explicit UnservedPort(bool isListening)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_socket, generic, size) != 0 || ::getsockname(m_socket, generic, &size) != 0 ||
            (isListening && ::listen(m_socket, 1) != 0)) {
            throw std::runtime_error("no port");
        }
        m_port = ntohs(address.sin_port);
    }
    ~UnservedPort() { ::close(m_socket); }
    UnservedPort(const UnservedPort&) = delete;
    UnservedPort& operator=(const UnservedPort&) = delete;

    [[nodiscard]] std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }

private:
    int m_socket;
    int m_port = 0;
};

struct BrokenTransfer {
    const char* name;
    ScriptedReply reply;
    std::string text;  // empty: that of an invalid reply
};

std::vector<BrokenTransfer> brokenTransfers()
{
    const std::string head = "HTTP/1.1 200 OK\r\n";
    const std::string chunkedHead = head + "Transfer-Encoding: chunked\r\n\r\n";
    const std::string nothing = "Network error: Server returned nothing (no headers, no data)";
    const std::string noMore = "Network error: Failure when receiving data from the peer";
    const std::string noHttp = "Network error: Unsupported protocol";
    return {
        {"closed before the head", {.rawBytes = ""}, nothing},
        {"reset before the head", {.rawBytes = "", .endsByReset = true}, noMore},
        {"half a status line", {.rawBytes = "HTTP/1.1 2"}, nothing},
        {"half a head", {.rawBytes = head + "Content-Le"}, ""},
        {"leave to go on, and nothing", {.rawBytes = "HTTP/1.1 100 Continue\r\n\r\n"}, nothing},
        {"leave to go on without end",
         {.rawBytes = "", .repeated = "HTTP/1.1 100 Continue\r\n\r\n", .repeats = ~0ULL},
         noMore},
        {"head without its body",
         {.rawBytes = head + "Content-Length: 5\r\n\r\n"},
         "Network error: Transferred a partial file"},
        {"cut body", {.rawBytes = head + "Content-Length: 5\r\n\r\n17"}, "17"},
        {"reset body", {.rawBytes = head + "Content-Length: 5\r\n\r\n17", .endsByReset = true}, "17"},
        {"cut chunk", {.rawBytes = chunkedHead + "5\r\n17"}, "17"},
        {"no last chunk", {.rawBytes = chunkedHead + "2\r\n17\r\n"}, "17"},
        {"broken chunk size", {.rawBytes = chunkedHead + "zz\r\n17\r\n0\r\n\r\n"}, noMore},
        {"huge chunk size", {.rawBytes = chunkedHead + "FFFFFFFFFFFFFFFFF\r\n17"}, noMore},
        {"negative length",
         {.rawBytes = head + "Content-Length: -5\r\n\r\n17"},
         "Network error: Weird server reply"},
        {"two lengths", {.rawBytes = head + "Content-Length: 1\r\nContent-Length: 2\r\n\r\n[}"}, ""},
        {"length beyond 64 bits", {.rawBytes = head + "Content-Length: 99999999999999999999\r\n\r\n{"}, ""},
        {"endless head",
         {.rawBytes = head, .repeated = "X: " + std::string(1000, 'x') + "\r\n", .repeats = ~0ULL},
         noMore},
        {"endless line",
         {.rawBytes = head + "X: ", .repeated = std::string(1000, 'x'), .repeats = ~0ULL},
         "Network error: Out of memory"},
        {"no HTTP", {.rawBytes = "220 mail.example ESMTP\r\n"}, noHttp},
        {"HTTP of another version", {.rawBytes = "HTTP/9.9 200 OK\r\nContent-Length: 2\r\n\r\n{}"}, noHttp},
        {"HTTP/2 unasked", {.rawBytes = "HTTP/2 200 OK\r\nContent-Length: 2\r\n\r\n[["}, ""},
        {"HTTP/1.0 without a length", {.rawBytes = "HTTP/1.0 200 OK\r\n\r\n{"}, ""},
        {"no status", {.rawBytes = "HTTP/1.1 OK\r\nContent-Length: 2\r\n\r\n{}"}, noHttp},
        {"compressed unasked", {.body = "\x1F\x8B\x08", .headerLines = {"Content-Encoding: gzip"}}, ""},
        {"a second reply behind the first",
         {.rawBytes = head + "Content-Length: 1\r\n\r\n{" + head + "Content-Length: 2\r\n\r\n{}"},
         ""},
    };
}

class NetworkFaults : public ServiceTest {
protected:
    // Runs every operation against this reply; each must end with its own text.
    void expectText(const ScriptedReply& reply, const std::string& text)
    {
        for (const Operation& operation : operations()) {
            m_server.play(reply);
            expectFailure(operation, text.empty() ? operation.invalidText : text);
        }
    }

    static void expectFailure(const Operation& operation, const std::string& text)
    {
        testing::internal::CaptureStderr();
        const Ended ended = operation.run();
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(ended.ok) << operation.name;
        EXPECT_EQ(ended.text, text) << operation.name;
        EXPECT_EQ((ended.text + log).find(kKey), std::string::npos) << operation.name;
    }
};

}  // namespace

TEST_F(NetworkFaults, StatusesAndBodies)
{
    const int statuses[] = {200, 201, 204, 301, 302, 303, 307, 308, 400, 401, 403, 404, 413, 429, 500, 503};
    testsupport::ScriptedServer elsewhere;
    for (const int status : statuses) {
        for (const Body& body : kBodies) {
            SCOPED_TRACE(std::to_string(status) + ' ' + body.bytes);
            const bool hasText = !body.bytes.empty() && status != 204;  // which never has a body
            const std::string text =
                hasText ? body.shown : "Tessera returned HTTP " + std::to_string(status) + ".";
            expectText({.status = status,
                        .body = body.bytes,
                        .headerLines = {"Location: " + elsewhere.url() + "/api/tessera/user/"}},
                       status == 200 ? std::string() : text);
        }
    }
    const std::size_t each = std::size(kBodies) * operations().size();
    EXPECT_EQ(m_server.requests().size(), std::size(statuses) * each) << "nothing is tried twice";
    EXPECT_TRUE(elsewhere.requests().empty()) << "no redirect is followed";
    recordFault("Service: a reply with status 200 that says nothing of use",
                "refused, in words of the operation", each);
    recordFault("Service: a redirect",
                "not followed: the key goes nowhere else, the reply's text is the message", 5 * each);
    recordFault("Service: any other status, with and without a text",
                "an error with the service's text, else with the status", (std::size(statuses) - 6) * each);
}

TEST_F(NetworkFaults, BrokenTransfers)
{
    const std::vector<BrokenTransfer> cases = brokenTransfers();
    for (const BrokenTransfer& broken : cases) {
        SCOPED_TRACE(broken.name);
        expectText(broken.reply, broken.text);
    }
    EXPECT_EQ(m_server.requests().size(), cases.size() * operations().size()) << "nothing is tried twice";
    recordFault("Service: a reply that breaks, lies about itself or is no HTTP",
                "an error with what was received or what broke", cases.size() * operations().size());
}

TEST_F(NetworkFaults, NothingOutlastsTheTransferLimit)
{
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n";
    const std::chrono::milliseconds slow(100);
    const std::string timeout = "Network error: Timeout was reached";
    const std::pair<ScriptedReply, std::string> replies[] = {
        {{.rawBytes = "", .staysOpen = true}, timeout},
        {{.rawBytes = head, .staysOpen = true}, timeout},
        {{.rawBytes = head + "\r\n17", .staysOpen = true}, "17"},
        {{.rawBytes = head + std::string(100, 'x'), .byteInterval = slow}, timeout},
        {{.rawBytes = "HTTP/1.0 200 OK\r\n\r\n", .staysOpen = true}, timeout},
    };
    service::HttpRequest request;
    request.path = u"/api/tessera/user/"_s;
    request.isPost = true;
    request.headers = {service::apiKeyHeader(QString::fromLatin1(kKey))};
    const auto outcomeText = [&] {
        const auto begin = std::chrono::steady_clock::now();
        const service::HttpOutcome outcome = service::perform(request, {.transferSeconds = 1});
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
        EXPECT_FALSE(outcome.ok);
        return outcome.errorText.toStdString();
    };
    for (const auto& [reply, text] : replies) {
        m_server.play(reply);
        EXPECT_EQ(outcomeText(), text);
    }

    // The system takes the connection and what fits into its buffers; nobody ever reads it.
    const UnservedPort port(true);
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", port.url());
    for (const qsizetype bodyBytes : {qsizetype{0}, qsizetype{50'000'000}}) {
        request.postBody.fill('x', bodyBytes);
        EXPECT_EQ(outcomeText(), timeout) << bodyBytes;
    }
    recordFault("Service: a reply that stalls or trickles, or a request that nobody reads",
                "given up at the transfer limit", std::size(replies) + 2);
}

TEST_F(NetworkFaults, ARefusedConnection)
{
    const UnservedPort port(false);
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", port.url());
    for (const Operation& operation : operations()) {
        expectFailure(operation, "Network error: Couldn't connect to server");
    }
    recordFault("Service: a connection that is refused", "an error that says so", operations().size());
}
