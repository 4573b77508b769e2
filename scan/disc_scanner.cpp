#include "scan/disc_scanner.h"

#include "app/log.h"
#include "dvdmeta/dvd_disc.h"
#include "scan/dvd_flow.h"
#include "scan/error_result.h"
#include "service/api_key_store.h"
#include "service/http_client.h"

#include <array>
#include <new>
#include <optional>

namespace {

constexpr std::size_t kErrorCapacity = 256;

constexpr char kNoDisc[] = QT_TRANSLATE_NOOP("Messages", "Path is not a valid Blu-ray or DVD.");
constexpr char kNoMemory[] = QT_TRANSLATE_NOOP("Messages", "There is not enough memory to read the disc.");

// Reads the DVD and runs its flow; empty where the path is no DVD, with the reader's words in `error`.
std::optional<DiscScanResult> scanDvd(const QByteArray& path, const QString& apiKey, bool addIfMissing,
                                      std::array<char, kErrorCapacity>& error)
{
    logging::log(logging::kDvdmeta, logging::kInfo, QStringLiteral("started parsing"));
    dvdmeta::DvdDisc disc;
    if (dvdmeta::readDvdDisc(path.constData(), &disc, error.data(), error.size()) != 0) {
        return std::nullopt;
    }
    logging::log(logging::kDvdmeta, logging::kInfo,
                 QStringLiteral("finished parsing: %1 titles").arg(disc.titles.size()));
    return scan::runDvdFlow(&disc, apiKey, addIfMissing);
}

void logFinished(const char* kind, qsizetype titleCount, const QByteArray& sha256)
{
    logging::log(logging::kPlatterscope, logging::kInfo,
                 QStringLiteral("scan finished: %1, %2 titles, package SHA-256 %3")
                     .arg(QLatin1StringView(kind))
                     .arg(titleCount)
                     .arg(QLatin1StringView(sha256.toHex())));
}

DiscScanResult scanPath(const QString& path, const QString& apiKey, bool addIfMissing)
{
    logging::log(logging::kPlatterscope, logging::kInfo, QStringLiteral("scan started: %1").arg(path));
    if (!service::isConfiguredKey(apiKey)) { return scan::errorResult(service::kApiKeyNotConfigured); }

    std::optional<DiscScanResult> dvd;
    std::array<char, kErrorCapacity> dvdError = {};
    {
        const service::HttpLibrary library;
        dvd = scanDvd(path.toLocal8Bit(), apiKey, addIfMissing, dvdError);
    }
    if (!dvd) {
        logging::log(logging::kDvdmeta, logging::kError, QString::fromLocal8Bit(dvdError.data()));
        return scan::errorResult(kNoDisc);
    }
    if (dvd->ok != 0) { logFinished("DVD", dvd->dvdTitles.size(), dvd->dvdPackageSha256); }
    return *std::move(dvd);
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
        return ::scan::errorResult(kNoMemory);
    }
}

service::AuthenticationOutcome DiscScanner::authenticate() const
{
    const logging::ScopedSwitch loggingSwitch(m_loggingEnabled);
    return service::authenticate(m_apiKey);
}
