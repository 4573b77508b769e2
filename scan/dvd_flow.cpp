#include "scan/dvd_flow.h"

#include "base/log.h"
#include "dvdmeta/distinct_play_time.h"
#include "package/dvd_package.h"
#include "scan/error_result.h"

#include <algorithm>

namespace scan {

namespace {

constexpr char kNoMetadata[] = QT_TRANSLATE_NOOP("Messages", "DVD scan metadata is unavailable.");
constexpr char kNoTitles[] = QT_TRANSLATE_NOOP("Messages", "No titles found on DVD.");
constexpr char kNoPackage[] = QT_TRANSLATE_NOOP("Messages", "Failed to build DVD title package.");

// First stream ids of the program stream. A stream's id is the first of its kind plus the stream's index.
constexpr quint32 kVideoStreamId = 0xE0;
constexpr quint32 kFirstSubpictureId = 0x20;

constexpr int kPrimaryVideo = 1;

quint32 firstAudioId(std::uint8_t codingMode)
{
    switch (codingMode) {
    case 0:
        return 0x80;  // AC-3
    case 2:
    case 3:
        return 0xC0;  // MPEG audio
    case 4:
        return 0xA0;  // LPCM
    case 5:
        return 0x90;  // SDDS
    case 6:
        return 0x88;  // DTS
    default:
        return 0;
    }
}

QString languageText(const dvdmeta::DvdLanguage& language)
{
    if (language[0] == 0 || language[1] == 0) { return {}; }
    return QString::fromLatin1(language.data(), static_cast<qsizetype>(language.size()));
}

void describeStreams(const dvdmeta::DvdStreamAttributes& streams, DvdTitleInfo& info)
{
    const QString videoCodec = QString::fromStdString(streams.video.formatName);
    info.videoWidth = streams.video.width;
    info.videoHeight = streams.video.height;
    info.videoCodec = videoCodec;
    info.videoStreams.append(
        {videoCodec, info.videoWidth, info.videoHeight, {}, {}, kPrimaryVideo, kVideoStreamId});
    quint32 index = 0;
    for (const dvdmeta::DvdAudioStream& audio : streams.audio) {
        info.audioTracks.append({languageText(audio.language), QString::fromStdString(audio.codingName),
                                 QString::fromStdString(audio.channels),
                                 QString::fromStdString(audio.sampleRateName),
                                 firstAudioId(audio.codingMode) + index++});
    }
    index = 0;
    for (const dvdmeta::DvdSubpictureStream& subpicture : streams.subpicture) {
        info.subtitleTracks.append({languageText(subpicture.language),
                                    QString::fromStdString(subpicture.codingName),
                                    {},
                                    kFirstSubpictureId + index++});
    }
}

}  // namespace

QList<DvdTitleInfo> describeDvdTitles(const dvdmeta::DvdDisc& disc)
{
    QList<DvdTitleInfo> titles;
    titles.reserve(static_cast<qsizetype>(disc.titles.size()));
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        DvdTitleInfo info;
        info.titleNumber = title.titleNumber;
        info.durationMs = title.durationMs;
        info.playbackSizeBytes = title.playbackSizeBytes;
        info.isSizeEstimated = title.isSizeEstimated();
        info.chapterCount = title.chapterCount;
        info.angleCount = title.angleCount;
        describeStreams(title.streams, info);
        info.distinctDurationMs = dvdmeta::distinctPlayTimeMs(title.cells);
        titles.append(info);
    }
    return titles;
}

DiscScanResult describeDvd(const dvdmeta::DvdDisc* disc)
{
    if (disc == nullptr) { return errorResult(kNoMetadata); }
    if (disc->titles.empty()) { return errorResult(kNoTitles); }

    DiscScanResult result;
    result.discType = DiscType::Dvd;
    result.dvdTitles = describeDvdTitles(*disc);
    const auto estimatedCount = std::ranges::count_if(
        result.dvdTitles, [](const DvdTitleInfo& title) { return title.isSizeEstimated; });
    if (estimatedCount > 0) {
        logging::log(
            logging::kDvdmeta, logging::kWarning,
            QStringLiteral("default angle-1 playback size is estimated for %1 title(s) with complex angle "
                           "or PGC navigation")
                .arg(estimatedCount));
    }

    const package::DvdDiscTotals totals = package::sumDvdTitles(*disc);
    result.discSummary = {totals.titleCount, totals.durationMs, totals.playbackSizeBytes, 0};
    for (const DvdTitleInfo& title : result.dvdTitles) {
        result.discSummary.chapterCount += title.chapterCount;
    }

    Message packageError;
    result.dvdPackage = package::buildDvdPackage(disc, &totals, &result.dvdPackageSha256, &packageError);
    if (result.dvdPackage.isEmpty()) {
        return errorResult(packageError.isEmpty() ? kNoPackage : packageError);
    }
    return result;
}

}  // namespace scan
