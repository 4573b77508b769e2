// The service's database, one SQLite file:
//
//   discs           id, kind ("dvd" or "bluray"), sha256 (64 hexadecimal digits of the package),
//                   package (the zlib stream as uploaded; it inflates to the package)
//   configurations  uid, disc_id, language_code, added_by_username, added_by_uid, data (JSON text)
//
// PRAGMA user_version holds the version of this layout. Ids start at 1 and are never used twice.
#pragma once

#include "tools/tessera_local/package_upload.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QThreadPool>
#include <QVariant>

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessera_local {

// A configuration that a user added to a disc. `data` is JSON text, which the service does not parse.
struct Configuration {
    std::int64_t uid = 0;
    std::int64_t discId = 0;
    QString languageCode;
    QString addedByUsername;
    std::int64_t addedByUid = 0;
    QString data;
};

// The most configurations of one disc, and the most characters of their data together. A find reply carries them
// all, and a client must be able to receive it.
inline constexpr std::int64_t kMaximumConfigurations = 500;
inline constexpr std::int64_t kMaximumConfigurationCharacters = std::int64_t{4} << 20;

// The database cannot be opened, read or written; what() is the reason, for people.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Any thread may call the functions. Each throws StoreError on a database failure; a change is on the disk when its
// function returns.
class Store {
public:
    // Opens `path`. Creates a missing file, for its owner alone. Throws if another program or a newer version of
    // this one wrote the file.
    explicit Store(const std::string& path);
    ~Store();

    // Returns the id of the disc with this `kind` and `sha256`, if there is one.
    std::optional<std::int64_t> findDisc(DiscKind kind, const std::string& sha256);

    // Adds the disc with its deflated package and returns its id. A known disc keeps its id and its package.
    std::int64_t addDisc(DiscKind kind, const std::string& sha256, std::span<const std::uint8_t> deflated);

    // Returns whether `discId` is a disc of `kind`.
    bool hasDisc(DiscKind kind, std::int64_t discId);

    // Returns the disc's configurations in the order they were added.
    std::vector<Configuration> configurations(std::int64_t discId);

    // Adds a configuration to a known disc and returns its new uid; returns nothing if the disc would exceed the
    // limits above. Ignores the uid of `configuration`.
    std::optional<std::int64_t> addConfiguration(const Configuration& configuration);

private:
    QList<QSqlRecord> run(const QString& statement, const QVariantList& values = {});
    std::optional<std::int64_t> number(const QString& statement, const QVariantList& values = {});

    QSqlDatabase m_database;
    QThreadPool m_thread;  // of one thread: Qt ties a connection to the thread that opened it
};

}  // namespace tessera_local
