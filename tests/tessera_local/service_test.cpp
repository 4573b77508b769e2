// The service as its users meet it, and as a process: what it keeps, what it survives, how it ends.
#include "tests/support/golden.h"
#include "tests/tessera_local/service_fixture.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <zlib.h>

#include <set>
#include <thread>

namespace tessera_local {

TEST_F(Service, PrintsItsAddressAndKnowsItsUsers)
{
    start({"--latest-version", "1.3.0"});
    EXPECT_EQ(m_service->output(), "tessera_local: listening on " + m_service->baseUrl() + "\n");
    EXPECT_EQ(body(request("POST /api/tessera/user/", "apiKey: alice-key\r\nRange: bytes=0-0\r\n")),
              R"({"LatestVersion":"1.3.0","UID":1,"Username":"alice"})");
    start();
    EXPECT_EQ(body(request("POST /api/tessera/user/", "apiKey: bob-key\r\n")),
              "{\"UID\":2,\"Username\":\"b\xC3\xB6z\"}");
}

// SIGKILL: what was acknowledged is kept, however the process ends.
TEST_F(Service, KeepsDiscsAndConfigurations)
{
    startWithDiscs();
    const std::string dvd = package("dvd", "one");
    const std::string other = package("dvd", "other");
    EXPECT_EQ(body(upload("dvd", "find", other)), R"({"Configurations":[],"Disc ID":null})");
    EXPECT_EQ(body(upload("dvd", "add", dvd)), "1");
    EXPECT_EQ(body(upload("dvd", "add", other)), "3");
    const std::string address = "/tessera/dvd/new/?uid=1";
    const std::string saved = ask(
        form("disc_name=%22D%22%27%29%3B+DROP+TABLE+discs&language_code=pt-BR&title_1_id=008&title_1_type=2&"
             "title_1_file=b&title_1_name=%F0%9F%8E%AC&title_1_note=x%0D%0Ay%0Dz&title_1_first_chapter=1&"
             "title_1_last_chapter=12&title_3_id=1&title_4_id=7&title_4_file=a&title_5_id=7&title_5_file=b&"
             "title_6_type=0",
             address));
    EXPECT_EQ(statusOf(saved), "303");
    EXPECT_NE(saved.find("\r\nLocation: " + address + "&saved=1\r\n"), std::string::npos);
    EXPECT_NE(body(request("GET " + address + "&saved=1")).find("id=\"saved\" role=\"status\""),
              std::string::npos);
    EXPECT_EQ(body(request("GET " + address + "&saved=2")).find("id=\"saved\""), std::string::npos)
        << "there is none";
    sql("INSERT INTO configurations VALUES (7, 2, 'de', 'x', 3, ''), (9, 1, '', 'd\xC3\xA4ve', 4, 'any "
        "text')");

    EXPECT_EQ(m_service->stop(SIGKILL), -1);
    struct stat file {};
    ASSERT_EQ(::stat(m_database.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600U);
    EXPECT_EQ(sql("SELECT package FROM discs WHERE id = 3"), deflated(other));
    EXPECT_EQ(sql("PRAGMA user_version") + ' ' + sql("PRAGMA application_id"), "1 1414745137");
    start();
    EXPECT_EQ(
        testsupport::goldenDifference(body(upload("dvd", "find", dvd)), "tessera_local/golden/find.json"),
        "");
    EXPECT_EQ("{\"Configurations\":" + body(request("GET /api/tessera/dvd/configurations/get/?discId=1")) +
                  ",\"Disc ID\":1}",
              body(upload("dvd", "find", dvd)));
    EXPECT_EQ(body(upload("bluray", "add", package("bluray", "next"))), "4");
}

TEST_F(Service, GivesOneIdToAPackageThatManyAddAtOnce)
{
    start();
    std::array<std::string, 24> ids;
    std::vector<std::thread> threads;
    for (std::string& id : ids) {
        threads.emplace_back([this, &id] { id = body(upload("dvd", "add", package("dvd", "one"))); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::set(ids.begin(), ids.end()), std::set<std::string>{"1"});
}

TEST_F(Service, GivesBackAFormThatItCannotKeep)
{
    startWithDiscs();
    const std::string typed = form("disc_name=typed&language_code=en");
    const auto expectBack = [&](const char* status) {
        const std::string reply = ask(typed);
        EXPECT_EQ(statusOf(reply), status);
        EXPECT_NE(reply.find("<div id=\"problems\""), std::string::npos);
        EXPECT_NE(reply.find(" value=\"typed\""), std::string::npos);
    };
    const std::string room =
        std::to_string((4 << 20) - sizeof R"({"disc_name":"typed","paths":[],"titles":[]})" + 1);
    sql("INSERT INTO configurations VALUES (1, 1, '', '', 1, substr(hex(zeroblob(2097152)), 1, " + room +
        "))");
    EXPECT_EQ(status(typed), "303") << "4 Mi characters";
    sql("DELETE FROM configurations WHERE uid = 2");
    sql("UPDATE configurations SET data = data || 'x'");
    expectBack("409");
    sql("UPDATE configurations SET data = ''");
    sql("WITH RECURSIVE n AS (SELECT 2 AS uid UNION SELECT uid + 1 FROM n WHERE uid < 499)"
        " INSERT INTO configurations SELECT uid, 1, '', '', 1, '' FROM n");
    EXPECT_EQ(status(typed), "303") << "the 500th";
    expectBack("409");
    EXPECT_EQ(status(form("disc_name=typed&language_code=en", "/tessera/bluray/new/?uid=2")), "303");
    sql("DROP TABLE configurations");
    expectBack("503");
    sql("DROP TABLE discs");
    EXPECT_EQ(status(upload("dvd", "add", package("dvd", "new"))), "500");
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

TEST_F(Service, OutlivesMoreConnectionsThanItMayHaveOpen)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer opens a pipe to look at an object, and takes a failure for a bad object";
#endif
    start();
    const rlimit few{256, 256};
    ASSERT_EQ(::prlimit(static_cast<pid_t>(m_service->processId()), RLIMIT_NOFILE, &few, nullptr), 0);
    {
        std::vector<std::unique_ptr<Client>> clients(300);
        for (auto& client : clients) {
            client = std::make_unique<Client>(m_service->port());
        }
    }
    EXPECT_EQ(status(request("POST /api/tessera/user/")), "200");
}

TEST_F(Service, EndsAtASignalEvenWhileClientsAreWaitedFor)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        start();
        const Client silent(m_service->port());
        const Client slow(m_service->port());
        slow.send(replaced(upload("dvd", "add", ""), "#", "99"));
        EXPECT_EQ(status(request("POST /api/tessera/user/")), "200")
            << "the two others are with their threads by now";
        EXPECT_EQ(m_service->stop(signal, std::chrono::seconds(4)), 0) << m_service->log();
    }
}

TEST_F(Service, PrintsWhyItDoesNotStart)
{
    const auto run = [](const std::string& database, const std::string& argument,
                        const std::string& printed) {
        testsupport::LocalService service(TESSERA_LOCAL_EXECUTABLE, database, {"k=alice"}, {argument});
        EXPECT_FALSE(service.isReady());
        const int status = service.stop(0);
        EXPECT_NE((service.output() + service.log()).find(printed), std::string::npos) << service.log();
        return status;
    };
    EXPECT_EQ(run(m_database, "--help", "\nA Tessera service of your own."), 0);
    EXPECT_EQ(run(m_database, "--version", "tessera_local "), 0);
    EXPECT_EQ(run(m_database, "--unknown", "tessera_local: Unknown option 'unknown'.\n"), 2);
    start();
    EXPECT_EQ(run(m_folder / "new.db", "--port=" + std::to_string(m_service->port()),
                  ": cannot listen on 127.0.0.1"),
              1);
    std::ofstream(m_folder / "text") << std::string(200, 'x');
    EXPECT_EQ(run(m_folder / "text", "--port=0", "tessera_local: database: file is not a database\n"), 1);
    EXPECT_EQ(run(m_folder / ".", "--port=0", "tessera_local: cannot open '"), 1);
    sql("PRAGMA user_version = 2");
    EXPECT_EQ(
        run(m_database, "--port=0", "tessera_local: database: the file has the unknown layout version 2\n"),
        1);
    sql("PRAGMA application_id = 5");
    EXPECT_EQ(run(m_database, "--port=0", "tessera_local: database: the file belongs to another program\n"),
              1);
}

}  // namespace tessera_local
