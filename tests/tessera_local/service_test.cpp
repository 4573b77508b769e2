// The service as its users meet it, as a process, and within limits that a test can meet: requests and the status of
// their replies, what it keeps, what it survives, how it ends.
#include "tests/support/database.h"
#include "tests/support/golden.h"
#include "tests/support/local_service.h"
#include "tests/support/temporary_folder.h"
#include "tools/tessera_local/options.h"
#include "tools/tessera_local/server.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QtEndian>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::string_literals;
using testsupport::goldenDifference;

namespace tessera_local {

namespace {

// Sends whatever bytes it is given.
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

std::string statusOf(const std::string& reply)
{
    return reply.starts_with("HTTP/1.1 ") ? reply.substr(9, 3) : reply.empty() ? "---" : reply;
}

std::string bodyOf(const std::string& reply)
{
    return reply.find("\r\n\r\n") == std::string::npos ? "" : reply.substr(reply.find("\r\n\r\n") + 4);
}

// With the first `part` replaced, if there is one.
std::string replaced(std::string text, const std::string& part, const std::string& with)
{
    return text.find(part) == std::string::npos ? text : text.replace(text.find(part), part.size(), with);
}

// With the length of the body instead of "#".
std::string sized(const std::string& request)
{
    return replaced(request, "Length: #", "Length: " + std::to_string(bodyOf(request).size()));
}

// `start` is the method and the target. The length of the body is still to be set: sized().
std::string request(const std::string& start,
                    const std::string& headers = "Host: localhost\r\napiKey: alice-key\r\n",
                    const std::string& body = {})
{
    return start + " HTTP/1.1\r\n" + headers + "Content-Length: #\r\n\r\n" + body;
}

// A form as a browser submits it.
std::string form(const std::string& body, const std::string& target = "/tessera/dvd/new/?uid=1")
{
    return request("POST " + target,
                   "Host: localhost\r\nOrigin: http://localhost\r\nSec-Fetch-Site: same-origin\r\n"
                   "Content-Type: application/x-www-form-urlencoded\r\n",
                   body);
}

// A package as far as the service looks into it; `statedBytes` overrides the length that its header states.
std::string package(const std::string& kind, const std::string& chunks, std::uint64_t statedBytes = 0)
{
    std::string length(8, '\0');
    qToBigEndian<quint64>(statedBytes != 0 ? statedBytes : 32 + chunks.size(), length.data());
    const std::string magic = kind == "dvd" ? "PSTP-DVD"s : "PSTPBD\0\1"s;
    return magic + "\0\1\0\x20\0\0\0\0"s + length + "\0\0\0\4\0\0\0\0"s + chunks;
}

std::string deflated(const std::string& bytes)
{
    return qCompress(QByteArray::fromStdString(bytes)).mid(4).toStdString();  // without Qt's length
}

std::string sha256Of(const std::string& bytes)
{
    return QCryptographicHash::hash(QByteArrayView(bytes), QCryptographicHash::Sha256).toHex().toStdString();
}

// An upload of the package `bytes` to "/api/tessera/KIND/ACTION/", which may be sent as another stream than its own.
std::string upload(const std::string& kind, const std::string& action, const std::string& bytes,
                   const std::optional<std::string>& stream = {})
{
    return request("POST /api/tessera/" + kind + "/" + action + "/",
                   "apiKey: alice-key\r\nContent-Type: application/vnd.platterscope." + kind +
                       "-title-package\r\nContent-Encoding: deflate\r\nX-Platterscope-Package-SHA256: " +
                       sha256Of(bytes) + "\r\n",
                   stream ? *stream : deflated(bytes));
}

// Bytes that hardly deflate, so that their stream spans several windows of the inflation.
std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::ranges::generate(bytes, std::minstd_rand());
    return bytes;
}

// Replaces the escapes of a table: \r, \n, \0, and {x*100} for a hundred times "x".
std::string unescaped(QString text)
{
    static const QRegularExpression repeat(u"\\{(.+)\\*(\\d+)\\}"_s);
    if (const auto match = repeat.match(text); match.hasMatch()) {
        text.replace(match.captured(), match.captured(1).repeated(match.captured(2).toInt()));
    }
    text.replace("\\r"_L1, "\r"_L1).replace("\\n"_L1, "\n"_L1).replace("\\0"_L1, QString(QChar(0)));
    return text.toStdString();
}

// The lines of a reply that matter beside the problems of a form: redirection, notices, typed and chosen values, and data.
const std::regex kDetails("^Location: |^<li>|id=\"(saved|problems)\"| value=\"typed\"| autofocus| selected| "
                          "disabled|Entry 20|^[\\[{0-9]");

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

