#include "tools/tessera_local/store.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace tessera_local {

namespace {

constexpr int kBusyTimeoutMs = 5000;
constexpr std::int64_t kLayoutVersion = 1;
constexpr std::int64_t kApplicationId = 0x54534C31;  // "TSL1": marks the file as one of ours

constexpr char kLayout[] = R"(
BEGIN IMMEDIATE;
CREATE TABLE discs (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    kind TEXT NOT NULL CHECK (kind IN ('dvd', 'bluray')),
    sha256 TEXT NOT NULL,
    package BLOB NOT NULL,
    UNIQUE (kind, sha256));
CREATE TABLE configurations (
    uid INTEGER PRIMARY KEY AUTOINCREMENT,
    disc_id INTEGER NOT NULL REFERENCES discs (id),
    language_code TEXT NOT NULL,
    added_by_username TEXT NOT NULL,
    added_by_uid INTEGER NOT NULL,
    data TEXT NOT NULL);
CREATE INDEX configurations_of_disc ON configurations (disc_id);
PRAGMA application_id = 0x54534C31;
PRAGMA user_version = 1;
COMMIT;
)";

[[noreturn]] void fail(sqlite3* database)
{
    throw StoreError(std::string("database: ") + sqlite3_errmsg(database));
}

void execute(sqlite3* database, const char* sql)
{
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK) { fail(database); }
}

// One prepared statement. What is bound must outlive it; columns are read after a step() that gave a row.
class Statement {
public:
    Statement(sqlite3* database, const char* sql)
        : m_database(database)
    {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(database, sql, -1, &statement, nullptr));
        m_statement.reset(statement);
    }

    Statement& bind(int index, std::int64_t value)
    {
        check(sqlite3_bind_int64(m_statement.get(), index, value));
        return *this;
    }
    Statement& bind(int index, std::string_view text)
    {
        check(sqlite3_bind_text64(m_statement.get(), index, text.data(), text.size(), SQLITE_STATIC,
                                  SQLITE_UTF8));
        return *this;
    }
    Statement& bind(int index, std::span<const std::uint8_t> bytes)
    {
        check(sqlite3_bind_blob64(m_statement.get(), index, bytes.data(), bytes.size(), SQLITE_STATIC));
        return *this;
    }

    // True when a row came, false at the end.
    bool step()
    {
        const int result = sqlite3_step(m_statement.get());
        if (result != SQLITE_ROW && result != SQLITE_DONE) { fail(m_database); }
        return result == SQLITE_ROW;
    }

    std::int64_t number(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
    std::string text(int column) const
    {
        const void* bytes = sqlite3_column_blob(m_statement.get(), column);
        const int size = sqlite3_column_bytes(m_statement.get(), column);
        return size > 0 ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size)) : "";
    }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    void check(int result) const
    {
        if (result != SQLITE_OK) { fail(m_database); }
    }

    sqlite3* m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

std::int64_t singleNumber(sqlite3* database, const char* sql)
{
    Statement statement(database, sql);
    return statement.step() ? statement.number(0) : 0;
}

// SQLite would create the file by the umask; its journal takes over the permissions of the file.
void createForOwnerAlone(const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) {
        ::close(file);
    } else if (errno != EEXIST) {
        throw StoreError("cannot create '" + path + "': " + std::strerror(errno));
    }
}

void prepareLayout(sqlite3* database)
{
    const std::int64_t version = singleNumber(database, "PRAGMA user_version");
    const std::int64_t application = singleNumber(database, "PRAGMA application_id");
    const bool isEmpty = singleNumber(database, "SELECT count(*) FROM sqlite_master") == 0;
    if (isEmpty && version == 0 && application == 0) {
        execute(database, kLayout);
    } else if (application != kApplicationId) {
        throw StoreError("database: the file belongs to another program");
    } else if (version != kLayoutVersion) {
        throw StoreError("database: the file has the unknown layout version " + std::to_string(version));
    }
}

