#include "service/api_key_store.h"

#include "service/owner_only_file.h"
#include "service/service_address.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <string>

namespace service {

namespace {

constexpr char kNoKeyOutput[] = QT_TRANSLATE_NOOP("Messages", "No API key output was provided.");
constexpr char kReadFailed[] = QT_TRANSLATE_NOOP("Messages", "Failed to read API key file: %1");
constexpr char kWriteFailed[] = QT_TRANSLATE_NOOP("Messages", "Failed to write API key file: %1");
constexpr char kDirectoryFailed[] =
    QT_TRANSLATE_NOOP("Messages", "Failed to create configuration directory: %1");
constexpr char kOwnerUnknown[] =
    QT_TRANSLATE_NOOP("Messages", "Could not read the API key file owner (error %1).");
constexpr char kOwnerUnknownWindows[] =
    QT_TRANSLATE_NOOP("Messages", "Could not read the API key file owner (Windows error %1).");
constexpr char kNotRestricted[] =
    QT_TRANSLATE_NOOP("Messages", "Could not restrict the API key file to its owner (error %1).");
constexpr char kNotRestrictedWindows[] =
    QT_TRANSLATE_NOOP("Messages", "Could not restrict the API key file to its owner (Windows error %1).");
constexpr char kOthersHaveAccess[] =
    QT_TRANSLATE_NOOP("Messages", "The API key file can be accessed by other users.");

constexpr std::size_t kMaximumFileBytes = 64 * 1024;

// Always false, so that a failing step reads "return fail(...)".
bool fail(Message* error, const Message& message)
{
    if (error != nullptr) { *error = message; }
    return false;
}

// `plainFailure` is the message of failed reading or of failed writing.
Message messageOf(const OwnerOnlyResult& result, const char* plainFailure, const QString& path)
{
    const bool isWindows = usesWindowsErrorNumbers();
    switch (result.failed) {
    case OwnerOnlyStep::Absent:
        return kApiKeyNotConfigured;
    case OwnerOnlyStep::Owner:
        return {isWindows ? kOwnerUnknownWindows : kOwnerUnknown, {QString::number(result.errorNumber)}};
    case OwnerOnlyStep::Restrict:
        return {isWindows ? kNotRestrictedWindows : kNotRestricted, {QString::number(result.errorNumber)}};
    default:
        return {plainFailure, {path}};
    }
}

}  // namespace

bool isConfiguredKey(const QString& key)
{
    return !key.isEmpty() && key != QLatin1String(kPlaceholderKey);
}

bool isAllowedKeyText(const QString& key)
{
    return std::none_of(key.begin(), key.end(), [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
               c == QChar::ParagraphSeparator;
    });
}

QString apiKeyFilePath()
{
    const ServiceAddress address = currentServiceAddress();
    if (!address.isUsable()) { return {}; }
    return QDir::home().filePath(QLatin1Char('.') + address.host + QLatin1String("/ApiKey.txt"));
}

bool loadApiKey(QString* key, Message* error)
{
    if (error != nullptr) { *error = {}; }
    if (key == nullptr) { return fail(error, kNoKeyOutput); }
    key->clear();
    const QString path = apiKeyFilePath();
    if (path.isEmpty()) { return fail(error, currentServiceAddress().problem); }

    std::string content;
    const OwnerOnlyResult result = readOwnerOnlyFile(path.toStdString(), kMaximumFileBytes, content);
    if (!result.ok()) { return fail(error, messageOf(result, kReadFailed, path)); }
    const QString stored = QString::fromStdString(content).trimmed();
    if (stored.isEmpty() || !isAllowedKeyText(stored)) { return fail(error, kApiKeyNotConfigured); }
    *key = stored;
    return true;
}

bool saveApiKey(const QString& key, Message* error)
{
    if (error != nullptr) { *error = {}; }
    const QString path = apiKeyFilePath();
    if (path.isEmpty()) { return fail(error, currentServiceAddress().problem); }

    const QString directory = QFileInfo(path).path();
    if (!QDir().mkpath(QDir::homePath()) || !makeOwnerOnlyDirectory(directory.toStdString())) {
        return fail(error, {kDirectoryFailed, {directory}});
    }
    const OwnerOnlyResult result = replaceOwnerOnlyFile(path.toStdString(), key.trimmed().toStdString());
    return result.ok() || fail(error, messageOf(result, kWriteFailed, path));
}

Message apiKeyFileProblem()
{
    const QString path = apiKeyFilePath();
    const bool isSafe = path.isEmpty() || isOwnerOnly(path.toStdString());
    return isSafe ? Message() : Message(kOthersHaveAccess);
}

}  // namespace service