    // A row is "STATUS | NAME | PART -> OTHER": the request NAME with its PART replaced; without "->" its "*" is
    // replaced. The problems of a form are below its row, and if `isDetailed` what else matters of the reply. "sql" runs
    // a statement on the database, and "kill" ends the service and starts another. Sends the requests of a table, and
    // compares the table with what the replies make of it.
    void send(const std::string& table, const std::map<std::string, std::string>& requests,
              bool isDetailed = false)
    {
        startWithDiscs();
        std::ifstream file(GOLDEN_DIR + ("/" + table));
        std::ostringstream actual;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(' ')) { continue; }
            const QStringList row = QString::fromStdString(line).split(" | "_L1);
            if (row[0] == "kill"_L1) {
                EXPECT_EQ(m_service->stop(SIGKILL), -1);
                start();
            }
            if (row[0] == "kill"_L1 || row[0] == "sql"_L1) {
                const std::string value = row.size() > 1 ? sql(row[1].toStdString()) : "";
                actual << line << '\n' << (value.empty() ? "" : "    " + value + '\n');
                continue;
            }
            const QStringList change = row.value(2).split(" -> "_L1);
            const QString part = change.size() == 2 ? change[0] : u"*"_s;
            const std::string& request = requests.at(row[1].toStdString());
            const std::string reply = ask(
                row.size() < 3 ? request : replaced(request, part.toStdString(), unescaped(change.last())));
            const bool isPage = bodyOf(reply).starts_with("<!DOCTYPE html>");
            actual << statusOf(reply) << (isPage ? " page" : "") << line.substr(line.find(" | ")) << '\n';
            EXPECT_EQ(reply.find("X-Injected"), std::string::npos) << line;
            EXPECT_TRUE(statusOf(reply) < "400" || !bodyOf(reply).empty()) << line;
            std::istringstream lines(reply);
            while (std::getline(lines, line)) {
                if (!isDetailed && line.starts_with("<li>")) {
                    actual << "    " << line.substr(13, line.size() - 22) << '\n';
                } else if (isDetailed && std::regex_search(line, kDetails)) {
                    actual << "    " << line.substr(0, line.find('\r')) << '\n';
                }
            }
        }
        EXPECT_EQ(goldenDifference(actual.str(), "tessera_local/golden/" + table), "");
    }
    // The first value that a statement on the database gives.
    std::string sql(const std::string& statement) const
    {
        return testsupport::firstValue(m_database, statement);
    }

    testsupport::TemporaryFolder m_folder;
    std::string m_database = m_folder / "service.db";
    std::unique_ptr<testsupport::LocalService> m_service;
};
// Each line of the table that is not indented is a command line; the result is below it. "%20" is a blank.
TEST(Options, AreReadOrRefusedWithoutTellingAKey)
{
    const testsupport::TemporaryFolder folder;
    std::filesystem::current_path(folder.path());
    std::ofstream("keys") << "# a comment=nobody\n\nfile==key==carol\r\nlast=d\xC3\xA4ve";
    std::ofstream("bad") << "good=alice\nSECRET\n";
    std::string text;
    std::ifstream table(GOLDEN_DIR "/options.txt");
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with(' ')) { continue; }
        text += line + '\n';
        std::vector<std::string> arguments{"--database", "none"};
        for (const QByteArray& word : QByteArray::fromStdString(line).split(' ')) {
            arguments.push_back(QByteArray::fromPercentEncoding(word).toStdString());
        }
        const auto [action, options, error] = parseCommandLine(arguments);
        constexpr const char* kActions[] = {"serve", "show help", "show version", "refuse"};
        text += std::string("    ") + kActions[static_cast<int>(action)] + (error.empty() ? "" : ": ") +
                error + '\n';
        EXPECT_EQ(error.find("SECRET"), std::string::npos) << error;
        if (action != CommandLine::Action::Serve) { continue; }
        text +=
            "    " + options.databasePath + ' ' + options.host + ' ' + std::to_string(options.port) + '\n';
        for (const User& user : options.users) {
            text += "    " + std::to_string(user.uid) + ' ' + user.name + ' ' + user.key + '\n';
        }
    }
    std::filesystem::current_path("/");
    EXPECT_EQ(goldenDifference(text, "tessera_local/golden/options.txt"), "");
}

