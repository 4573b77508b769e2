#include "service/configuration_request.h"

#include "service/http_client.h"

#include <utility>

namespace service {

namespace {

constexpr char kInvalidResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid configurations response.");

constexpr char kDvdPath[] = "/api/tessera/dvd/configurations/get/?discId=%1";
constexpr char kBlurayPath[] = "/api/tessera/bluray/configurations/get/?discId=%1";

ConfigurationsOutcome failure(Message error)
{
    return {.ok = false, .configurations = {}, .error = std::move(error)};
}

}  // namespace

ConfigurationsOutcome getConfigurations(DiscKind kind, qint64 discId, const QString& apiKey)
{
    if (apiKey.isEmpty()) { return failure(kMissingRequestData); }
    const HttpLibrary library;
    HttpRequest request;
    request.path = QString::fromLatin1(kind == DiscKind::Bluray ? kBlurayPath : kDvdPath).arg(discId);
    request.headers = {apiKeyHeader(apiKey)};
    HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.error); }
    ConfigurationArray parsed = parseConfigurationArray(std::move(reply.body));
    if (!parsed.isArray) { return failure(kInvalidResponse); }
    if (!parsed.configurations) { return {}; }
    return {.ok = true, .configurations = *std::move(parsed.configurations), .error = {}};
}

}  // namespace service
