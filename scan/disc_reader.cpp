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

// The failure of a reader: its English text, as it is logged, and its parts.
struct ReaderError {
    std::array<char, kErrorCapacity> text = {};
    discio::Message parts;

    discio::ErrorText out() { return {text.data(), text.size(), &parts}; }
    [[nodiscard]] QString english() const { return QString::fromLocal8Bit(text.data()); }
    [[nodiscard]] Message message() const
    {
        return parts.sentence == nullptr ? Message::verbatim(english()) : messageOf(parts);
    }
};

void logWarnings(const std::vector<discio::Message>& warnings)
{
    for (const discio::Message& warning : warnings) {
        logging::log(logging::kBdmeta, logging::kWarning, messageOf(warning).english());
    }
}

// Each reads a disc of its kind. False, with the reader's failure in `error`, if the path is no such disc.

bool readBluray(const QByteArray& path, bdmeta::BlurayDisc& disc, ReaderError& error)
{
    logging::log(logging::kBdmeta, logging::kInfo, QStringLiteral("started parsing"));
    if (bdmeta::readBlurayDisc(path.constData(), &disc, error.out()) != 0) { return false; }
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
    if (dvdmeta::readDvdDisc(path.constData(), &disc, error.out()) != 0) { return false; }
    logging::log(logging::kDvdmeta, logging::kInfo,
                 QStringLiteral("finished parsing: %1 titles").arg(disc.titles.size()));
    return true;
}

}  // namespace

Message messageOf(const discio::Message& message)
{
    QStringList arguments;
    for (const std::string& argument : message.arguments) {
        arguments.append(QString::fromLocal8Bit(argument));
    }
    return {message.sentence, arguments};
}

ParsedDisc readDisc(const QByteArray& localPath)
{
    ParsedDisc disc;
    ReaderError blurayError;
    auto& bluray = disc.emplace<bdmeta::BlurayDisc>();
    if (readBluray(localPath, bluray, blurayError)) { return disc; }
    const std::vector<discio::Message> warnings = std::move(bluray.readWarnings);
    logging::log(logging::kBdmeta, logging::kInfo,
                 QStringLiteral("not a Blu-ray source; trying DVD parsing"));
    ReaderError dvdError;
    if (readDvd(localPath, disc.emplace<dvdmeta::DvdDisc>(), dvdError)) { return disc; }
    logging::log(logging::kBdmeta, logging::kError, blurayError.english());
    logWarnings(warnings);
    logging::log(logging::kDvdmeta, logging::kError, dvdError.english());
    return NoDisc{{blurayError.message(), dvdError.message()}};
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
