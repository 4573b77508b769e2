#include "service/authentication.h"

#include "base/log.h"
#include "service/api_key_store.h"
#include "service/http_client.h"
#include "service/json_value.h"

#include <exception>
#include <optional>
#include <utility>

namespace service {

namespace {

constexpr char kForbiddenCharacters[] =
    QT_TRANSLATE_NOOP("Messages", "The API key contains characters that are not allowed.");
constexpr char kInvalidResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid authentication response.");

// A text that takes no memory to make.
QString failedText()
{
    return QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Unable to authenticate with Tessera."));
}

AuthenticationOutcome failure(const QString& errorText)
{
    return {.ok = false, .user = {}, .errorText = errorText};
}

AuthenticationOutcome requestUser(const QString& apiKey)
{
    if (!isConfiguredKey(apiKey)) { return failure(QString::fromLatin1(kApiKeyNotConfigured)); }
    if (!isAllowedKeyText(apiKey)) { return failure(QString::fromLatin1(kForbiddenCharacters)); }

    const HttpLibrary library;
    HttpRequest request;
    request.path = QStringLiteral("/api/tessera/user/");
    request.isPost = true;  // without a body: the key travels in its header alone
    request.headers = {apiKeyHeader(apiKey), "Content-Type: application/x-www-form-urlencoded"};
    HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.errorText); }
    const std::optional<ServiceUser> user = parseUserReply(std::move(reply.body));
    if (!user) { return failure(QString::fromLatin1(kInvalidResponse)); }
    return {.ok = true, .user = *user, .errorText = {}};
}

}  // namespace

std::optional<ServiceUser> parseUserReply(QByteArray text)
{
    const std::optional<JsonDocument> document = JsonDocument::parse(text);
    text.clear();
    if (!document) { return std::nullopt; }
    const JsonValue root = document->root();
    const std::optional<qint64> uid = root.member("UID").integer();
    const QString username = root.member("Username").text();
    if (!uid || username.isEmpty()) { return std::nullopt; }
    return ServiceUser{
        .uid = *uid, .username = username, .latestVersion = root.member("LatestVersion").text()};
}

AuthenticationOutcome authenticate(const QString& apiKey)
{
    logging::log(logging::kTessera, logging::kInfo, QStringLiteral("authentication started"));
    try {
        AuthenticationOutcome outcome = requestUser(apiKey);
        if (outcome.ok) {
            logging::log(logging::kTessera, logging::kInfo, QStringLiteral("authentication succeeded"));
            return outcome;
        }
        if (outcome.errorText.isEmpty()) { outcome.errorText = failedText(); }
        logging::logLines(logging::kTessera, logging::kError, outcome.errorText);
        return outcome;
    } catch (const std::exception&) {  // a reply too large to handle
        logging::log(logging::kTessera, logging::kError, failedText());
        return failure(failedText());
    }
}

}  // namespace service
