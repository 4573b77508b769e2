// What the four operations send, where, and what they make of all that a service or a network can answer. The tables
// are files beside this one.
#include "service/authentication.h"
#include "service/configuration_request.h"
#include "service/disc_requests.h"
#include "service/http_client.h"
#include "service/json_value.h"
#include "service/service_address.h"
#include "tests/support/bounded_child.h"
#include "tests/support/golden.h"
#include "tests/support/scopes.h"
#include "tests/support/scripted_server.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QFile>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <algorithm>
#include <random>
#include <set>

using namespace Qt::StringLiterals;
using service::DiscKind;
using service::HttpRequest;
using service::JsonDocument;
using service::ServiceAddress;
using service::TitlePackage;
using testsupport::ScopedEnvironment;
using testsupport::ScriptedServer;

// The HTTP library calls this function. The name servers of slow.example do not answer.
extern "C" int getaddrinfo(const char* node, const char* port, const addrinfo* hints, addrinfo** result)
{
    if (std::string_view(node) == "slow.example") {
        std::this_thread::sleep_for(std::chrono::minutes(1));
        return EAI_AGAIN;
    }
    return reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"))(node, port, hints,
                                                                                       result);
}

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

QByteArrayList linesOf(const char* name)
{
    QFile file(QStringLiteral(PLATTERSCOPE_SERVICE_TABLES "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll().trimmed().split('\n');
}

class Requests : public testing::Test {
protected:
    // The same with the log. Neither contains the key.
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
    const QByteArray stream = QByteArray::fromStdString(request.body);
    const QByteArray bytes = qUncompress(QByteArray(4, '\1') + stream);
    EXPECT_EQ(stream, qCompress(bytes, 9).mid(4)) << "after the length of the content";
    return text + "zlib stream of " + std::to_string(bytes.size()) + " bytes with SHA-256 " +
           packageOf(bytes).sha256.toHex().toStdString() + "\n\n";
}

TEST_F(Requests, AreSentAsTheServiceExpectsThem)
{
    QByteArray noise(1'500'000, '\0');  // so much that the library waits for leave to send it
    std::ranges::generate(noise, std::minstd_rand());
    for (const DiscKind kind : {DiscKind::Dvd, DiscKind::Bluray}) {
        for (const Operation operation : kOperations) {
            run(operation, kKey, packageOf(kind == DiscKind::Dvd ? QByteArray(1, '\0') : noise, kind));
        }
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

// Operation, body of a reply with status 200, and what comes of it. "%0A" is the byte 0x0A, and so on.
TEST_F(Requests, WholeRepliesAreReadOrRefused)
{
    for (const QByteArray& line : linesOf("replies.txt")) {
        const QByteArrayList row = line.split('\t');
        const auto operation = static_cast<Operation>(std::ranges::find(kNames, row.at(0)) - kNames);
        m_server.play({.body = QByteArray::fromPercentEncoding(row.at(1)).toStdString()});
        EXPECT_EQ(run(operation), row.at(2).toStdString()) << row.at(1).constData();
    }
}

// Each line of the table that is not indented is a reply; what follows a tab is sent for ever. Below are the errors that
// the four operations make of it.
TEST_F(Requests, OtherRepliesAreErrors)
{
    std::string text;
    std::size_t count = 0;
    for (const QByteArray& line : linesOf("golden/failures.txt")) {
        if (line.startsWith(' ')) { continue; }
        const QByteArrayList parts = QByteArray(line).replace("\\r", "\r").replace("\\n", "\n").split('\t');
        std::set<std::string> ends;
        for (const Operation operation : kOperations) {
            m_server.play({.rawBytes = QByteArray::fromPercentEncoding(parts[0]).toStdString(),
                           .repeated = parts.value(1).toStdString(),
                           .repeats = parts.size() > 1 ? ~0ULL : 0});
            ends.insert("    " + QDebug::toString(QString::fromStdString(run(operation))).toStdString() +
                        '\n');
            EXPECT_EQ(m_server.requests().size(), ++count)
                << "nothing is tried twice, and no redirect is followed";
        }
        text += line.toStdString() + '\n';
        for (const std::string& end : ends) {
            text += end;
        }
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/failures.txt"), "");
}

TEST_F(Requests, AreNotSentIfSomethingIsMissingOrNotAllowed)
{
    const TitlePackage whole = packageOf();
    const std::tuple<Operation, QString, TitlePackage> rows[] = {
        {kAuthenticate, u""_s, whole},
        {kAuthenticate, u"REPLACE_WITH_YOUR_API_KEY"_s, whole},
        {kAuthenticate, u"a\nb"_s, whole},
        {kAuthenticate, u"a\u2028b"_s, whole},
        {kAuthenticate, u"a\u2029b"_s, whole},
        {kFind, u""_s, whole},
        {kAdd, u""_s, whole},
        {kConfigurations, u""_s, whole},
        {kFind, u"a\u007Fb"_s, whole},
        {kAdd, u"a\u007Fb"_s, whole},
        {kConfigurations, u"a\u007Fb"_s, whole},
        {kFind, u"no bytes"_s, {DiscKind::Dvd, {}, whole.sha256}},
        {kAdd, u"a short digest"_s, {DiscKind::Dvd, "x", whole.sha256.chopped(1)}},
        {kFind, u"a long digest"_s, {DiscKind::Dvd, "x", whole.sha256 + '\0'}},
    };
    std::string text;
    for (const auto& [operation, key, package] : rows) {
        const std::string written = key.toUtf8().toPercentEncoding(" ").toStdString();
        text += kNames[operation] + (" '" + written + "': ") + run(operation, key, package) + '\n';
    }
    text += errorOf(HttpRequest()) + '\n';
    HttpRequest request = {kGet.path, false, {}, {QByteArray("X-Other: a\0b", 12)}, "Not prepared."};
    text += errorOf(request) + '\n';
    request.headers = {service::apiKeyHeader(u"key\r\nX-Other: 1"_s)};
    text += errorOf(request) + '\n';
    const ScopedEnvironment elsewhere("PLATTERSCOPE_SERVICE_URL", "http://localhost.example");
    text += errorOf(kGet) + '\n';
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/not_sent.txt"), "");
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
    const std::string timeout = "Network error: Timeout was reached";
    const auto expectEnd = [](const HttpRequest& request, const std::string& text) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(errorOf(request, {.transferSeconds = 1}), text);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    };
    const std::chrono::milliseconds interval(100);
    m_server.play({.rawBytes = head, .repeated = "X: 1\r\n", .repeats = 300, .interval = interval});
    expectEnd(kGet, timeout);
    m_server.play({.rawBytes = head + "\r\n17", .repeats = 1, .interval = std::chrono::seconds(3)});
    expectEnd(kGet, "17");
    const testsupport::LoopbackPort deaf;  // takes what fits into the system's buffers
    const ScopedEnvironment full("PLATTERSCOPE_SERVICE_URL", deaf.url());
    expectEnd({kGet.path, true, QByteArray(50'000'000, 'x'), {}}, timeout);
    const testsupport::LoopbackPort closed(false);
    const ScopedEnvironment none("PLATTERSCOPE_SERVICE_URL", closed.url());
    expectEnd(kGet, "Network error: Couldn't connect to server");
    const ScopedEnvironment slow("PLATTERSCOPE_SERVICE_URL", "https://slow.example");
    const ScopedEnvironment noProxy("https_proxy", "");
    expectEnd(kGet, timeout);
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
    const std::string values = QByteArray("0\\u002c").repeated(100'000).toStdString();  // escaped commas
    const struct {
        Operation operation;
        bool isTaken;
        std::size_t factor;  // of the reply's size: a text takes twice its bytes, beside what it is made of
        std::string begin, piece, end;
    } rows[] = {
        {kAuthenticate, true, 9, ok + R"({"UID": 1, "Username": ")", x, "\"}"},
        {kAuthenticate, false, 14, "HTTP/1.0 500 No\r\n\r\n", std::string(10'000, '\x1B'), ""},
        {kAdd, true, 3, ok, std::string(10'000, '0'), "17"},
        {kConfigurations, true, 4, ok + "[{}", title, "]"},
        {kConfigurations, false, 3, ok + "[{}", empty, "]"},
        {kConfigurations, false, 5, ok + "[{}", R"(,{"Data": "[)" + values + R"(0]"})", "]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.begin + row.piece.substr(0, 30));
        const std::size_t pieces = kReplyBytes / row.piece.size();
        m_server.play({.rawBytes = row.begin, .repeated = row.piece, .repeats = pieces, .end = row.end});
        const auto work = [&row] {
            if (std::freopen("/dev/null", "w", stderr) == nullptr) { return "no stderr"; }  // the log's
            return carryOut(row.operation, kKey, packageOf()).starts_with("error") ? "refused" : "taken";
        };
        const auto outcome = testsupport::runInChild(work, std::chrono::seconds(100));
        EXPECT_EQ(outcome.text, row.isTaken ? "taken" : "refused");
#ifndef __SANITIZE_ADDRESS__  // which keeps what is freed, and notes about all that is allocated
        EXPECT_LT(outcome.extraKiB, static_cast<std::int64_t>(row.factor * kReplyBytes / 1024));
#endif
    }
}

// A line for each configuration, and under it one for each of its titles.
TEST(Replies, ConfigurationsAreReadPieceByPiece)
{
    const auto reply = service::parseConfigurationReply(linesOf("configurations.json").join());
    ASSERT_TRUE(reply);
    QString text;
    QDebug out(&text);
    for (const service::DiscConfiguration& c : reply->configurations) {
        out << c.uid << c.discId << c.languageCode << c.addedByUsername << c.addedByUid << c.discName
            << c.paths << '\n';
        for (const service::ConfigurationTitle& t : c.titles) {
            out << "   " << t.id << t.type << (t.pathIndex ? QString::number(*t.pathIndex) : u"no path"_s)
                << t.name << t.note << t.firstChapter << t.lastChapter << '\n';
        }
    }
    const std::string lines = text.replace(u" \n "_s, u"\n"_s).toStdString();
    EXPECT_EQ(testsupport::goldenDifference(lines, "service/golden/configurations.txt"), "");
}

TEST(Replies, TooManyEntriesOrValuesAndTooDeepNestingAreRefused)
{
    const auto isTaken = [](const QByteArray& begin, qsizetype count, const QByteArray& end) {
        const QByteArray array = '[' + QByteArray("{},").repeated(count).chopped(1) + ']';
        return service::parseConfigurationReply(R"({"Disc ID": 17, "Configurations": )" + begin + array +
                                                end + '}')
            .has_value();
    };
    EXPECT_TRUE(isTaken("", service::kMaximumConfigurations, ""));
    EXPECT_FALSE(isTaken("", service::kMaximumConfigurations + 1, ""));
    for (const QByteArray member : {"paths", "titles"}) {
        const QByteArray begin = R"([{"Data": "{\")" + member + R"(\": )";
        EXPECT_TRUE(isTaken(begin, service::kMaximumEntries - 1, R"(}"}])"));
        EXPECT_FALSE(isTaken(begin, service::kMaximumEntries, R"(}"}])"));
    }
    EXPECT_FALSE(
        JsonDocument::parse('[' + QByteArray("0,").repeated(JsonDocument::kMaximumValues - 1) + "0]"));
    EXPECT_TRUE(JsonDocument::parse(QByteArray(900, '[') + QByteArray(900, ']')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(2000, '[') + QByteArray(2000, ']')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(5'000'000, '[')));
    EXPECT_TRUE(JsonDocument::parse(QByteArrayView("{}garbage", 2))) << "a text need not end with a NUL";
}

// Origin, host and whether it is this computer; or why the address is refused. The host becomes the name of a directory
// under the home directory as well.
TEST(ServiceAddress, IsAnOriginThatIsSecureOrThisComputers)
{
    for (const QByteArray& line : linesOf("addresses.txt")) {
        const QByteArrayList row = line.split('\t');
        const ServiceAddress address =
            service::parseServiceAddress(QString::fromUtf8(QByteArray::fromPercentEncoding(row.value(0))));
        const QString accepted =
            address.origin + u' ' + address.host + (address.isLoopback ? u" loopback"_s : u""_s);
        const QString judgement =
            address.problem.english() + (address.isUsable() ? accepted : address.origin + address.host);
        EXPECT_EQ(judgement.toStdString(), row.value(1).toStdString()) << row.value(0).data();
    }
    const ScopedEnvironment none("PLATTERSCOPE_SERVICE_URL", "");
    EXPECT_TRUE(service::currentServiceAddress().isUsable()) << "the address that is compiled in";
}

}  // namespace
