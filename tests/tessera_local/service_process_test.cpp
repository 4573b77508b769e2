// The service as a process: what it survives, how it ends, and when it does not start.
#include "tests/support/fault_table.h"
#include "tests/tessera_local/raw_client.h"
#include "tests/tessera_local/service_fixture.h"

#include <signal.h>
#include <sys/resource.h>
#include <zlib.h>

#include <fstream>
#include <memory>

namespace tessera_local {

namespace {

struct MalformedRequest {
    std::string request;
    std::string replyStart;  // empty: none is owed
};

std::vector<MalformedRequest> malformedRequests()
{
    const std::string post = "POST /api/tessera/dvd/add/ HTTP/1.1\r\napiKey: alice-key\r\n";
    const std::string upload = post + "Content-Type: application/vnd.platterscope.dvd-title-package\r\n"
                                      "Content-Encoding: deflate\r\n";
    std::string manyHeaders = "GET / HTTP/1.1\r\n";
    for (int i = 0; i < 100'000; ++i) {
        manyHeaders += "X: y\r\n";
    }
    return {
        {"", ""},
        {"\r\n\r\n", "HTTP/1.1 400 "},
        {std::string("\0\1\2\r\n\r\n", 7), "HTTP/1.1 400 "},
        {"GET /\r\n\r\n", "HTTP/1.1 400 "},
        {std::string(1'000'000, 'x'), ""},
        {"GET /" + std::string(20'000, 'x') + " HTTP/1.1\r\n\r\n", "HTTP/1.1 414 "},
        {"GET /" + std::string(8'000, 'x') + " HTTP/1.1\r\n\r\n", "HTTP/1.1 404 "},
        {"GET / HTTP/1.1\r\nX: " + std::string(1'000'000, 'x'), "HTTP/1.1 400 "},
        {manyHeaders, "HTTP/1.1 400 "},
        {"BREW / HTTP/1.1\r\n\r\n", "HTTP/1.1 400 "},
        {"GET /%1B%5B2J%00?apiKey=alice-key HTTP/1.1\r\n\r\n", "HTTP/1.1 404 "},
        {"PRI * HTTP/2.0\r\n\r\n", "HTTP/1.1 4"},
        {"GET /api/tessera/user/ HTTP/1.1\r\napiKey: alice-key\r\n\r\n", "HTTP/1.1 405 "},
        {"PUT /api/tessera/dvd/add/ HTTP/1.1\r\nContent-Length: 999999999999\r\n\r\n", "HTTP/1.1 405 "},
        {"POST /nothing HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFF\r\nx",
         "HTTP/1.1 404 "},
        {"POST /api/tessera/user/ HTTP/1.1\r\napiKey: alice-key\r\n\r\n", "HTTP/1.1 200 "},
        {upload + "\r\n", "HTTP/1.1 411 "},
        {upload + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFF\r\nx", "HTTP/1.1 411 "},
        {upload + "Content-Length: 18446744073709551615\r\n\r\nx", "HTTP/1.1 413 "},
        {upload + "Content-Length: 99999999999999999999\r\n\r\nx", "HTTP/1.1 413 "},
        {upload + "Content-Length: -1\r\n\r\nx", "HTTP/1.1 413 "},
        {upload + "Content-Length: 10\r\n\r\nx", "HTTP/1.1 400 "},
        {"GET / HTTP/1.1\r\nRange: bytes=99999999999999999999-\r\n\r\n", "HTTP/1.1 4"},
        {"GET / HTTP/1.1\r\nRange: bytes=" + std::string(8'000, '1') + "\r\n\r\n", "HTTP/1.1 4"},
        {upload + "Expect: 100-continue\r\nContent-Length: 1\r\n\r\nx", "HTTP/1.1 100 "},
        {"POST /api/tessera/dvd/add/ HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 1\r\n\r\n",
         "HTTP/1.1 401 "},
        {upload + "Content-Length: 1\r\nContent-Length: 5\r\n\r\nx", "HTTP/1.1 411 "},
        {upload + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "HTTP/1.1 411 "},
    };
}

// Well-formed requests that want what they must not get. None of them may change a thing or be given a header.
std::vector<MalformedRequest> insolentRequests()
{
    const auto get = [](const std::string& target) {
        return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\napiKey: alice-key\r\n\r\n";
    };
    return {
        {get("/../../../../etc/passwd"), "HTTP/1.1 404 "},
        {get("/%2e%2e/%2e%2e/%2e%2e/etc/passwd"), "HTTP/1.1 404 "},
        {get("//etc/passwd"), "HTTP/1.1 404 "},
        {get("/tessera/dvd/new/../../../../etc/passwd?uid=1"), "HTTP/1.1 404 "},
        {get("/api/tessera/dvd/configurations/get/?discId=1%0d%0aX-Injected:%20yes"), "HTTP/1.1 400 "},
        {get("/tessera/dvd/new/?uid=1%0d%0aX-Injected:%20yes"), "HTTP/1.1 400 "},
        {get("/%0d%0aX-Injected:%20yes"), "HTTP/1.1 404 "},
        {get("/api/tessera/dvd/configurations/get/?discId=1%20OR%20TRUE"), "HTTP/1.1 400 "},
        {get("/api/tessera/dvd/configurations/get/?discId=1;DROP%20TABLE%20discs"), "HTTP/1.1 400 "},
        {get("/tessera/dvd/new/?uid=1'%20OR%20'1'='1"), "HTTP/1.1 400 "},
        {"POST /api/tessera/user/ HTTP/1.1\r\napiKey: ' OR ''='\r\nContent-Length: 0\r\n\r\n",
         "HTTP/1.1 403 "},
        {"POST /api/tessera/dvd/find/ HTTP/1.1\r\napiKey: alice-key\r\nContent-Encoding: deflate\r\n"
         "Content-Type: application/vnd.platterscope.dvd-title-package\r\nContent-Length: 1\r\n"
         "X-Platterscope-Package-SHA256: '; DROP TABLE discs; --\r\n\r\nx",
         "HTTP/1.1 400 "},
    };
}

}  // namespace

TEST_F(Service, RefusesABombWithoutHoldingIt)
{
    start();
    // 1 GiB and one byte of zeros, deflated piece by piece.
    z_stream deflater{};
    ASSERT_EQ(deflateInit(&deflater, 1), Z_OK);
    const std::string zeros(1 << 20, '\0');
    std::string stream(8 << 20, '\0');
    deflater.next_out = reinterpret_cast<Bytef*>(stream.data());
    deflater.avail_out = static_cast<uInt>(stream.size());
    for (int piece = 0; piece <= 1024; ++piece) {
        deflater.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
        deflater.avail_in = piece < 1024 ? static_cast<uInt>(zeros.size()) : 1;
        ASSERT_GE(deflate(&deflater, piece < 1024 ? Z_NO_FLUSH : Z_FINISH), Z_OK);
    }
    stream.resize(deflater.total_out);
    deflateEnd(&deflater);
    Upload upload(DiscKind::Dvd, "");
    upload.body = stream;
    EXPECT_EQ(refusalOf(post("/find/", upload)), 413);

    // "VmHWM: ... kB": the most memory the process ever held.
    std::ifstream status("/proc/" + std::to_string(service().processId()) + "/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with("VmHWM:")) {}
    ASSERT_TRUE(line.starts_with("VmHWM:"));
    EXPECT_LT(std::stol(line.substr(6)), 512 * 1024) << line;
    testsupport::recordFault("Local service: an upload that inflates to more than 1 GiB",
                             "refused with 413, and never held in memory");
}

TEST_F(Service, OutlivesMalformedRequests)
{
    start();
    const std::vector<MalformedRequest> requests = malformedRequests();
    for (const MalformedRequest& test : requests) {
        RawClient client(service().port());
        ASSERT_TRUE(client.isConnected()) << test.request.substr(0, 80);
        client.send(test.request);
        client.finishSending();
        const std::string reply = client.receiveAll();
        EXPECT_TRUE(reply.starts_with(test.replyStart)) << test.request.substr(0, 80) << "\ngave " << reply;
        if (test.replyStart.empty()) { EXPECT_EQ(reply, ""); }
    }
    EXPECT_NE(service().log().find("tessera_local: GET /?[2J? 404\n"), std::string::npos) << service().log();
    EXPECT_TRUE(json(postUser({{"apiKey", "alice-key"}})).isObject());
    EXPECT_EQ(service().stop(), 0);
    testsupport::recordFault("Local service: a request that is malformed, endless or lies about its length",
                             "refused or dropped; the service goes on", requests.size());
}

TEST_F(Service, GivesNothingAwayAndTakesNoOrders)
{
    start();
    ASSERT_EQ(post("/add/", Upload(DiscKind::Dvd, package(DiscKind::Dvd, "one")))->body, "1");
    const std::vector<MalformedRequest> requests = insolentRequests();
    for (const MalformedRequest& test : requests) {
        RawClient client(service().port());
        client.send(test.request);
        const std::string reply = client.receiveAll();
        EXPECT_TRUE(reply.starts_with(test.replyStart)) << test.request << "\ngave " << reply;
        EXPECT_EQ(reply.find("X-Injected"), std::string::npos) << reply;
        EXPECT_EQ(reply.find("root:"), std::string::npos) << reply;
    }
    EXPECT_EQ(firstRow(database(), "SELECT count(*) FROM discs"), std::vector<std::string>{"1"});
    testsupport::recordFault(
        "Local service: a request for a file, for a header in its reply or with SQL in it",
        "refused, and nothing is changed", requests.size());
}

TEST_F(Service, OutlivesMoreConnectionsThanItMayHaveOpen)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer opens a pipe to look at an object, and takes a failure for a bad object";
#endif
    constexpr rlim_t kFilesOfTheService = 256;
    rlimit files{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &files), 0);
    const rlimit few{kFilesOfTheService, files.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);  // of this process; the service inherits it
    start();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &files), 0);
    {
        std::vector<std::unique_ptr<RawClient>> clients;
        for (rlim_t i = 0; i < kFilesOfTheService + 50; ++i) {
            clients.push_back(std::make_unique<RawClient>(service().port()));
            ASSERT_TRUE(clients.back()->isConnected());
        }
    }
    EXPECT_TRUE(json(postUser({{"apiKey", "alice-key"}})).isObject());
    EXPECT_EQ(service().stop(), 0);
    testsupport::recordFault("Local service: more connections than it may have open",
                             "answers again as soon as they end");
}

TEST_F(Service, EndsAtASignalEvenWhileClientsAreWaitedFor)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        start();
        RawClient silent(service().port());
        RawClient slow(service().port());
        ASSERT_TRUE(
            slow.send("POST /api/tessera/dvd/add/ HTTP/1.1\r\nExpect: 100-continue\r\napiKey: alice-key\r\n"
                      "Content-Type: application/vnd.platterscope.dvd-title-package\r\n"
                      "Content-Encoding: deflate\r\nContent-Length: 100\r\n\r\nx"));
        // A further request answered: the first two are with their threads by now.
        EXPECT_TRUE(json(postUser({{"apiKey", "alice-key"}})).isObject());
        EXPECT_EQ(service().stop(signal, std::chrono::seconds(4)), 0) << service().log();
    }
    testsupport::recordFault("Local service: a signal to end while clients are waited for",
                             "ends within seconds", 2);
}

TEST_F(Service, SaysWhyItCannotStart)
{
    const auto statusOf = [](const std::string& database, const std::vector<std::string>& keys,
                             const std::vector<std::string>& arguments) {
        LocalService service(kExecutable, database, keys, arguments);
        EXPECT_FALSE(service.isReady());
        const int status = service.stop(0);
        EXPECT_NE(service.log().find("tessera_local: "), std::string::npos);
        return status;
    };
    const std::vector<std::string> keys{"k=alice"};
    EXPECT_EQ(statusOf(database(), {}, {}), 2);
    EXPECT_EQ(statusOf(database(), keys, {"--unknown"}), 2);
    start();
    EXPECT_EQ(statusOf(folder().file("other.db"), keys, {"--port", std::to_string(service().port())}), 1);

    std::ofstream(folder().file("text"))
        << "this is no database, but long enough to be looked at as one" << std::string(100, '.');
    EXPECT_EQ(statusOf(folder().file("text"), keys, {}), 1);
    firstRow(folder().file("other.db"), "PRAGMA user_version = 2");
    EXPECT_EQ(statusOf(folder().file("other.db"), keys, {}), 1);
    firstRow(folder().file("other.db"), "PRAGMA application_id = 5");
    EXPECT_EQ(statusOf(folder().file("other.db"), keys, {}), 1);
}

}  // namespace tessera_local
