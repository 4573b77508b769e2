// What the four operations send, and what they make of all that a service or a network can answer.
#include "service/authentication.h"
#include "service/configuration_request.h"
#include "service/disc_requests.h"
#include "service/http_client.h"
#include "tests/service/tables.h"
#include "tests/support/bounded_child.h"
#include "tests/support/golden.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <QCryptographicHash>
#include <QDebug>

#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <set>

using namespace Qt::StringLiterals;
using service::DiscKind;
using service::HttpRequest;
using service::TitlePackage;
using testsupport::ScopedEnvironment;
using testsupport::ScriptedReply;
using testsupport::ScriptedServer;

namespace {

const QString kKey = u"K3Y-5ECRET"_s;
const HttpRequest kGet = {u"/api/thing/?id=5"_s, false, {}, {service::apiKeyHeader(kKey)}};

enum Operation { kAuthenticate, kFind, kAdd, kConfigurations };
constexpr const char* kNames[] = {"authenticate", "find", "add", "configurations"};
constexpr Operation kOperations[] = {kAuthenticate, kFind, kAdd, kConfigurations};

TitlePackage packageOf(const QByteArray& bytes = "package bytes", DiscKind kind = DiscKind::Dvd)
{
    return {kind, bytes, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256)};
}

// What was read from the reply, or "error: " and a text.
std::string carryOut(Operation operation, const QString& key, const TitlePackage& package)
{
    const auto ended = [](const auto& outcome, const QString& read) {
        return (outcome.ok ? read : u"error: "_s + outcome.error.english()).toStdString();
    };
    if (operation == kAuthenticate) {
        const auto outcome = service::authenticate(key);
        const service::ServiceUser& user = outcome.user;
        return ended(outcome, QString::number(user.uid) + u' ' + user.username + u' ' + user.latestVersion);
    }
    if (operation == kFind) {
        const auto outcome = service::findDisc(package, key);
        const QString found = outcome.reply.isFound ? u"found %1, %2"_s : u"unknown %1, %2"_s;
        return ended(outcome, found.arg(outcome.reply.discId).arg(outcome.reply.configurations.size()));
    }
    if (operation == kAdd) {
        const auto outcome = service::addDisc(package, key);
        return ended(outcome, QString::number(outcome.discId));
    }
    const auto outcome = service::getConfigurations(package.kind, 17, key);
    return ended(outcome, QString::number(outcome.configurations.size()));
}

class Requests : public testing::Test {
protected:
    // The same, and what is logged; nothing that is said holds the key.
    static std::string run(Operation operation, const QString& key = kKey,
                           const TitlePackage& package = packageOf())
    {
        testing::internal::CaptureStderr();
        std::string ended = carryOut(operation, key, package);
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ((ended + log).find(kKey.toStdString()), std::string::npos);
        if (operation == kAuthenticate && ended.find_first_of(std::string("\r\0", 2)) == std::string::npos) {
            const bool isOk = !ended.starts_with("error: ");
            EXPECT_EQ(log, "tessera: info: authentication started\ntessera: " +
                               (isOk ? "info: authentication succeeded" : ended) + '\n');
        }
        return ended;
    }

    static std::string errorOf(const HttpRequest& request, const service::HttpLimits& limits = {})
    {
        const service::HttpOutcome outcome = service::perform(request, limits);
        EXPECT_NE(outcome.ok, outcome.body.isEmpty());
        return outcome.error.english().toStdString();
    }

    ScriptedServer m_server;
    ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
};

// Request line, headers without those that the HTTP library writes by itself, and what the body holds.
std::string described(const testsupport::RecordedRequest& request)
{
    std::string text = request.method + ' ' + request.target + '\n';
    for (const std::string& line : request.headerLines) {
        const std::string name = line.substr(0, line.find(':'));
        const bool isOfLibrary = name == "Host" || name == "Accept" || name == "Expect";
        if (!isOfLibrary && (name != "Content-Length" || request.body.empty())) { text += line + '\n'; }
    }
    if (request.body.empty()) { return text + '\n'; }
    QByteArray bytes(2'000'000, '\0');
    uLong size = 2'000'000;
    uLong consumed = request.body.size();
    const auto* const stream = reinterpret_cast<const Bytef*>(request.body.data());
    EXPECT_EQ(uncompress2(reinterpret_cast<Bytef*>(bytes.data()), &size, stream, &consumed), Z_OK);
    EXPECT_EQ(consumed, request.body.size());
    const TitlePackage package = packageOf(bytes.first(static_cast<qsizetype>(size)));
    return text + "zlib stream 0x" + QByteArray(request.body.data(), 2).toHex().toStdString() + "..., " +
           std::to_string(size) + " bytes with SHA-256 " + package.sha256.toHex().toStdString() + "\n\n";
}

