// The wire as the service's users meet it.
#include "tests/tessera_local/service_fixture.h"

#include <QJsonArray>
#include <QJsonObject>

#include <sys/stat.h>
#include <zlib.h>

#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace tessera_local {

TEST_F(Service, TellsItsAddressAndWhoTheUserIs)
{
    start({"--latest-version", "1.3.0"});
    EXPECT_EQ(service().output(),
              "tessera_local: listening on http://127.0.0.1:" + std::to_string(service().port()) + "\n");
    const QJsonObject alice{{QStringLiteral("UID"), 1},
                            {QStringLiteral("Username"), QStringLiteral("alice")},
                            {QStringLiteral("LatestVersion"), QStringLiteral("1.3.0")}};
    EXPECT_EQ(json(postUser({{"apiKey", "alice-key"}})).object(), alice);
    EXPECT_EQ(json(postUser({{"apiKey", "alice-key"}, {"Range", "bytes=0-0"}})).object(), alice)
        << "always whole";
    start();
    const QJsonObject bob{{QStringLiteral("UID"), 2},
                          {QStringLiteral("Username"), QString::fromUtf8("b\xC3\xB6"
                                                                         "b")}};
    EXPECT_EQ(json(postUser({{"apiKey", "bob-key"}})).object(), bob);
}

TEST_F(Service, LetsInOnlyKnownKeysAndLogsNone)
{
    start();
    EXPECT_EQ(refusalOf(postUser({})), 401);
    for (const char* key : {"alice-kez", "alice-ke", "alice-key2", "alice", "UNKNOWN"}) {
        EXPECT_EQ(refusalOf(postUser({{"apiKey", key}})), 403) << key;
    }
    // Large, and refused unread: the reply must arrive all the same.
    Upload upload(DiscKind::Dvd, "");
    upload.key = "UNKNOWN";
    upload.body.assign(3'000'000, 'x');
    EXPECT_EQ(refusalOf(post("/add/", upload)), 403);
    EXPECT_EQ(refusalOf(client().Get("/api/tessera/dvd/configurations/get/?discId=1")), 401);
    EXPECT_TRUE(postUser({{"apiKey", "alice-key"}}));

    EXPECT_EQ(service().stop(), 0);  // a line may follow its reply
    const std::string log = service().log();
    EXPECT_NE(log.find("tessera_local: POST /api/tessera/user/ 401\n"), std::string::npos) << log;
    EXPECT_NE(log.find("tessera_local: POST /api/tessera/dvd/add/ 403\n"), std::string::npos) << log;
    EXPECT_NE(log.find("tessera_local: POST /api/tessera/user/ 200\n"), std::string::npos) << log;
    EXPECT_EQ(log.find("alice"), std::string::npos) << log;
    EXPECT_EQ(log.find("UNKNOWN"), std::string::npos) << log;
}

TEST_F(Service, FindsAPackageOnceItIsAdded)
{
    start();
    const Upload dvd(DiscKind::Dvd, package(DiscKind::Dvd, "one"));
    const Upload other(DiscKind::Dvd, package(DiscKind::Dvd, "two"));
    const Upload bluray(DiscKind::Bluray, package(DiscKind::Bluray, "one"));
    const auto foundId = [this](const Upload& upload) {
        const QJsonObject reply = json(post("/find/", upload)).object();
        EXPECT_EQ(reply.size(), 2);
        EXPECT_TRUE(reply[QStringLiteral("Configurations")].isArray());
        return reply[QStringLiteral("Disc ID")];
    };
    EXPECT_EQ(foundId(dvd), QJsonValue(QJsonValue::Null));
    EXPECT_EQ(post("/add/", dvd)->body, "1");
    EXPECT_EQ(post("/add/", bluray)->body, "2");
    EXPECT_EQ(post("/add/", dvd)->body, "1");
    EXPECT_EQ(foundId(dvd), QJsonValue(1));
    EXPECT_EQ(foundId(bluray), QJsonValue(2));
    EXPECT_EQ(foundId(other), QJsonValue(QJsonValue::Null));
    EXPECT_EQ(post("/add/", other)->body, "3");
}

TEST_F(Service, RefusesUploadsThatAreNotWhatTheySay)
{
    start();
    const Upload good(DiscKind::Bluray, package(DiscKind::Bluray, std::string(5000, 'c')));
    const auto statusWith = [&](auto spoil) {
        Upload upload = good;
        spoil(upload);
        return refusalOf(post("/add/", upload));
    };
    EXPECT_EQ(statusWith([](Upload& u) { u.contentType = "application/vnd.platterscope.dvd-title-package"; }),
              415);
    EXPECT_EQ(statusWith([](Upload& u) { u.contentType = "multipart/form-data; boundary=x"; }), 415);
    EXPECT_EQ(statusWith([](Upload& u) { u.encoding = "gzip"; }), 415);
    EXPECT_EQ(statusWith([](Upload& u) { u.sha256 = "no digest"; }), 400);
    EXPECT_EQ(statusWith([](Upload& u) { u.sha256 = sha256Of("other"); }), 422);
    EXPECT_EQ(statusWith([](Upload& u) { u.body.resize(u.body.size() - 4); }), 400);
    EXPECT_EQ(statusWith([](Upload& u) { u.body.clear(); }), 400);
    EXPECT_EQ(statusWith([](Upload& u) { u.body += "behind"; }), 400);
    EXPECT_EQ(statusWith([](Upload& u) { u = Upload(DiscKind::Bluray, package(DiscKind::Dvd, "c")); }), 422);
    EXPECT_EQ(statusWith([](Upload& u) { u = Upload(DiscKind::Bluray, package(DiscKind::Bluray, "c", 50)); }),
              422);
    EXPECT_EQ(firstRow(database(), "SELECT count(*) FROM discs"), std::vector<std::string>{"0"});
    EXPECT_EQ(post("/add/", good)->body, "1");
}

