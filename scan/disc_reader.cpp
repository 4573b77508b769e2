#include "scan/disc_reader.h"

#include "base/log.h"
#include "scan/bluray_flow.h"
#include "scan/dvd_flow.h"
#include "scan/error_result.h"

#include <array>

namespace scan {

namespace {

constexpr std::size_t kErrorCapacity = 256;

constexpr char kNoDisc[] = QT_TRANSLATE_NOOP("Messages", "Path is not a valid Blu-ray or DVD.");

using ReaderError = std::array<char, kErrorCapacity>;

void logWarnings(const std::vector<std::string>& warnings)
{
    for (const std::string& warning : warnings) {
        logging::log(logging::kBdmeta, logging::kWarning, QString::fromLocal8Bit(warning));
    }
}

// Each reads a disc of its kind. False, with the reader's text in `error`, if the path is no such disc.

bool readBluray(const QByteArray& path, bdmeta::BlurayDisc& disc, ReaderError& error)
{
    logging::log(logging::kBdmeta, logging::kInfo, QStringLiteral("started parsing"));
    if (bdmeta::readBlurayDisc(path.constData(), &disc, error.data(), error.size()) != 0) { return false; }
    logging::log(logging::kBdmeta, logging::kInfo,
                 QStringLiteral("finished parsing: %1 playlists, %2 clips")
                     .arg(disc.playlists.size())
                     .arg(disc.clips.size()));
    logWarnings(disc.readWarnings);
    return true;
}

bool readDvd(const QByteArray& path, dvdmeta::DvdDisc& disc, ReaderError& error)
{
    logging::log(logging::kDvdmeta, logging::kInfo, QStringLiteral("started parsing"));
    if (dvdmeta::readDvdDisc(path.constData(), &disc, error.data(), error.size()) != 0) { return false; }
    logging::log(logging::kDvdmeta, logging::kInfo,
                 QStringLiteral("finished parsing: %1 titles").arg(disc.titles.size()));
    return true;
}

}  // namespace

ParsedDisc readDisc(const QByteArray& localPath)
{
    ParsedDisc disc;
    ReaderError blurayError = {};
    auto& bluray = disc.emplace<bdmeta::BlurayDisc>();
    if (readBluray(localPath, bluray, blurayError)) { return disc; }
    const std::vector<std::string> warnings = std::move(bluray.readWarnings);
    logging::log(logging::kBdmeta, logging::kInfo,
                 QStringLiteral("not a Blu-ray source; trying DVD parsing"));
    ReaderError dvdError = {};
    if (readDvd(localPath, disc.emplace<dvdmeta::DvdDisc>(), dvdError)) { return disc; }
    const NoDisc none = {
        {QString::fromLocal8Bit(blurayError.data()), QString::fromLocal8Bit(dvdError.data())}};
    logging::log(logging::kBdmeta, logging::kError, none.readerErrors.first());
    logWarnings(warnings);
    logging::log(logging::kDvdmeta, logging::kError, none.readerErrors.last());
    return none;
}

DiscScanResult describeDisc(const ParsedDisc& disc)
{
    if (const auto* const bluray = std::get_if<bdmeta::BlurayDisc>(&disc)) { return describeBluray(bluray); }
    if (const auto* const dvd = std::get_if<dvdmeta::DvdDisc>(&disc)) { return describeDvd(dvd); }
    DiscScanResult refused = errorResult(kNoDisc);
    refused.readerErrors = std::get<NoDisc>(disc).readerErrors;
    return refused;
}

}  // namespace scan
