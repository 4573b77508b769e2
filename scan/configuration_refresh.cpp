#include "scan/configuration_refresh.h"

#include "base/log.h"
#include "scan/error_result.h"
#include "service/api_key_store.h"
#include "service/configuration_request.h"

#include <new>
#include <utility>

namespace scan {

namespace {

constexpr char kNotAdded[] = QT_TRANSLATE_NOOP("Messages", "This disc has not been added to Tessera.");
constexpr char kUnsupportedType[] =
    QT_TRANSLATE_NOOP("Messages", "The disc type is not supported by Tessera.");
constexpr char kRefreshFailed[] = QT_TRANSLATE_NOOP("Messages", "Unable to refresh Tessera configurations.");

service::ConfigurationsOutcome requestConfigurations(const DiscScanResult& disc, const QString& apiKey)
{
    const auto failure = [](const char* text) {
        return service::ConfigurationsOutcome{.ok = false, .configurations = {}, .error = text};
    };
    if (!service::isConfiguredKey(apiKey)) { return failure(service::kApiKeyNotConfigured); }
    if (!disc.inDatabase || disc.discId == 0) { return failure(kNotAdded); }
    switch (disc.discType) {
    case DiscType::Dvd:
        return service::getConfigurations(service::DiscKind::Dvd, disc.discId, apiKey);
    case DiscType::Bluray:
        return service::getConfigurations(service::DiscKind::Bluray, disc.discId, apiKey);
    case DiscType::None:
        break;
    }
    return failure(kUnsupportedType);
}

}  // namespace

DiscScanResult refreshConfigurations(const DiscScanResult& previous, const QString& apiKey)
{
    logging::log(logging::kTessera, logging::kInfo, QStringLiteral("configuration refresh started"));
    service::ConfigurationsOutcome outcome;
    try {
        outcome = requestConfigurations(previous, apiKey);
    } catch (const std::bad_alloc&) {  // fails below with the general message
    }
    DiscScanResult result = previous;
    if (!outcome.ok) {
        setError(result, outcome.error.isEmpty() ? Message(kRefreshFailed) : outcome.error);
        result.ok = 0;
        logging::logLines(logging::kTessera, logging::kError, result.errorMessage);
        return result;
    }
    if (result.ok == 0) { setError(result, {}); }  // a successful result may have a note, which stays
    result.ok = 1;
    result.configurations = std::move(outcome.configurations);
    logging::log(logging::kTessera, logging::kInfo,
                 QStringLiteral("configuration refresh finished: %1 configuration(s)")
                     .arg(result.configurations.size()));
    return result;
}

}  // namespace scan