std::optional<std::int64_t> discId(sqlite3* database, DiscKind kind, const std::string& sha256)
{
    Statement statement(database, "SELECT id FROM discs WHERE kind = ?1 AND sha256 = ?2");
    statement.bind(1, std::string_view(kindName(kind))).bind(2, std::string_view(sha256));
    return statement.step() ? std::optional(statement.number(0)) : std::nullopt;
}

}  // namespace

void Store::Close::operator()(sqlite3* database) const
{
    sqlite3_close(database);
}

Store::Store(const std::string& path)
{
    // An absolute path is never one of SQLite's special names (":memory:" and the like).
    const std::string absolutePath = std::filesystem::absolute(path).string();
    createForOwnerAlone(absolutePath);
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(absolutePath.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK) { throw StoreError("cannot open '" + path + "': " + sqlite3_errstr(result)); }
    sqlite3_busy_timeout(database, kBusyTimeoutMs);
    execute(database, "PRAGMA foreign_keys = ON");
    prepareLayout(database);
}

std::optional<std::int64_t> Store::findDisc(DiscKind kind, const std::string& sha256)
{
    const std::lock_guard lock(m_mutex);
    return discId(m_database.get(), kind, sha256);
}

std::int64_t Store::addDisc(DiscKind kind, const std::string& sha256, std::span<const std::uint8_t> deflated)
{
    const std::lock_guard lock(m_mutex);
    if (const auto known = discId(m_database.get(), kind, sha256)) { return *known; }
    // Another service on the same file may have added it since; its row then stands.
    Statement insert(m_database.get(), "INSERT INTO discs (kind, sha256, package) VALUES (?1, ?2, ?3)"
                                       " ON CONFLICT (kind, sha256) DO NOTHING");
    insert.bind(1, std::string_view(kindName(kind)))
        .bind(2, std::string_view(sha256))
        .bind(3, deflated)
        .step();
    const auto added = discId(m_database.get(), kind, sha256);
    if (!added) { throw StoreError("database: the added disc is not there"); }
    return *added;
}

bool Store::hasDisc(DiscKind kind, std::int64_t id)
{
    const std::lock_guard lock(m_mutex);
    Statement statement(m_database.get(), "SELECT 1 FROM discs WHERE id = ?1 AND kind = ?2");
    return statement.bind(1, id).bind(2, std::string_view(kindName(kind))).step();
}

std::vector<Configuration> Store::configurations(std::int64_t id)
{
    const std::lock_guard lock(m_mutex);
    Statement statement(m_database.get(),
                        "SELECT uid, disc_id, language_code, added_by_username, added_by_uid, data"
                        " FROM configurations WHERE disc_id = ?1 ORDER BY uid");
    statement.bind(1, id);
    std::vector<Configuration> found;
    while (statement.step()) {
        found.push_back({statement.number(0), statement.number(1), statement.text(2), statement.text(3),
                         statement.number(4), statement.text(5)});
    }
    return found;
}

std::optional<std::int64_t> Store::addConfiguration(const Configuration& added)
{
    const std::lock_guard lock(m_mutex);
    Statement insert(m_database.get(),
                     "INSERT INTO configurations"
                     " (disc_id, language_code, added_by_username, added_by_uid, data)"
                     " SELECT ?1, ?2, ?3, ?4, ?5 WHERE length(?5) + coalesce("
                     "(SELECT sum(length(data)) FROM configurations WHERE disc_id = ?1), 0) <= ?6"
                     " AND (SELECT count(*) FROM configurations WHERE disc_id = ?1) < ?7"
                     " RETURNING uid");
    insert.bind(1, added.discId)
        .bind(2, std::string_view(added.languageCode))
        .bind(3, std::string_view(added.addedByUsername))
        .bind(4, added.addedByUid)
        .bind(5, std::string_view(added.data))
        .bind(6, kMaximumConfigurationCharacters)
        .bind(7, kMaximumConfigurations);
    if (!insert.step()) { return std::nullopt; }
    const std::int64_t uid = insert.number(0);
    insert.step();  // to its end, where the row is really kept
    return uid;
}

}  // namespace tessera_local
