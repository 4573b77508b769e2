#include "service/configuration_request.h"

#include "service/http_client.h"

#include <exception>
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
    HttpOutcome reply = perform(request);
    if (!reply.ok) { return failure(reply.errorText); }
    ConfigurationArray parsed = parseConfigurationArray(std::move(reply.body));
    if (!parsed.isArray) { return failure(QString::fromLatin1(kInvalidResponse)); }
    if (!parsed.configurations) { return {}; }
    return {.ok = true, .configurations = *std::move(parsed.configurations), .errorText = {}};
}

}  // namespace

ConfigurationsOutcome getConfigurations(DiscKind kind, qint64 discId, const QString& apiKey)
{
    try {
        return requestConfigurations(kind, discId, apiKey);
    } catch (const std::exception&) {  // out of memory
        return {};
    }
}

}  // namespace service
