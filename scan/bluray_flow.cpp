#include "scan/bluray_flow.h"

#include "base/log.h"
#include "bdmeta/distinct_play_time.h"
#include "package/bluray_package.h"
#include "scan/disc_reader.h"
#include "scan/error_result.h"

namespace scan {

namespace {

constexpr char kNoMetadata[] = QT_TRANSLATE_NOOP("Messages", "Blu-ray scan metadata is unavailable.");
constexpr char kScanFailed[] = QT_TRANSLATE_NOOP("Messages", "Failed to scan Blu-ray structure.");
constexpr char kNoTitles[] = QT_TRANSLATE_NOOP("Messages", "No titles found on Blu-ray.");
constexpr char kNoPackage[] = QT_TRANSLATE_NOOP("Messages", "Failed to build Blu-ray title package.");

QString text(std::string_view local)
{
    return QString::fromLocal8Bit(local.data(), static_cast<qsizetype>(local.size()));
}

// The readers' name for an unknown code becomes an empty text.
QString emptyIfUnknown(std::string_view name)
{
    return name == "Unknown" ? QString() : text(name);
}

void describeStreams(const bdmeta::BlurayTitle& title, BlurayTitleInfo& info)
{
    for (const bdmeta::BlurayVideoCodec& codec : title.videoCodecs) {
        const QString name = text(codec.codingName);
        if (!info.videoCodecNames.contains(name)) { info.videoCodecNames.append(name); }
        info.videoStreams.append({name, codec.width, codec.height, emptyIfUnknown(codec.videoFormatName),
                                  emptyIfUnknown(codec.frameRateName), static_cast<int>(codec.category),
                                  codec.pid});
    }
    for (const bdmeta::BlurayAudioTrack& track : title.audioTracks) {
        info.audioTracks.append({text(track.language.view()), text(track.name),
                                 emptyIfUnknown(track.channelLayout), emptyIfUnknown(track.sampleRate),
                                 track.pid});
    }
    for (const bdmeta::BluraySubtitleTrack& track : title.subtitleTracks) {
        info.subtitleTracks.append(
            {text(track.language.view()), text(track.format), text(track.characterEncoding), track.pid});
    }
}

BlurayTitleInfo describeTitle(const bdmeta::BlurayTitle& title, const bdmeta::BlurayPlaylist& playlist)
{
    BlurayTitleInfo info;
    info.playlistId = title.titleNumber;
    info.videoWidth = title.width;
    info.videoHeight = title.height;
    info.durationMs = title.durationMs;
    info.playbackSizeBytes = title.playbackSize;
    info.isSizeEstimated = title.approximate;
    info.clipCount = title.clipCount;
    info.angleCount = title.angleCount;
    info.alternateAngleItemCount = title.alternateAngleItemCount;
    info.chapterCount = title.chapterCount;
    info.playmarkCount = title.playmarkCount;
    info.videoStreamCount = title.primaryVideoCount;
    info.primaryAudioCount = title.primaryAudioCount;
    info.primarySubtitleCount = title.subtitleCount;
    info.interactiveGraphicsCount = title.interactiveGraphicsCount;
    info.secondaryVideoCount = title.secondaryVideoCount;
    info.segmentMap.reserve(static_cast<qsizetype>(title.segmentMap.size()));
    for (const bdmeta::ClipName& clip : title.segmentMap) {
        info.segmentMap.append(text(clip.view()));
    }
    describeStreams(title, info);
    info.name = QStringLiteral("#%1 %2").arg(QString::number(title.index + 1), text(playlist.name.view()));
    info.label = QStringLiteral("%1 (%2 angles)").arg(info.name, QString::number(title.angleCount));
    info.distinctDurationMs = bdmeta::distinctPlayTimeMs(playlist);
    return info;
}

void logSizes(const bdmeta::SizeFallback& fallback)
{
    if (fallback.count == 0) {
        logging::log(logging::kBdmeta, logging::kInfo,
                     QStringLiteral("title sizes calculated from CPI packet ranges"));
        return;
    }
    logging::log(
        logging::kBdmeta, logging::kWarning,
        QStringLiteral("title-size calculation used the full-clip fallback for %1 PlayItem(s); first "
                       "occurrence: playlist %2, clip %3")
            .arg(QString::number(fallback.count), text(fallback.firstPlaylist.view()),
                 text(fallback.firstClip.view())));
}

void takeSummary(const bdmeta::BlurayDiscSummary& summary, DiscScanResult& result)
{
    result.blurayDiscName = text(std::string_view(summary.discName));
    result.blurayDiscLabel = text(std::string_view(summary.discLabel));
    result.blurayDiscIdBytes = QByteArray(reinterpret_cast<const char*>(summary.discIdBytes.data()),
                                          static_cast<qsizetype>(summary.discIdBytes.size()));
    result.discSummary = {summary.titleCount, summary.totalDurationMs, summary.totalPlaybackSize,
                          summary.totalChapters};
}

}  // namespace

QList<BlurayTitleInfo> describeBlurayTitles(const bdmeta::BlurayDisc& disc,
                                            std::span<const bdmeta::BlurayTitle> titles)
{
    QList<BlurayTitleInfo> infos;
    infos.reserve(static_cast<qsizetype>(titles.size()));
    for (const bdmeta::BlurayTitle& title : titles) {
        infos.append(describeTitle(title, disc.playlists.at(title.index)));
    }
    return infos;
}

DiscScanResult describeBluray(const bdmeta::BlurayDisc* disc)
{
    if (disc == nullptr) { return errorResult(kNoMetadata); }
    std::vector<bdmeta::BlurayTitle> titles;
    bdmeta::BlurayDiscSummary summary;
    bdmeta::SizeFallback fallback;
    discio::ReadBudget budget;
    if (bdmeta::deriveBlurayTitles(disc, &titles, &summary, &fallback, budget) != 0) {
        if (const char* const bound = budget.reached()) {
            logging::log(logging::kBdmeta, logging::kError, QString::fromLatin1(bound));
        }
        return errorResult(kScanFailed);
    }
    logSizes(fallback);
    if (titles.empty()) { return errorResult(kNoTitles); }

    DiscScanResult result;
    result.discType = DiscType::Bluray;
    result.blurayTitles = describeBlurayTitles(*disc, titles);
    for (const discio::Message& warning : disc->readWarnings) {
        result.readWarnings.append(messageOf(warning));
    }
    takeSummary(summary, result);
    Message packageError;
    result.blurayPackage =
        package::buildBlurayPackage(disc, titles, &summary, &result.blurayPackageSha256, &packageError);
    if (result.blurayPackage.isEmpty()) {
        return errorResult(packageError.isEmpty() ? kNoPackage : packageError);
    }
    return result;
}

}  // namespace scan
