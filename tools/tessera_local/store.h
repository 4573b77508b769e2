// The service's memory: discs with their packages, and the configurations of each, in one SQLite file.
//
//   discs           id, kind ("dvd" or "bluray"), sha256 (64 hexadecimal digits of the package),
//                   package (the zlib stream it was uploaded as; inflated it is the package byte for byte)
//   configurations  uid, disc_id, language_code, added_by_username, added_by_uid, data (JSON text)
//
// PRAGMA user_version holds the layout's version. Ids start at 1 and are never given twice.
#pragma once

#include "tools/tessera_local/package_upload.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3;

namespace tessera_local {

// What a user published about a disc: `data` is JSON text that travels as a string and is not looked into.
struct Configuration {
    std::int64_t uid = 0;
    std::int64_t discId = 0;
    std::string languageCode;
    std::string addedByUsername;
    std::int64_t addedByUid = 0;
    std::string data;
};

// How many configurations one disc may have, and how much text they may hold together: a find reply carries them
// all, and a client must be able to take it.
inline constexpr std::int64_t kMaximumConfigurations = 500;
inline constexpr std::int64_t kMaximumConfigurationCharacters = std::int64_t{4} << 20;

// The database cannot be opened, read or written; what() says why, for people.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One connection behind a mutex: any thread may call. Every function throws StoreError on a database failure.
class Store {
public:
    // Opens `path`, creating it for its owner alone when it is absent. Refuses a file that another program
    // or a newer version of this one wrote.
    explicit Store(const std::string& path);

    // The id of the disc that `kind` and `sha256` identify, if it is known.
    std::optional<std::int64_t> findDisc(DiscKind kind, const std::string& sha256);

    // Adds the disc with its deflated package and gives its id; a known disc keeps its id and its package.
    std::int64_t addDisc(DiscKind kind, const std::string& sha256, std::span<const std::uint8_t> deflated);

    // Whether `discId` is a disc of `kind`.
    bool hasDisc(DiscKind kind, std::int64_t discId);

    // The disc's configurations in the order they were added.
    std::vector<Configuration> configurations(std::int64_t discId);

    // Adds a configuration of a known disc and gives its uid (that of `configuration` is not looked at);
    // nothing when the disc's would become more than the above.
    std::optional<std::int64_t> addConfiguration(const Configuration& configuration);

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    std::unique_ptr<sqlite3, Close> m_database;
    std::mutex m_mutex;
};

}  // namespace tessera_local
