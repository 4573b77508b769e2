// What users have contributed about a disc: which of its titles is the movie, an episode, an extra. The service sends
// configurations in this form:
//
//   { "Disc ID": 17, "Configurations": [ { "UID": 3, "Disc ID": 17, "Language Code": "en",
//       "Added By Username": "ada", "Added By UID": 1, "Data": "<a JSON document as a string>" } ] }
//
// and "Data" holds { "disc_name": "...", "paths": ["..."], "titles": [ { "id": 1, "type": 1, "path": 0,
// "name": "...", "note": "...", "first_chapter": 1, "last_chapter": 12 } ] }.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace service {

struct ConfigurationTitle {
    int id = 0;
    int type = 0;                  // 1 to 14 have names; see the configurations view
    std::optional<int> pathIndex;  // into DiscConfiguration::paths, as received: may lie outside it
    QString name;
    QString note;
    int firstChapter = 0;  // 0: not given
    int lastChapter = 0;
};

struct DiscConfiguration {
    qint64 uid = 0;
    qint64 discId = 0;
    QString languageCode;
    QString addedByUsername;
    qint64 addedByUid = 0;
    QString discName;
    QStringList paths;
    QList<ConfigurationTitle> titles;
};

struct ConfigurationReply {
    bool isFound = false;
    qint64 discId = 0;
    QList<DiscConfiguration> configurations;
};

// The most configurations of a reply, and the most configurations, titles and paths together: far more than anybody
// would describe, and few enough to keep and show at once.
inline constexpr qsizetype kMaximumConfigurations = 20'000;
inline constexpr qsizetype kMaximumEntries = 250'000;

// Parses a find reply. Empty if the text is no JSON object, if its "Disc ID" is neither absent, null nor an integer (a
// JSON number without fraction within +-(2^53 - 1), or a decimal text), or if it has too many entries or too many values
// (JsonDocument::kMaximumValues, all "Data" included). Malformed parts of a configuration do not fail the reply:
// - a missing field is empty or 0
// - a number outside 32 bits is clamped, a fraction is cut
// - a path that is no text becomes an empty text, so that the indices stay the same
// - titles and configurations that are no objects are skipped
// Frees a text that is moved here as soon as it is parsed. Throws std::bad_alloc.
[[nodiscard]] std::optional<ConfigurationReply> parseConfigurationReply(QByteArray text);

struct ConfigurationArray {
    bool isArray = false;
    std::optional<QList<DiscConfiguration>> configurations;  // empty also if the array holds too much
};

// Parses a reply that is an array of configurations, in the same way. Throws std::bad_alloc.
[[nodiscard]] ConfigurationArray parseConfigurationArray(QByteArray text);

}  // namespace service