TEST_F(Service, Requests)
{
    const std::string bytes = package("dvd", noise(300));
    const std::string stream = deflated(bytes);
    const std::string end = stream.substr(0, stream.size() - 1);
    const auto sending = [&](const std::string& sent) { return upload("dvd", "find", bytes, sent); };
    const auto finding = [](const char* kind, const std::string& sent) { return upload(kind, "find", sent); };
    send("requests.txt",
         {{"bytes", "*"},
          {"get", request("GET *")},
          {"user", request("POST /api/tessera/user/")},
          {"large", request("POST /api/tessera/dvd/add/", "*\r\n", std::string(3'000'000, 'x'))},
          {"page", request("GET /tessera/dvd/new/?uid=1")},
          {"save", form("disc_name=Disc&language_code=en")},
          {"find", finding("dvd", bytes)},
          {"digest", replaced(finding("dvd", bytes), sha256Of(bytes), "SHA256")},
          {"stream of nothing", sending("")},
          {"half a stream", sending(stream.substr(0, stream.size() / 2))},
          {"stream without checksum", sending(stream.substr(0, stream.size() - 4))},
          {"stream without last byte", sending(end)},
          {"stream with wrong checksum", sending(end + static_cast<char>(stream.back() ^ 1))},
          {"stream and one byte", sending(stream + '\n')},
          {"two streams", sending(stream + stream)},
          {"no stream", sending(bytes)},
          {"stream in a stream", sending(deflated(stream))},
          {"no chunks", finding("dvd", package("dvd", ""))},
          {"one window", finding("dvd", package("dvd", noise(65'504)))},
          {"one window and a byte", finding("dvd", package("dvd", noise(65'505)))},
          {"many windows", finding("dvd", package("dvd", noise(300'000)))},
          {"zeros", finding("bluray", package("bluray", std::string(5'000'000, '\0')))},
          {"DVD as Blu-ray", finding("bluray", bytes)},
          {"Blu-ray as DVD", finding("dvd", package("bluray", "chunks"))},
          {"states a byte less", finding("dvd", package("dvd", "chunks", 37))},
          {"states a byte more", finding("dvd", package("dvd", "chunks", 39))},
          {"states most", finding("dvd", package("dvd", "chunks", ~std::uint64_t{0}))},
          {"header cut short", finding("dvd", package("dvd", "").substr(0, 31))}});
    EXPECT_EQ(sql("SELECT count(*) FROM discs"), "2");
    EXPECT_NE(ask(request("PUT /tessera/dvd/new/")).find("\r\nAllow: GET, POST\r\n"), std::string::npos);
    EXPECT_EQ(m_service->stop(), 0);  // a line may follow its reply
    const std::string log = m_service->log();
    for (const char* line :
         {": GET /?[2J? 404\n", ": POST /api/tessera/user/ 401\n", ": POST /api/tessera/user/ 200\n"}) {
        EXPECT_NE(log.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(log.find("alice"), std::string::npos);
    EXPECT_EQ(log.find("UNKNOWN"), std::string::npos);
}

TEST_F(Service, Forms)
{
    send("forms.txt", {{"form", form("*")},
                       {"disc", form("disc_name=D&language_code=en&*")},
                       {"title", form("disc_name=D&language_code=en&title_1_id=1&title_1_*")},
                       {"Blu-ray", form("disc_name=D&language_code=en&*", "/tessera/bluray/new/?uid=2")}});
}

// What was typed comes back as text. The golden file has no style; its hash is in the headers.
TEST_F(Service, TypedMarkup)
{
    startWithDiscs();
    const std::string evil = "%22%3E%3Cscript%3Ealert(1)%3C/script%3E%26%27%00%251%2";
    std::string fields = "disc_name=" + evil + "&language_code=" + evil;
    for (const std::string field : {"id", "type", "name", "file", "note", "first_chapter", "last_chapter"}) {
        fields.append("&title_1_" + field).append("=" + evil);
    }
    std::string reply = ask(form(fields));
    std::erase(reply, '\r');
    reply.erase(reply.find("<style>"), reply.find("</style>") - reply.find("<style>"));
    EXPECT_EQ(goldenDifference(reply, "tessera_local/golden/typed_markup.txt"), "");
}

// Limits small enough to be met in a test, of a server within the test's own process.
TEST(RequestLimits, AreKept)
{
    const std::chrono::milliseconds soon{50};
    const std::string bytes = package("dvd", std::string(200'000, 'c'));
    const std::string stream = deflated(bytes);
    const std::string find = sized(upload("dvd", "find", bytes));
    const std::string save = sized(form(std::string(100, 'x')));
    const std::string endless =
        replaced(save.substr(0, save.size() - 100), "Content-Length: 100", "Transfer-Encoding: chunked") +
        unescaped(u"{2710\\r\\n"_s + QString(10'000, u'x') + u"\\r\\n*1000}"_s);
    const std::tuple<const char*, Limits, std::string, const char*> rows[] = {
        {"stalls in its headers", {.headerTime = soon}, "POST / HTTP/1.1\r\napiKey: ", "400"},
        {"stalls in its upload", {.bodyTime = soon}, find.substr(0, find.size() - 1), "400"},
        {"stalls in its form", {.formTime = soon}, save.substr(0, save.size() - 1), "400"},
        {"form without end", {.formBytes = 100'000}, endless, "413"},
        {"headers", {.headerBytes = 2000}, "GET / HTTP/1.1\r\nX: " + std::string(3000, 'x'), "400"},
        {"just allowed", {.bodyBytes = stream.size(), .packageBytes = bytes.size()}, find, "200"},
        {"stream", {.bodyBytes = stream.size() - 1}, find, "413"},
        {"package", {.packageBytes = bytes.size() - 1}, find, "413"},
        {"package of another kind", {.packageBytes = 99'999}, upload("bluray", "find", bytes), "413"},
        {"cut short", {.packageBytes = 99'999}, upload("dvd", "find", bytes, stream.substr(0, 200)), "413"},
    };
    const testsupport::TemporaryFolder folder;
    Store store(folder / "db");
    store.addDisc(DiscKind::Dvd, sha256Of(bytes), std::array<std::uint8_t, 1>{});
    for (const auto& [name, limits, request, status] : rows) {
        Server server(store, {{1, "alice", "alice-key"}}, "", limits);
        const Client client(server.bind("127.0.0.1", 0));
        std::thread serving([&server] { server.serve(); });
        client.send(sized(request));
        EXPECT_EQ(statusOf(client.receiveAll()), status) << name;
        server.stop();
        serving.join();
    }
}

// After SIGKILL: what was acknowledged is kept, however the process ends. A form that cannot be kept is given back.
TEST_F(Service, KeepsDiscsAndConfigurations)
{
    const auto sending = [](const std::string& action, const std::string& chunks) {
        return upload("dvd", action, package("dvd", chunks));
    };
    send("kept.txt",
         {{"find one", sending("find", "one")},
          {"find other", sending("find", "other")},
          {"add one", sending("add", "one")},
          {"add other", sending("add", "other")},
          {"add Blu-ray", upload("bluray", "add", package("bluray", "next"))},
          {"user", request("POST /api/tessera/user/")},
          {"get", request("GET *")},
          {"form", form("*")},
          {"same form", form("disc_name=typed&language_code=en")},
          {"Blu-ray form", form("disc_name=typed&language_code=en", "/tessera/bluray/new/?uid=2")}},
         true);
    EXPECT_EQ(std::filesystem::status(m_database).permissions(), std::filesystem::perms{0600});
    EXPECT_EQ(sql("SELECT package FROM formerly_discs WHERE id = 3"), deflated(package("dvd", "other")));
    EXPECT_NE(m_service->log().find("tessera_local: error: database: no such table: discs\n"),
              std::string::npos);
}

TEST_F(Service, RefusesABombWithoutHoldingIt)
{
    start();
    // 1 GiB and one byte of zeros, deflated piece by piece.
    std::string zeros(1 << 20, '\0');
    std::string stream(8 << 20, '\0');
    z_stream deflater{};
    ASSERT_EQ(deflateInit(&deflater, 1), Z_OK);
    deflater.next_out = reinterpret_cast<Bytef*>(stream.data());
    deflater.avail_out = static_cast<uInt>(stream.size());
    for (int piece = 0; piece <= 1024; ++piece) {
        deflater.next_in = reinterpret_cast<Bytef*>(zeros.data());
        deflater.avail_in = piece < 1024 ? static_cast<uInt>(zeros.size()) : 1;
        ASSERT_GE(deflate(&deflater, piece < 1024 ? Z_NO_FLUSH : Z_FINISH), Z_OK);
    }
    stream.resize(deflater.total_out);
    deflateEnd(&deflater);
    EXPECT_EQ(status(upload("dvd", "find", "", stream)), "413");
    // The line "VmHWM: ... kB" holds the most memory that the process ever had.
    std::ifstream file("/proc/" + std::to_string(m_service->processId()) + "/status");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_LT(std::stol(text.substr(text.find("VmHWM:") + 6)), 512 * 1024);
}

TEST_F(Service, EndsAtASignalEvenWhileClientsAreWaitedFor)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        start({"--latest-version", "1.3.0"});
        EXPECT_EQ(m_service->output(), "tessera_local: listening on " + m_service->baseUrl() + "\n");
        const Client silent(m_service->port());
        const Client slow(m_service->port());
        slow.send(replaced(upload("dvd", "add", ""), "#", "99"));
        EXPECT_EQ(body(request("POST /api/tessera/user/")),
                  R"({"LatestVersion":"1.3.0","UID":1,"Username":"alice"})")
            << "the two others are with their threads by now";
        EXPECT_EQ(m_service->stop(signal, std::chrono::seconds(4)), 0) << m_service->log();
    }
}

TEST_F(Service, PrintsWhyItDoesNotStart)
{
    start();
    std::ofstream(m_folder / "text") << std::string(200, 'x');
    testsupport::firstValue(m_folder / "newer", "PRAGMA user_version = 2");
    testsupport::firstValue(m_folder / "newer", "PRAGMA application_id = 1414745137");
    testsupport::firstValue(m_folder / "other", "PRAGMA application_id = 5");
    const struct {
        int status;
        std::string database, argument, printed;
    } rows[] = {
        {0, "new.db", "--help", "\nA Tessera service of your own."},
        {0, "new.db", "--version", "tessera_local "},
        {2, "new.db", "--unknown", "tessera_local: Unknown option 'unknown'.\n"},
        {1, "new.db", "--port=" + std::to_string(m_service->port()), ": cannot listen on 127.0.0.1"},
        {1, ".", "--port=0", "tessera_local: cannot open '"},
        {1, "text", "--port=0", "tessera_local: database: file is not a database\n"},
        {1, "newer", "--port=0", "tessera_local: database: the file has the unknown layout version 2\n"},
        {1, "other", "--port=0", "tessera_local: database: the file belongs to another program\n"},
    };
    for (const auto& row : rows) {
        testsupport::LocalService service(TESSERA_LOCAL_EXECUTABLE, m_folder / row.database, {"k=alice"},
                                          {row.argument});
        EXPECT_FALSE(service.isReady());
        EXPECT_EQ(service.stop(0), row.status) << row.printed;
        EXPECT_NE((service.output() + service.log()).find(row.printed), std::string::npos) << service.log();
    }
}

}  // namespace

}  // namespace tessera_local
