#include "scan/disc_scanner.h"

#include "base/log.h"
#include "scan/configuration_refresh.h"
#include "scan/disc_lookup.h"
#include "scan/disc_reader.h"
#include "scan/error_result.h"
#include "service/api_key_store.h"
#include "service/http_client.h"

#include <new>

namespace {

constexpr char kUnexpected[] =
    QT_TRANSLATE_NOOP("Messages", "The disc could not be read: an unexpected error.");

void logFinished(const DiscScanResult& result)
{
    const bool isDvd = result.discType == DiscType::Dvd;
    logging::log(logging::kPlatterscope, logging::kInfo,
                 QStringLiteral("scan finished: %1, %2 titles, package SHA-256 %3")
                     .arg(isDvd ? QStringLiteral("DVD") : QStringLiteral("Blu-ray"))
                     .arg(isDvd ? result.dvdTitles.size() : result.blurayTitles.size())
                     .arg(QLatin1StringView(packageSha256Of(result).toHex())));
}

DiscScanResult scanPath(const QString& path, const QString& apiKey, bool addIfMissing)
{
    logging::log(logging::kPlatterscope, logging::kInfo, QStringLiteral("scan started: %1").arg(path));
    if (!service::isConfiguredKey(apiKey)) { return scan::errorResult(service::kApiKeyNotConfigured); }

    const service::HttpLibrary library;
    const scan::ParsedDisc disc = scan::readDisc(path.toLocal8Bit());
    DiscScanResult result = scan::describeDisc(disc);
    if (result.discType != DiscType::None) { scan::lookUpDisc(result, apiKey, addIfMissing); }
    if (result.ok != 0) { logFinished(result); }
    return result;
}

}  // namespace

DiscScanner::DiscScanner(QObject* parent)
    : QObject(parent)
{}

DiscScanResult DiscScanner::scan(const QString& path, bool addIfMissing) const
{
    const logging::ScopedSwitch loggingSwitch(m_loggingEnabled);
    try {
        return scanPath(path, m_apiKey, addIfMissing);
    } catch (const std::bad_alloc&) {
        return ::scan::errorResult(::scan::kNoMemory);
    } catch (...) {  // the work of a thread must not throw
        return ::scan::errorResult(kUnexpected);
    }
}

DiscScanResult DiscScanner::refreshConfigurations(const DiscScanResult& previous) const
{
    const logging::ScopedSwitch loggingSwitch(m_loggingEnabled);
    return ::scan::refreshConfigurations(previous, m_apiKey);
}

service::AuthenticationOutcome DiscScanner::authenticate() const
{
    const logging::ScopedSwitch loggingSwitch(m_loggingEnabled);
    return service::authenticate(m_apiKey);
}
