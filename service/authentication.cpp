#include "service/authentication.h"

#include "app/log.h"
#include "service/api_key_store.h"
#include "service/http_client.h"
#include "service/json_value.h"

#include <new>
#include <optional>

namespace service {

namespace {

constexpr char kForbiddenCharacters[] =
    QT_TRANSLATE_NOOP("Messages", "The API key contains characters that are not allowed.");
constexpr char kInvalidResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid authentication response.");
constexpr char kFailed[] = QT_TRANSLATE_NOOP("Messages", "Unable to authenticate with Tessera.");

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
    const HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.errorText); }
    const std::optional<ServiceUser> user = parseUserReply(reply.body);
    if (!user) { return failure(QString::fromLatin1(kInvalidResponse)); }
    return {.ok = true, .user = *user, .errorText = {}};
}

}  // namespace

std::optional<ServiceUser> parseUserReply(const QByteArray& text)
{
    const std::optional<JsonDocument> document = JsonDocument::parse(text);
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
        if (outcome.errorText.isEmpty()) { outcome.errorText = QString::fromLatin1(kFailed); }
        logging::log(logging::kTessera, logging::kError, outcome.errorText);
        return outcome;
    } catch (const std::bad_alloc&) {  // a reply too large to handle, or to log
        const QString text = QString::fromLatin1(kFailed);
        logging::log(logging::kTessera, logging::kError, text);
        return failure(text);
    }
}

}  // namespace service
