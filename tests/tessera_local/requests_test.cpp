// Requests and the status of their replies.
#include "tests/support/golden.h"
#include "tests/tessera_local/service_fixture.h"
#include "tools/tessera_local/server.h"

#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <sstream>
#include <thread>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

using Requests = std::map<std::string, std::string>;

// Bytes that hardly deflate, so that their stream spans several windows of the inflation.
std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    std::generate(bytes.begin(), bytes.end(),
                  [&state] { return static_cast<char>((state = state * 1664525 + 1013904223) >> 24); });
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

class RequestTable : public Service {
protected:
    // A row is "STATUS | NAME | PART -> OTHER": the request NAME with its PART replaced; without "->" its "*" is
    // replaced. The problems of a form stand below its row. Sends the requests of a table, and compares the table with
    // what the replies make of it.
    void send(const std::string& table, const Requests& requests)
    {
        startWithDiscs();
        std::ifstream file(GOLDEN_DIR + ("/" + table));
        std::ostringstream actual;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(' ')) { continue; }
            const QStringList row = QString::fromStdString(line).split(" | "_L1);
            std::string request = requests.at(row[1].toStdString());
            if (row.size() == 3) {
                const QStringList change = row[2].split(" -> "_L1);
                const QString part = change.size() == 2 ? change[0] : u"*"_s;
                request = replaced(request, part.toStdString(), unescaped(change.last()));
            }
            const std::string reply = ask(request);
            const bool isPage = bodyOf(reply).starts_with("<!DOCTYPE html>");
            actual << statusOf(reply) << (isPage ? " page" : "") << line.substr(line.find(" | ")) << '\n';
            EXPECT_EQ(reply.find("X-Injected"), std::string::npos) << line;
            EXPECT_TRUE(statusOf(reply) < "400" || !bodyOf(reply).empty()) << line;
            std::istringstream lines(reply);
            while (std::getline(lines, line)) {
                if (line.starts_with("<li>")) {
                    actual << "    " << line.substr(13, line.size() - 22) << '\n';
                }
            }
        }
        EXPECT_NE(actual.str(), "");
        EXPECT_EQ(testsupport::goldenDifference(actual.str(), "tessera_local/golden/" + table), "");
    }
};

}  // namespace

TEST_F(RequestTable, Requests)
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

TEST_F(RequestTable, Forms)
{
    send("forms.txt", {{"form", form("*")},
                       {"disc", form("disc_name=D&language_code=en&*")},
                       {"title", form("disc_name=D&language_code=en&title_1_id=1&title_1_*")},
                       {"Blu-ray", form("disc_name=D&language_code=en&*", "/tessera/bluray/new/?uid=2")}});
}

// What was typed comes back as text. The golden file has no style; its hash is in the headers.
TEST_F(RequestTable, TypedMarkup)
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
    EXPECT_EQ(testsupport::goldenDifference(reply, "tessera_local/golden/typed_markup.txt"), "");
    const std::string more = body(form("title_198_type=1&action=more"));
    for (const char* part :
         {"<option value=\"1\" selected>Movie<", " id=\"title_199_id\" name=\"title_199_id\" autofocus ",
          "<legend>Entry 200<", " disabled>Add More Titles<"}) {
        EXPECT_NE(more.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(more.find("<legend>Entry 201<"), std::string::npos);
}

// Limits small enough to be met in a test, of a server within the test's own process.
TEST(RequestLimits, AreKept)
{
    struct Row {
        const char* name;
        Limits limits;
        std::string request;
        const char* status;
    };
    const std::chrono::milliseconds soon{50};
    const std::string bytes = package("dvd", std::string(200'000, 'c'));
    const std::string stream = deflated(bytes);
    const std::string find = sized(upload("dvd", "find", bytes));
    const std::string save = sized(form(std::string(100, 'x')));
    const std::string endless =
        replaced(save.substr(0, save.size() - 100), "Content-Length: 100", "Transfer-Encoding: chunked") +
        unescaped(u"{2710\\r\\n"_s + QString(10'000, u'x') + u"\\r\\n*1000}"_s);
    const std::vector<Row> rows{
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
    for (const Row& row : rows) {
        Server server(store, {{1, "alice", "alice-key"}}, "", row.limits);
        const Client client(server.bind("127.0.0.1", 0));
        std::thread serving([&server] { server.serve(); });
        client.send(sized(row.request));
        EXPECT_EQ(statusOf(client.receiveAll()), row.status) << row.name;
        server.stop();
        serving.join();
    }
}

}  // namespace tessera_local
