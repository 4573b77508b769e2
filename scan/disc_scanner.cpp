#include "scan/disc_scanner.h"

#include "app/log.h"
#include "bdmeta/bluray_disc.h"
#include "dvdmeta/dvd_disc.h"
#include "scan/bluray_flow.h"
#include "scan/configuration_refresh.h"
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

// Texts that take no memory to make.

QString noMemoryText()
{
    return QStringLiteral(QT_TRANSLATE_NOOP("Messages", "There is not enough memory to read the disc."));
}

QString unexpectedText()
{
    return QStringLiteral(QT_TRANSLATE_NOOP("Messages", "The disc could not be read: an unexpected error."));
}

using ReaderError = std::array<char, kErrorCapacity>;

// Each reads a disc of its kind and runs its flow; empty where the path is no such disc, with the reader's
// words in `error`.

std::optional<DiscScanResult> scanBluray(const QByteArray& path, const QString& apiKey, bool addIfMissing,
                                         ReaderError& error)
{
    logging::log(logging::kBdmeta, logging::kInfo, QStringLiteral("started parsing"));
    bdmeta::BlurayDisc disc;
    if (bdmeta::readBlurayDisc(path.constData(), &disc, error.data(), error.size()) != 0) {
        return std::nullopt;
    }
    logging::log(logging::kBdmeta, logging::kInfo,
                 QStringLiteral("finished parsing: %1 playlists, %2 clips")
                     .arg(disc.playlists.size())
                     .arg(disc.clips.size()));
    return scan::runBlurayFlow(&disc, apiKey, addIfMissing);
}

std::optional<DiscScanResult> scanDvd(const QByteArray& path, const QString& apiKey, bool addIfMissing,
                                      ReaderError& error)
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

void logFinished(const DiscScanResult& result)
{
    const bool isDvd = result.discType == DiscType::Dvd;
    const QByteArray& sha256 = isDvd ? result.dvdPackageSha256 : result.blurayPackageSha256;
    logging::log(logging::kPlatterscope, logging::kInfo,
                 QStringLiteral("scan finished: %1, %2 titles, package SHA-256 %3")
                     .arg(isDvd ? QStringLiteral("DVD") : QStringLiteral("Blu-ray"))
                     .arg(isDvd ? result.dvdTitles.size() : result.blurayTitles.size())
                     .arg(QLatin1StringView(sha256.toHex())));
}

DiscScanResult scanPath(const QString& path, const QString& apiKey, bool addIfMissing)
{
    logging::log(logging::kPlatterscope, logging::kInfo, QStringLiteral("scan started: %1").arg(path));
    if (!service::isConfiguredKey(apiKey)) { return scan::errorResult(service::kApiKeyNotConfigured); }

    // A disc that is both is a Blu-ray.
    std::optional<DiscScanResult> result;
    ReaderError blurayError = {};
    ReaderError dvdError = {};
    {
        const service::HttpLibrary library;
        const QByteArray localPath = path.toLocal8Bit();
        result = scanBluray(localPath, apiKey, addIfMissing, blurayError);
        if (!result) {
            logging::log(logging::kBdmeta, logging::kInfo,
                         QStringLiteral("not a Blu-ray source; trying DVD parsing"));
            result = scanDvd(localPath, apiKey, addIfMissing, dvdError);
        }
    }
    if (!result) {
        logging::log(logging::kBdmeta, logging::kError, QString::fromLocal8Bit(blurayError.data()));
        logging::log(logging::kDvdmeta, logging::kError, QString::fromLocal8Bit(dvdError.data()));
        return scan::errorResult(kNoDisc);
    }
    if (result->ok != 0) { logFinished(*result); }
    return *std::move(result);
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
        return ::scan::errorResult(noMemoryText());
    } catch (...) {  // the work of a thread must not throw, whatever the disc
        return ::scan::errorResult(unexpectedText());
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
