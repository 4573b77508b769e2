#include "tools/tessera_local/store.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <future>
#include <memory>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

constexpr std::int64_t kLayoutVersion = 1;
constexpr std::int64_t kApplicationId = 0x54534C31;  // "TSL1": marks a file of this service
constexpr char kLayout[] = R"(BEGIN IMMEDIATE;
CREATE TABLE discs (id INTEGER PRIMARY KEY AUTOINCREMENT, kind TEXT NOT NULL CHECK (kind IN ('dvd', 'bluray')),
    sha256 TEXT NOT NULL, package BLOB NOT NULL, UNIQUE (kind, sha256));
CREATE TABLE configurations (uid INTEGER PRIMARY KEY AUTOINCREMENT,
    disc_id INTEGER NOT NULL REFERENCES discs (id), language_code TEXT NOT NULL,
    added_by_username TEXT NOT NULL, added_by_uid INTEGER NOT NULL, data TEXT NOT NULL);
CREATE INDEX configurations_of_disc ON configurations (disc_id);
PRAGMA application_id = 0x54534C31;
PRAGMA user_version = 1;
COMMIT)";

// Does `work` in the thread; returns its result or throws its exception.
template <typename Work>
auto runIn(QThreadPool& thread, Work work)
{
    // Shared: the thread may still be leaving the task when the caller already has the result.
    const auto task = std::make_shared<std::packaged_task<std::invoke_result_t<Work>()>>(std::move(work));
    auto result = task->get_future();
    thread.start([task] { (*task)(); });
    return result.get();
}

// SQLite would create the file with the rights of the umask. Its journal takes over the rights of the file.
void createForOwnerAlone(const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) {
        ::close(file);
    } else if (errno != EEXIST) {
        throw StoreError("cannot create '" + path + "': " + std::strerror(errno));
    }
}

}  // namespace

Store::Store(const std::string& path)
{
    m_thread.setMaxThreadCount(1);
    m_thread.setExpiryTimeout(-1);
    // An absolute path is never one of SQLite's special names (":memory:" and the like).
    const std::string file = std::filesystem::absolute(path).string();
    createForOwnerAlone(file);
    QUrl address = QUrl::fromLocalFile(QString::fromStdString(file));
    address.setQuery(u"mode=rw"_s);  // SQLite must not create the file
    runIn(m_thread, [&] {
        m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, address.path());
        m_database.setConnectOptions(u"QSQLITE_OPEN_URI"_s);
        m_database.setDatabaseName(address.toString(QUrl::FullyEncoded));
        if (!m_database.open()) {
            throw StoreError("cannot open '" + path +
                             "': " + m_database.lastError().databaseText().toStdString());
        }
    });
    run(u"PRAGMA foreign_keys = ON"_s);
    const std::int64_t version = *number(u"PRAGMA user_version"_s);
    const std::int64_t application = *number(u"PRAGMA application_id"_s);
    if (version == 0 && application == 0 && number(u"SELECT count(*) FROM sqlite_master"_s) == 0) {
        for (const QString& statement : QString::fromLatin1(kLayout).split(u';')) {
            run(statement);
        }
    } else if (application != kApplicationId) {
        throw StoreError("database: the file belongs to another program");
    } else if (version != kLayoutVersion) {
        throw StoreError("database: the file has the unknown layout version " + std::to_string(version));
    }
}

Store::~Store()
{
    runIn(m_thread, [this] {
        const QString name = m_database.connectionName();
        m_database = {};
        QSqlDatabase::removeDatabase(name);
    });
}

// Runs one statement to its end and returns its rows.
QList<QSqlRecord> Store::run(const QString& statement, const QVariantList& values)
{
    return runIn(m_thread, [&] {
        QSqlQuery query(m_database);
        query.setForwardOnly(true);  // otherwise Qt keeps a copy of every row
        if (query.prepare(statement)) {
            for (const QVariant& value : values) {
                query.addBindValue(value);
            }
            query.exec();
        }
        QList<QSqlRecord> rows;
        while (query.next()) {
            rows.append(query.record());
        }
        if (query.lastError().isValid()) {
            throw StoreError("database: " + query.lastError().databaseText().toStdString());
        }
        return rows;
    });
}

// The first column of the first row, if there is a row.
std::optional<std::int64_t> Store::number(const QString& statement, const QVariantList& values)
{
    const QList<QSqlRecord> rows = run(statement, values);
    return rows.isEmpty() ? std::nullopt : std::optional(std::int64_t{rows.first().value(0).toLongLong()});
}

std::optional<std::int64_t> Store::findDisc(DiscKind kind, const std::string& sha256)
{
    return number(u"SELECT id FROM discs WHERE kind = ? AND sha256 = ?"_s,
                  {QLatin1String(kindName(kind)), QString::fromStdString(sha256)});
}

std::int64_t Store::addDisc(DiscKind kind, const std::string& sha256, std::span<const std::uint8_t> deflated)
{
    if (const auto known = findDisc(kind, sha256)) { return *known; }
    // Somebody else may have added the disc since; its row stays, and its id is returned.
    return *number(u"INSERT INTO discs (kind, sha256, package) VALUES (?, ?, ?)"
                   " ON CONFLICT (kind, sha256) DO UPDATE SET kind = kind RETURNING id"_s,
                   {QLatin1String(kindName(kind)), QString::fromStdString(sha256),
                    QByteArray::fromRawData(reinterpret_cast<const char*>(deflated.data()),
                                            static_cast<qsizetype>(deflated.size()))});
}

bool Store::hasDisc(DiscKind kind, std::int64_t id)
{
    return !run(u"SELECT 1 FROM discs WHERE kind = ? AND id = ?"_s,
                {QLatin1String(kindName(kind)), qint64{id}})
                .isEmpty();
}

std::vector<Configuration> Store::configurations(std::int64_t id)
{
    std::vector<Configuration> found;
    for (const QSqlRecord& row :
         run(u"SELECT * FROM configurations WHERE disc_id = ? ORDER BY uid"_s, {qint64{id}})) {
        found.push_back({row.value(0).toLongLong(), row.value(1).toLongLong(), row.value(2).toString(),
                         row.value(3).toString(), row.value(4).toLongLong(), row.value(5).toString()});
    }
    return found;
}

std::optional<std::int64_t> Store::addConfiguration(const Configuration& added)
{
    const QVariant disc = qint64{added.discId};
    return number(
        u"INSERT INTO configurations (disc_id, language_code, added_by_username, added_by_uid, data)"
        " SELECT ?, ?, ?, ?, ? WHERE (SELECT count(*) FROM configurations WHERE disc_id = ?) < ?"
        " AND length(?) + coalesce((SELECT sum(length(data)) FROM configurations WHERE disc_id = ?), 0) <= ?"
        " RETURNING uid"_s,
        {disc, added.languageCode, added.addedByUsername, qint64{added.addedByUid}, added.data, disc,
         qint64{kMaximumConfigurations}, added.data, disc, qint64{kMaximumConfigurationCharacters}});
}

}  // namespace tessera_local
