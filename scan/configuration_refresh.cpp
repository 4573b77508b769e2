#include "scan/configuration_refresh.h"

#include "base/log.h"
#include "service/api_key_store.h"
#include "service/configuration_request.h"

#include <exception>
#include <utility>

namespace scan {

namespace {

constexpr char kNotAdded[] = QT_TRANSLATE_NOOP("Messages", "This disc has not been added to Tessera.");
constexpr char kUnsupportedType[] =
    QT_TRANSLATE_NOOP("Messages", "The disc type is not supported by Tessera.");

service::ConfigurationsOutcome requestConfigurations(const DiscScanResult& disc, const QString& apiKey)
{
    const auto failure = [](const char* text) {
        return service::ConfigurationsOutcome{
            .ok = false, .configurations = {}, .errorText = QString::fromUtf8(text)};
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

// Needs no memory: the result shares all it holds with the previous one, and the general text is in the program.
DiscScanResult failedRefresh(const DiscScanResult& previous, const QString& text)
{
    DiscScanResult result = previous;
    result.ok = 0;
    result.errorMessage =
        text.isEmpty()
            ? QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Unable to refresh Tessera configurations."))
            : text;
    logging::logLines(logging::kTessera, logging::kError, result.errorMessage);
    return result;
}

}  // namespace

DiscScanResult refreshConfigurations(const DiscScanResult& previous, const QString& apiKey)
{
    logging::log(logging::kTessera, logging::kInfo, QStringLiteral("configuration refresh started"));
    try {
        service::ConfigurationsOutcome outcome = requestConfigurations(previous, apiKey);
        if (!outcome.ok) { return failedRefresh(previous, outcome.errorText); }
        DiscScanResult result = previous;
        if (result.ok == 0) { result.errorMessage.clear(); }  // a note stays, an error is over
        result.ok = 1;
        result.configurations = std::move(outcome.configurations);
        logging::log(logging::kTessera, logging::kInfo,
                     QStringLiteral("configuration refresh finished: %1 configuration(s)")
                         .arg(result.configurations.size()));
        return result;
    } catch (const std::exception&) {  // out of memory
        return failedRefresh(previous, {});
    }
}

}  // namespace scan
