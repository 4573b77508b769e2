#include "service/authentication.h"

#include "base/log.h"
#include "service/api_key_store.h"
#include "service/http_client.h"
#include "service/json_value.h"

#include <new>
#include <optional>
#include <utility>

namespace service {

namespace {

constexpr char kForbiddenCharacters[] =
    QT_TRANSLATE_NOOP("Messages", "The API key contains characters that are not allowed.");
constexpr char kInvalidResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid authentication response.");

constexpr char kFailed[] = QT_TRANSLATE_NOOP("Messages", "Unable to authenticate with Tessera.");

AuthenticationOutcome failure(Message error)
{
    return {.ok = false, .user = {}, .error = std::move(error)};
}

AuthenticationOutcome requestUser(const QString& apiKey)
{
    if (!isConfiguredKey(apiKey)) { return failure(kApiKeyNotConfigured); }
    if (!isAllowedKeyText(apiKey)) { return failure(kForbiddenCharacters); }

    const HttpLibrary library;
    HttpRequest request;
    request.path = QStringLiteral("/api/tessera/user/");
    request.isPost = true;  // without a body: the key travels in its header alone
    request.headers = {apiKeyHeader(apiKey), "Content-Type: application/x-www-form-urlencoded"};
    HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.error); }
    const std::optional<ServiceUser> user = parseUserReply(std::move(reply.body));
    if (!user) { return failure(kInvalidResponse); }
    return {.ok = true, .user = *user, .error = {}};
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
    AuthenticationOutcome outcome;
    try {
        outcome = requestUser(apiKey);
    } catch (const std::bad_alloc&) {  // a reply too large for the memory
        outcome = failure(kFailed);
    }
    if (outcome.ok) {
        logging::log(logging::kTessera, logging::kInfo, QStringLiteral("authentication succeeded"));
    } else {
        logging::logLines(logging::kTessera, logging::kError, outcome.error.english());
    }
    return outcome;
}

}  // namespace service