TEST_F(Requests, AreSentAsTheServiceExpectsThem)
{
    QByteArray noise(1'500'000, '\0');  // so much that the library waits for leave to send it
    std::ranges::generate(noise, std::minstd_rand());
    for (const Operation operation : kOperations) {
        run(operation, kKey, packageOf(operation == kFind ? QByteArray(5000, 'd') : QByteArray(1, '\0')));
    }
    for (const Operation operation : {kFind, kAdd, kConfigurations}) {
        run(operation, kKey, packageOf(noise, DiscKind::Bluray));
    }
    std::string text;
    for (const auto& request : m_server.requests()) {
        text += described(request);
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/requests.txt"), "");

    const std::string page = m_server.url() + "/tessera/";
    EXPECT_EQ(service::newDiscUrl(DiscKind::Dvd, 17).toStdString(), page + "dvd/new/?uid=17");
    EXPECT_EQ(service::newDiscUrl(DiscKind::Bluray, -1).toStdString(), page + "bluray/new/?uid=-1");
    EXPECT_TRUE(service::newDiscUrl(DiscKind::Dvd, 0).isEmpty());
}

// Operation, body of a reply with status 200, and what comes of it.
TEST_F(Requests, WholeRepliesAreReadOrRefused)
{
    for (const QByteArrayList& row : readTable("replies.txt")) {
        const auto operation = static_cast<Operation>(std::ranges::find(kNames, row.at(0)) - kNames);
        m_server.play({.body = row.at(1).toStdString()});
        EXPECT_EQ(run(operation), row.at(2).toStdString()) << row.at(1).constData();
    }
}

TEST_F(Requests, OtherRepliesAreErrors)
{
    const ScriptedServer elsewhere;
    const std::string location = "Location: " + elsewhere.url() + "/api/tessera/user/";
    const std::string head = "HTTP/1.1 200 OK\r\n";
    const std::string goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    const std::pair<const char*, ScriptedReply> rows[] = {
        {"200 without a body", {}},
        {"201", {.status = 201, .body = "{}"}},
        {"201 without a body", {.status = 201}},
        {"204", {.status = 204}},
        {"a redirect", {.status = 302, .headerLines = {location}}},
        {"a redirect of a POST", {.status = 307, .body = "Moved.", .headerLines = {location}}},
        {"lines", {.status = 403, .body = "Revoked.\r\n\u00FC\n"}},
        {"white space", {.status = 404, .body = " \r\n\t"}},
        {"a NUL", {.status = 500, .body = std::string("a\0b", 3)}},
        {"no UTF-8", {.status = 500, .body = "\xFF\xC3(\xED\xA0\x80"}},
        {"500 without a body", {.status = 500}},
        {"nothing of the body", {.status = 500, .body = "17", .bodyBytesBeforeCut = 0}},
        {"a part of the body", {.body = "17123", .bodyBytesBeforeCut = 2}},
        {"no last chunk", {.rawBytes = head + "Transfer-Encoding: chunked\r\n\r\n2\r\n17\r\n"}},
        {"nothing", {.rawBytes = ""}},
        {"half a head", {.rawBytes = head + "Content-Le"}},
        {"leave to go on", {.rawBytes = "", .repeated = goOn, .repeats = ~0ULL}},
        {"an endless head", {.rawBytes = head, .repeated = std::string(1000, 'x'), .repeats = ~0ULL}},
        {"no HTTP", {.rawBytes = "220 mail.example ESMTP\r\n"}},
        {"HTTP/2 unasked", {.rawBytes = "HTTP/2 200 OK\r\nContent-Length: 2\r\n\r\n[["}},
        {"gzip unasked", {.body = "\x1F\x8B\x08", .headerLines = {"Content-Encoding: gzip"}}},
    };
    std::string text;
    const auto runAll = [&](const char* name) {
        std::set<std::string> ends;
        for (const Operation operation : kOperations) {
            ends.insert(run(operation));
        }
        text += std::string(name) + ":\n";
        for (const std::string& end : ends) {
            text += "    " + QDebug::toString(QString::fromStdString(end)).toStdString() + '\n';
        }
    };
    for (const auto& [name, reply] : rows) {
        for (int i = 0; i < 4; ++i) {
            m_server.play(reply);
        }
        runAll(name);
    }
    EXPECT_EQ(m_server.requests().size(), 4 * std::size(rows)) << "nothing is tried twice";
    EXPECT_TRUE(elsewhere.requests().empty()) << "no redirect is followed";

    const testsupport::LoopbackPort closed(false);
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", closed.url());
    runAll("a connection that is refused");
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/failures.txt"), "");
}

TEST_F(Requests, AreNotSentWhereSomethingIsMissingOrNotAllowed)
{
    for (const QString& key : {u""_s, u"REPLACE_WITH_YOUR_API_KEY"_s}) {
        EXPECT_EQ(run(kAuthenticate, key), "error: Tessera API key is not configured.");
    }
    for (const QString& key : {u"a\nb"_s, u"a\tb"_s, u"a\u0085b"_s, u"a\u2028b"_s, u"a\u2029b"_s}) {
        EXPECT_EQ(run(kAuthenticate, key), "error: The API key contains characters that are not allowed.");
    }
    const TitlePackage whole = packageOf();
    const std::pair<QString, TitlePackage> incomplete[] = {
        {u""_s, whole},
        {kKey, {whole.kind, {}, whole.sha256}},
        {kKey, {whole.kind, whole.bytes, whole.sha256.chopped(1)}},
        {kKey, {whole.kind, whole.bytes, whole.sha256 + '\0'}},
    };
    for (const auto& [key, part] : incomplete) {
        EXPECT_EQ(run(kFind, key, part), "error: Tessera title package request is missing required data.");
        EXPECT_EQ(run(kAdd, key, part), "error: Tessera title package request is missing required data.");
    }
    EXPECT_EQ(run(kConfigurations, {}), "error: Tessera request is missing required data.");
    for (const Operation operation : {kFind, kAdd, kConfigurations}) {
        EXPECT_EQ(run(operation, u"a\u007Fb"_s),
                  "error: Unable to prepare the Tessera authentication request.");
    }

    EXPECT_EQ(errorOf(HttpRequest()), "Tessera request is missing required data.");
    HttpRequest request = {kGet.path, false, {}, {QByteArray("X-Other: a\0b", 12)}, "Not prepared."};
    EXPECT_EQ(errorOf(request), "Not prepared.");
    request.headers = {service::apiKeyHeader(u"key\r\nX-Other: 1"_s)};
    EXPECT_EQ(errorOf(request), "Unable to prepare the Tessera authentication request.");

    std::string address = m_server.url();
    address.replace(address.find("127.0.0.1"), 9, "localhost.example");
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", address);
    EXPECT_EQ(errorOf(kGet),
              "The Tessera service address must use https; http is allowed for this computer alone.");
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(Requests, EndAtTheirLimits)
{
    m_server.playFor("/api/thing/", {.body = std::string(100'000, 'x')});  // arrives in parts
    EXPECT_NE(errorOf(kGet, {.replyBytes = 99'999}), "");
    EXPECT_EQ(errorOf(kGet, {.replyBytes = 100'000}), "");
    m_server.playFor("/api/thing/", {.body = "0123456789"});
    EXPECT_EQ(errorOf(kGet, {.replyBytes = 9}),
              "Network error: Failed writing received data to disk/application");

    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n";
    const auto expectEnd = [](const HttpRequest& request, const std::string& text) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(errorOf(request, {.transferSeconds = 1}), text);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    };
    const std::chrono::milliseconds interval(100);
    m_server.play({.rawBytes = head, .repeated = "X: 1\r\n", .repeats = 300, .interval = interval});
    expectEnd(kGet, "Network error: Timeout was reached");
    m_server.play({.rawBytes = head + "\r\n17", .staysOpen = true});
    expectEnd(kGet, "17");

    const testsupport::LoopbackPort deaf;  // takes what fits into the system's buffers
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", deaf.url());
    expectEnd({kGet.path, true, QByteArray(50'000'000, 'x'), {}}, "Network error: Timeout was reached");
}

TEST_F(Requests, GoToThisComputerWithoutAProxyAndElsewhereThroughOneThatSeesNoKey)
{
    ScriptedServer proxy;
    const ScopedEnvironment http("http_proxy", proxy.url());
    const ScopedEnvironment https("https_proxy", proxy.url());
    const ScopedEnvironment all("all_proxy", proxy.url());
    const ScopedEnvironment none("no_proxy", "");
    m_server.play({.body = "x"});
    EXPECT_EQ(errorOf(kGet), "");
    EXPECT_TRUE(proxy.requests().empty());

    proxy.play({.status = 407});
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "https://tessera.example");
    EXPECT_NE(errorOf(kGet), "");
    ASSERT_EQ(proxy.requests().size(), 1U);
    EXPECT_EQ(proxy.requests()[0].method, "CONNECT");
    EXPECT_EQ(proxy.requests()[0].target, "tessera.example:443");
    EXPECT_EQ(proxy.requests()[0].header("apiKey"), "");
}

TEST_F(Requests, TakeTimeAndMemoryInProportionToTheReply)
{
    constexpr std::size_t kReplyBytes = 30'000'000;
    const std::string ok = "HTTP/1.0 200 OK\r\n\r\n";
    const std::string x(10'000, 'x');
    const std::string empty = QByteArray(",{}").repeated(4000).toStdString();
    const std::string title = R"(,{"Data": "{\"titles\": [{\"name\": \")" + x + R"(\"}]}"})";
    const std::string values =
        QByteArray("0\\u002c").repeated(100'000).toStdString();  // no comma to the outer document
    const struct {
        Operation operation;
        bool isTaken;
        std::size_t factor;  // of the reply's size: a text takes twice its bytes, beside what it is made of
        std::string begin, piece, end;
    } rows[] = {
        {kAuthenticate, true, 3, ok + R"({"UID": 1, "Username": "a", "x": ")", x, "\"}"},
        {kAuthenticate, true, 4, ok + R"({"UID": 1, "Username": ")", x, "\"}"},
        {kAuthenticate, false, 11, "HTTP/1.0 500 No\r\n\r\n", std::string(10'000, '\x1B'), ""},
        {kFind, true, 3, ok + R"({"x": ")", x, "\"}"},
        {kFind, true, 4, ok + R"({"Disc ID": 1, "Configurations": [{"Language Code": ")", x, "\"}]}"},
        {kFind, false, 4, "HTTP/1.0 500 No\r\n\r\n", x, ""},
        {kAdd, true, 3, ok, std::string(10'000, '0'), "17"},
        {kConfigurations, true, 5, ok + R"([{"Data": "{\"disc_name\": \")", x, R"(\"}"}])"},
        {kConfigurations, true, 4, ok + "[{}", title, "]"},
        {kConfigurations, false, 3, ok + "[{}", empty, "]"},
        {kConfigurations, false, 5, ok + "[{}", R"(,{"Data": "[)" + values + R"(0]"})", "]"},
    };
    for (const auto& [operation, isTaken, factor, begin, piece, end] : rows) {
        SCOPED_TRACE(begin);
        m_server.play(
            {.rawBytes = begin, .repeated = piece, .repeats = kReplyBytes / piece.size(), .end = end});
        const auto work = [which = operation]() -> std::string {
            const TitlePackage package = packageOf("x");
            const bool isOk =
                std::freopen("/dev/null", "w", stderr) != nullptr &&  // a failure is logged there
                (which == kAuthenticate ? service::authenticate(kKey).ok
                 : which == kFind       ? service::findDisc(package, kKey).ok
                 : which == kAdd        ? service::addDisc(package, kKey).ok
                                        : service::getConfigurations(package.kind, 1, kKey).ok);
            return isOk ? "taken" : "refused";
        };
        const auto outcome = testsupport::runInChild(work, std::chrono::seconds(100));
        EXPECT_EQ(outcome.text, isTaken ? "taken" : "refused");
#ifndef __SANITIZE_ADDRESS__  // which keeps what is freed, and notes about all that is allocated
        EXPECT_LT(outcome.extraKiB, static_cast<std::int64_t>(factor * kReplyBytes / 1024));
#endif
    }
}

}  // namespace
