#include "tools/tessera_local/replies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessera_local {

namespace {

std::string compact(const QJsonDocument& document)
{
    return document.toJson(QJsonDocument::Compact).toStdString();
}

QJsonArray jsonOf(const std::vector<Configuration>& configurations)
{
    QJsonArray array;
    for (const Configuration& configuration : configurations) {
        array.append(QJsonObject{
            {QStringLiteral("UID"), qint64{configuration.uid}},
            {QStringLiteral("Disc ID"), qint64{configuration.discId}},
            {QStringLiteral("Language Code"), configuration.languageCode},
            {QStringLiteral("Added By Username"), configuration.addedByUsername},
            {QStringLiteral("Added By UID"), qint64{configuration.addedByUid}},
            {QStringLiteral("Data"), configuration.data},
        });
    }
    return array;
}

}  // namespace

std::string userReply(const User& user, const std::string& latestVersion)
{
    QJsonObject reply{{QStringLiteral("UID"), qint64{user.uid}},
                      {QStringLiteral("Username"), QString::fromStdString(user.name)}};
    if (!latestVersion.empty()) {
        reply.insert(QStringLiteral("LatestVersion"), QString::fromStdString(latestVersion));
    }
    return compact(QJsonDocument(reply));
}

std::string findReply(std::optional<std::int64_t> discId, const std::vector<Configuration>& configurations)
{
    const QJsonObject reply{{QStringLiteral("Disc ID"), discId ? QJsonValue(qint64{*discId}) : QJsonValue()},
                            {QStringLiteral("Configurations"), jsonOf(configurations)}};
    return compact(QJsonDocument(reply));
}

std::string configurationsReply(const std::vector<Configuration>& configurations)
{
    return compact(QJsonDocument(jsonOf(configurations)));
}

}  // namespace tessera_local
