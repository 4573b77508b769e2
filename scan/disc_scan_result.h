// The result of a scan: one plain value that owns all it contains, failures included.
#pragma once

#include "base/message.h"
#include "service/configurations.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// The stream records of a title, of either disc kind. A text that the disc does not contain is empty.

struct VideoStreamInfo {
    QString codecName;
    quint32 width = 0;
    quint32 height = 0;
    QString formatName;     // "1080p"; Blu-ray only
    QString frameRateName;  // "23.976 Hz"; Blu-ray only
    int category = 0;       // the stream's group: 1 primary, 6 secondary, 7 enhancement
    quint32 pid = 0;        // Blu-ray: the transport stream's PID; DVD: the stream id in the program stream
};

struct AudioTrackInfo {
    QString language;  // the code as stored
    QString codecName;
    QString channelLayout;
    QString sampleRate;
    quint32 pid = 0;
};

struct SubtitleTrackInfo {
    QString language;
    QString format;
    QString characterEncoding;
    quint32 pid = 0;
};

struct DvdTitleInfo {
    quint32 titleNumber = 0;  // 1-based
    quint32 videoWidth = 0;
    quint32 videoHeight = 0;
    QString videoCodec;
    quint64 durationMs = 0;
    quint64 playbackSizeBytes = 0;  // of angle 1
    bool isSizeEstimated = false;
    quint32 chapterCount = 0;
    quint32 angleCount = 0;
    QList<VideoStreamInfo> videoStreams;
    QList<AudioTrackInfo> audioTracks;
    QList<SubtitleTrackInfo> subtitleTracks;
    quint64 distinctDurationMs = 0;  // with every cell counted once
};

struct BlurayTitleInfo {
    quint32 playlistId = 0;
    quint32 videoWidth = 0;
    quint32 videoHeight = 0;
    quint64 durationMs = 0;
    quint64 playbackSizeBytes = 0;  // of angle 1
    bool isSizeEstimated = false;   // a clip counts whole; otherwise the sizes come from packet ranges
    quint32 clipCount = 0;
    quint32 angleCount = 0;
    quint32 alternateAngleItemCount = 0;
    quint32 chapterCount = 0;
    quint32 playmarkCount = 0;
    quint32 videoStreamCount = 0;
    quint32 primaryAudioCount = 0;
    quint32 primarySubtitleCount = 0;
    quint32 interactiveGraphicsCount = 0;
    quint32 secondaryVideoCount = 0;
    QStringList segmentMap;  // clip ids in playing order
    QStringList videoCodecNames;
    QList<VideoStreamInfo> videoStreams;
    QList<AudioTrackInfo> audioTracks;
    QList<SubtitleTrackInfo> subtitleTracks;
    QString name;                    // "#1 00800"
    QString label;                   // "#1 00800 (1 angles)"
    quint64 distinctDurationMs = 0;  // with every stretch of a clip counted once
};

// Totals over all titles.
struct DiscSummary {
    quint64 titleCount = 0;
    quint64 durationMs = 0;
    quint64 playbackSizeBytes = 0;
    quint64 chapterCount = 0;
};
static_assert(sizeof(DiscSummary) == 32);

enum class DiscType : qint32 { None = 0, Dvd = 1, Bluray = 2 };

struct DiscScanResult {
    qint32 ok = 0;  // the scan, and any lookup or add it asked for, ended without error
    DiscType discType = DiscType::None;
    qint64 discId = 0;  // the service's id of the disc; 0 when unknown
    bool inDatabase = false;
    QList<service::DiscConfiguration> configurations;
    QString errorMessage;  // of `error`, in English; empty if ok
    QString newDiscUrl;    // the web page that completes the disc's entry; empty if discId is 0
    QByteArray dvdPackage;
    QByteArray dvdPackageSha256;  // 32 raw bytes
    QByteArray blurayPackage;
    QByteArray blurayPackageSha256;
    QList<DvdTitleInfo> dvdTitles;
    DiscSummary discSummary;
    QList<BlurayTitleInfo> blurayTitles;
    QString blurayDiscName;
    QString blurayDiscLabel;
    QByteArray blurayDiscIdBytes;  // 16 raw bytes
    quint64 extra = 0;             // reserved, carried along
    QList<Message> readerErrors;   // of a refused path: the Blu-ray reader's error, then the DVD reader's
    QList<Message> readWarnings;   // optional files that exist but cannot be read, with the reason
    Message error;                 // for the user, if not ok
};

// The package and its digest, of either disc kind.
[[nodiscard]] inline const QByteArray& packageOf(const DiscScanResult& result)
{
    return result.discType == DiscType::Dvd ? result.dvdPackage : result.blurayPackage;
}

[[nodiscard]] inline const QByteArray& packageSha256Of(const DiscScanResult& result)
{
    return result.discType == DiscType::Dvd ? result.dvdPackageSha256 : result.blurayPackageSha256;
}
