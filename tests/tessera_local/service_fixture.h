// The real executable over real sockets, and uploads for it.
#pragma once

#include "tests/support/local_service.h"
#include "tests/tessera_local/test_package.h"

#include <QByteArray>
#include <QJsonDocument>

#include <gtest/gtest.h>
#include <httplib.h>
#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

namespace tessera_local {

using testsupport::LocalService;

inline constexpr char kExecutable[] = TESSERA_LOCAL_EXECUTABLE;

inline std::string kindPath(DiscKind kind)
{
    return std::string("/api/tessera/") + kindName(kind);
}

// An upload as the wire wants it, for a test to spoil.
struct Upload {
    Upload(DiscKind discKind, const std::string& package)
        : kind(discKind)
        , contentType(std::string("application/vnd.platterscope.") + kindName(discKind) + "-title-package")
        , sha256(sha256Of(package))
        , body(deflated(package))
    {}

    DiscKind kind;
    std::string contentType;
    std::string sha256;
    std::string body;
    std::string encoding = "deflate";
    std::string key = "alice-key";
};

// The first row of a statement on the database, its columns as bytes.
inline std::vector<std::string> firstRow(const std::string& path, const std::string& sql)
{
    sqlite3* opened = nullptr;
    sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    sqlite3_busy_timeout(opened, 5000);
    sqlite3_stmt* prepared = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(opened, sql.c_str(), -1, &prepared, nullptr), SQLITE_OK)
        << sqlite3_errmsg(opened);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared, sqlite3_finalize);
    std::vector<std::string> columns;
    const int result = sqlite3_step(prepared);
    EXPECT_TRUE(result == SQLITE_ROW || result == SQLITE_DONE) << sqlite3_errmsg(opened);
    for (int i = 0; result == SQLITE_ROW && i < sqlite3_column_count(prepared); ++i) {
        const void* bytes = sqlite3_column_blob(prepared, i);
        columns.emplace_back(static_cast<const char*>(bytes),
                             static_cast<std::size_t>(sqlite3_column_bytes(prepared, i)));
    }
    return columns;
}

class Service : public testing::Test {
protected:
    void start(const std::vector<std::string>& arguments = {})
    {
        m_service.reset();
        m_service =
            std::make_unique<LocalService>(kExecutable, database(),
                                           std::vector<std::string>{"alice-key=alice", "bob-key=b\xC3\xB6"
                                                                                       "b"},
                                           arguments);
        ASSERT_TRUE(m_service->isReady()) << m_service->log();
    }
    std::string database() const { return m_folder.file("service.db"); }
    const TemporaryFolder& folder() const { return m_folder; }
    LocalService& service() { return *m_service; }

    httplib::Client client() const
    {
        httplib::Client client("127.0.0.1", m_service->port());
        client.set_read_timeout(20);
        return client;
    }
    httplib::Result postUser(const httplib::Headers& headers) const
    {
        return client().Post("/api/tessera/user/", headers, "", "application/x-www-form-urlencoded");
    }
    httplib::Result post(const std::string& action, const Upload& upload) const
    {
        const httplib::Headers headers{{"apiKey", upload.key},
                                       {"Content-Encoding", upload.encoding},
                                       {"X-Platterscope-Package-SHA256", upload.sha256}};
        return client().Post(kindPath(upload.kind) + action, headers, upload.body, upload.contentType);
    }
    httplib::Result getConfigurations(DiscKind kind, const std::string& query) const
    {
        return client().Get(kindPath(kind) + "/configurations/get/" + query, {{"apiKey", "alice-key"}});
    }
    // The document of a reply that must be a success.
    static QJsonDocument json(const httplib::Result& result)
    {
        if (!result || result->status != 200) {
            ADD_FAILURE() << (result ? result->body : "no reply");
            return {};
        }
        return QJsonDocument::fromJson(QByteArray::fromStdString(result->body));
    }
    // The status of a refusal; every one has a text for people.
    static int refusalOf(const httplib::Result& result)
    {
        if (!result) { return 0; }
        EXPECT_FALSE(result->body.empty()) << result->status;
        return result->status;
    }

private:
    TemporaryFolder m_folder;
    std::unique_ptr<LocalService> m_service;
};

}  // namespace tessera_local
