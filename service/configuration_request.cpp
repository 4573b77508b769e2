#include "service/configuration_request.h"

#include "service/http_client.h"
#include "service/json_value.h"

#include <new>
#include <utility>

namespace service {

namespace {

constexpr char kInvalidResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid configurations response.");

constexpr char kDvdPath[] = "/api/tessera/dvd/configurations/get/?discId=%1";
constexpr char kBlurayPath[] = "/api/tessera/bluray/configurations/get/?discId=%1";

ConfigurationsOutcome failure(const QString& errorText)
{
    return {.ok = false, .configurations = {}, .errorText = errorText};
}

ConfigurationsOutcome requestConfigurations(DiscKind kind, qint64 discId, const QString& apiKey)
{
    if (apiKey.isEmpty()) { return failure(QString::fromLatin1(kMissingRequestData)); }
    const HttpLibrary library;
    HttpRequest request;
    request.path = QString::fromLatin1(kind == DiscKind::Bluray ? kBlurayPath : kDvdPath).arg(discId);
    request.headers = {apiKeyHeader(apiKey)};
    const HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.errorText); }
    const std::optional<JsonDocument> document = JsonDocument::parse(reply.body);
    if (!document || !document->root().isArray()) { return failure(QString::fromLatin1(kInvalidResponse)); }
    std::optional<QList<DiscConfiguration>> configurations = readConfigurations(document->root());
    if (!configurations) { return {}; }
    return {.ok = true, .configurations = *std::move(configurations), .errorText = {}};
}

}  // namespace

ConfigurationsOutcome getConfigurations(DiscKind kind, qint64 discId, const QString& apiKey)
{
    try {
        return requestConfigurations(kind, discId, apiKey);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace service
