#include "service/api_key_store.h"

#include "service/owner_only_file.h"
#include "service/service_address.h"

#include <QCoreApplication>
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
bool fail(QString* errorText, const QString& text)
{
    if (errorText != nullptr) { *errorText = text; }
    return false;
}

// A sentence in the user's language with its place filled in. It is shown and never logged, so it need not stay
// English; and once filled in it could no longer be looked up.
template <typename Detail>
QString filledIn(const char* sentence, const Detail& detail)
{
    return QCoreApplication::translate("Messages", sentence).arg(detail);
}

// The sentence for a failed step; `plainFailure` is the one of reading or of writing.
QString failureText(const OwnerOnlyResult& result, const char* plainFailure, const QString& path)
{
    const bool isWindows = usesWindowsErrorNumbers();
    switch (result.failed) {
    case OwnerOnlyStep::Absent:
        return QString::fromLatin1(kApiKeyNotConfigured);
    case OwnerOnlyStep::Owner:
        return filledIn(isWindows ? kOwnerUnknownWindows : kOwnerUnknown, result.errorNumber);
    case OwnerOnlyStep::Restrict:
        return filledIn(isWindows ? kNotRestrictedWindows : kNotRestricted, result.errorNumber);
    default:
        return filledIn(plainFailure, path);
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

bool loadApiKey(QString* key, QString* errorText)
{
    if (errorText != nullptr) { errorText->clear(); }
    if (key == nullptr) { return fail(errorText, QString::fromLatin1(kNoKeyOutput)); }
    key->clear();
    const QString path = apiKeyFilePath();
    if (path.isEmpty()) { return fail(errorText, currentServiceAddress().problem); }

    std::string content;
    const OwnerOnlyResult result = readOwnerOnlyFile(path.toStdString(), kMaximumFileBytes, content);
    if (!result.ok()) { return fail(errorText, failureText(result, kReadFailed, path)); }
    const QString stored = QString::fromStdString(content).trimmed();
    if (stored.isEmpty() || !isAllowedKeyText(stored)) {
        return fail(errorText, QString::fromLatin1(kApiKeyNotConfigured));
    }
    *key = stored;
    return true;
}

bool saveApiKey(const QString& key, QString* errorText)
{
    if (errorText != nullptr) { errorText->clear(); }
    const QString path = apiKeyFilePath();
    if (path.isEmpty()) { return fail(errorText, currentServiceAddress().problem); }

    const QString directory = QFileInfo(path).path();
    if (!QDir().mkpath(QDir::homePath()) || !makeOwnerOnlyDirectory(directory.toStdString())) {
        return fail(errorText, filledIn(kDirectoryFailed, directory));
    }
    const OwnerOnlyResult result = replaceOwnerOnlyFile(path.toStdString(), key.trimmed().toStdString());
    return result.ok() || fail(errorText, failureText(result, kWriteFailed, path));
}

QString apiKeyFileProblem()
{
    const QString path = apiKeyFilePath();
    const bool isSafe = path.isEmpty() || isOwnerOnly(path.toStdString());
    return isSafe ? QString() : QString::fromLatin1(kOthersHaveAccess);
}

}  // namespace service