TEST_F(Service, KeepsPackagesAcrossRestarts)
{
    start();
    const std::string bytes = package(DiscKind::Dvd, std::string(70'000, 'c') + "end");
    const Upload upload(DiscKind::Dvd, bytes);
    EXPECT_EQ(post("/add/", upload)->body, "1");
    EXPECT_EQ(service().stop(), 0);

    struct stat status {};
    ASSERT_EQ(::stat(database().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    const std::vector<std::string> row =
        firstRow(database(), "SELECT kind, sha256, package FROM discs WHERE id = 1");
    ASSERT_EQ(row.size(), 3U);
    EXPECT_EQ(row[0], "dvd");
    EXPECT_EQ(row[1], upload.sha256);
    std::string inflated(bytes.size() + 1, '\0');
    uLongf size = inflated.size();
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(inflated.data()), &size,
                         reinterpret_cast<const Bytef*>(row[2].data()), row[2].size()),
              Z_OK);
    inflated.resize(size);
    EXPECT_TRUE(inflated == bytes);

    start();
    EXPECT_EQ(json(post("/find/", upload)).object()[QStringLiteral("Disc ID")], QJsonValue(1));
    EXPECT_EQ(post("/add/", Upload(DiscKind::Bluray, package(DiscKind::Bluray, "next")))->body, "2");
}

TEST_F(Service, ServesTheConfigurationsOfADisc)
{
    start();
    const Upload dvd(DiscKind::Dvd, package(DiscKind::Dvd, "one"));
    ASSERT_EQ(post("/add/", dvd)->body, "1");
    EXPECT_EQ(json(getConfigurations(DiscKind::Dvd, "?discId=1")), QJsonDocument(QJsonArray()));
    ASSERT_EQ(post("/add/", Upload(DiscKind::Dvd, package(DiscKind::Dvd, "two")))->body, "2");
    const std::string data = R"({"disc_name":"L\u00e9on \"1\"","paths":[],"titles":[]})";
    firstRow(database(), "INSERT INTO configurations VALUES (7, 1, 'en', 'd\xC3\xA4ve', 3, '" + data +
                             "'), (8, 2, 'de',"
                             " 'x', 1, ''), (9, 1, '', 'y', 1, '')");

    const QJsonArray expected{
        QJsonObject{{QStringLiteral("UID"), 7},
                    {QStringLiteral("Disc ID"), 1},
                    {QStringLiteral("Language Code"), QStringLiteral("en")},
                    {QStringLiteral("Added By Username"), QString::fromUtf8("d\xC3\xA4ve")},
                    {QStringLiteral("Added By UID"), 3},
                    {QStringLiteral("Data"), QString::fromStdString(data)}},
        QJsonObject{{QStringLiteral("UID"), 9},
                    {QStringLiteral("Disc ID"), 1},
                    {QStringLiteral("Language Code"), QString()},
                    {QStringLiteral("Added By Username"), QStringLiteral("y")},
                    {QStringLiteral("Added By UID"), 1},
                    {QStringLiteral("Data"), QString()}}};
    EXPECT_EQ(json(getConfigurations(DiscKind::Dvd, "?discId=1")).array(), expected);
    EXPECT_EQ(json(post("/find/", dvd)).object()[QStringLiteral("Configurations")].toArray(), expected);

    EXPECT_EQ(refusalOf(getConfigurations(DiscKind::Bluray, "?discId=1")), 404);
    EXPECT_EQ(refusalOf(getConfigurations(DiscKind::Dvd, "?discId=3")), 404);
    for (const char* query : {"", "?discId=", "?discId=1x", "?discId=99999999999999999999", "?other=1"}) {
        EXPECT_EQ(refusalOf(getConfigurations(DiscKind::Dvd, query)), 400) << query;
    }
}

TEST_F(Service, GivesOneIdToAPackageThatManyAddAtOnce)
{
    start();
    std::mutex mutex;
    std::map<std::string, std::set<std::string>> idsByPackage;
    std::vector<std::thread> threads;
    threads.reserve(24);
    for (int i = 0; i < 24; ++i) {
        threads.emplace_back([&, i] {
            const Upload upload(DiscKind::Dvd, package(DiscKind::Dvd, std::to_string(i % 3)));
            const httplib::Result result = post("/add/", upload);
            const std::lock_guard lock(mutex);
            idsByPackage[upload.sha256].insert(result ? result->body : "none");
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::string> ids;
    for (const auto& [sha256, ofPackage] : idsByPackage) {
        EXPECT_EQ(ofPackage.size(), 1U);
        ids.insert(ofPackage.begin(), ofPackage.end());
    }
    EXPECT_EQ(ids, (std::set<std::string>{"1", "2", "3"}));
}

}  // namespace tessera_local
