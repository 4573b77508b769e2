#include "service/configurations.h"

#include "service/json_value.h"

#include <utility>

namespace service {

namespace {

ConfigurationTitle readTitle(const JsonValue& value)
{
    ConfigurationTitle title;
    title.id = value.member("id").clampedNumber().value_or(0);
    title.type = value.member("type").clampedNumber().value_or(0);
    title.pathIndex = value.member("path").clampedNumber();
    title.name = value.member("name").text();
    title.note = value.member("note").text();
    title.firstChapter = value.member("first_chapter").clampedNumber().value_or(0);
    title.lastChapter = value.member("last_chapter").clampedNumber().value_or(0);
    return title;
}

// "Data" is a JSON document of its own, carried as a string.
void readData(QByteArrayView text, DiscConfiguration& configuration)
{
    const std::optional<JsonDocument> document = JsonDocument::parse(text);
    if (!document) { return; }
    const JsonValue data = document->root();
    configuration.discName = data.member("disc_name").text();
    for (const JsonValue& path : data.member("paths").elements()) {
        configuration.paths.append(path.text());
    }
    for (const JsonValue& title : data.member("titles").elements()) {
        if (title.isObject()) { configuration.titles.append(readTitle(title)); }
    }
}

DiscConfiguration readConfiguration(const JsonValue& value)
{
    DiscConfiguration configuration;
    configuration.uid = value.member("UID").integer().value_or(0);
    configuration.discId = value.member("Disc ID").integer().value_or(0);
    configuration.languageCode = value.member("Language Code").text();
    configuration.addedByUsername = value.member("Added By Username").text();
    configuration.addedByUid = value.member("Added By UID").integer().value_or(0);
    readData(value.member("Data").utf8(), configuration);
    return configuration;
}

// `values` is the count of the document that contains the array. The documents in "Data" count as well: otherwise each
// could hold as many again.
std::optional<QList<DiscConfiguration>> readConfigurations(const JsonValue& array, qsizetype values)
{
    QList<DiscConfiguration> configurations;
    qsizetype entries = 0;
    for (const JsonValue& element : array.elements()) {
        if (!element.isObject()) { continue; }
        values += JsonDocument::countValues(element.member("Data").utf8());
        if (values > JsonDocument::kMaximumValues) { return std::nullopt; }
        configurations.append(readConfiguration(element));
        entries += 1 + configurations.last().paths.size() + configurations.last().titles.size();
        if (configurations.size() > kMaximumConfigurations || entries > kMaximumEntries) {
            return std::nullopt;
        }
    }
    return configurations;
}

}  // namespace

std::optional<ConfigurationReply> parseConfigurationReply(QByteArray text)
{
    const qsizetype values = JsonDocument::countValues(text);
    const std::optional<JsonDocument> document = JsonDocument::parse(text);
    text.clear();
    if (!document || !document->root().isObject()) { return std::nullopt; }
    const JsonValue root = document->root();
    const JsonValue discId = root.member("Disc ID");
    if (discId.isAbsentOrNull()) { return ConfigurationReply{}; }
    const std::optional<qint64> id = discId.integer();
    if (!id) { return std::nullopt; }

    auto configurations = readConfigurations(root.member("Configurations"), values);
    if (!configurations) { return std::nullopt; }
    return ConfigurationReply{.isFound = true, .discId = *id, .configurations = *std::move(configurations)};
}

ConfigurationArray parseConfigurationArray(QByteArray text)
{
    const qsizetype values = JsonDocument::countValues(text);
    const std::optional<JsonDocument> document = JsonDocument::parse(text);
    text.clear();
    if (!document || !document->root().isArray()) { return {}; }
    return {.isArray = true, .configurations = readConfigurations(document->root(), values)};
}

}  // namespace service
