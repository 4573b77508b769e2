#include "report/json_report.h"

#include "base/terminal_text.h"
#include "report/disc_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace report {

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr quint64 kMaxExactNumber = (quint64{1} << 53U) - 1;

QJsonValue number(quint64 value)
{
    if (value > kMaxExactNumber) { return QString::number(value); }
    return static_cast<qint64>(value);
}

template <typename Bytes>
QString hexadecimal(const Bytes& bytes)
{
    const QByteArray raw(reinterpret_cast<const char*>(std::data(bytes)),
                         static_cast<qsizetype>(std::size(bytes)));
    return QString::fromLatin1(raw.toHex());
}

QJsonObject object(const VideoStreamInfo& stream)
{
    return {
        {u"codecName"_s, stream.codecName},
        {u"width"_s, number(stream.width)},
        {u"height"_s, number(stream.height)},
        {u"formatName"_s, stream.formatName},
        {u"frameRateName"_s, stream.frameRateName},
        {u"category"_s, stream.category},
        {u"pid"_s, number(stream.pid)},
    };
}

QJsonValue object(const Message& message)
{
    return message.english();
}

QJsonObject object(const AudioTrackInfo& track)
{
    return {
        {u"language"_s, track.language},
        {u"codecName"_s, track.codecName},
        {u"channelLayout"_s, track.channelLayout},
        {u"sampleRate"_s, track.sampleRate},
        {u"pid"_s, number(track.pid)},
    };
}

QJsonObject object(const SubtitleTrackInfo& track)
{
    return {
        {u"language"_s, track.language},
        {u"format"_s, track.format},
        {u"characterEncoding"_s, track.characterEncoding},
        {u"pid"_s, number(track.pid)},
    };
}

QJsonObject object(const DvdTitleInfo& title);
QJsonObject object(const BlurayTitleInfo& title);

template <typename Record>
QJsonArray array(const QList<Record>& records)
{
    QJsonArray objects;
    for (const Record& record : records) {
        objects.append(object(record));
    }
    return objects;
}

// The members that the titles of both kinds of disc have.
template <typename Title>
QJsonObject commonMembers(const Title& title)
{
    return {
        {u"videoWidth"_s, number(title.videoWidth)},
        {u"videoHeight"_s, number(title.videoHeight)},
        {u"durationMs"_s, number(title.durationMs)},
        {u"playbackSizeBytes"_s, number(title.playbackSizeBytes)},
        {u"isSizeEstimated"_s, title.isSizeEstimated},
        {u"chapterCount"_s, number(title.chapterCount)},
        {u"angleCount"_s, number(title.angleCount)},
        {u"videoStreams"_s, array(title.videoStreams)},
        {u"audioTracks"_s, array(title.audioTracks)},
        {u"subtitleTracks"_s, array(title.subtitleTracks)},
    };
}

QJsonObject object(const DvdTitleInfo& title)
{
    QJsonObject members = commonMembers(title);
    members[u"titleNumber"_s] = number(title.titleNumber);
    members[u"videoCodec"_s] = title.videoCodec;
    return members;
}

QJsonObject object(const BlurayTitleInfo& title)
{
    QJsonObject members = commonMembers(title);
    members[u"playlistId"_s] = number(title.playlistId);
    members[u"label"_s] = title.label;
    members[u"clipCount"_s] = number(title.clipCount);
    members[u"alternateAngleItemCount"_s] = number(title.alternateAngleItemCount);
    members[u"playmarkCount"_s] = number(title.playmarkCount);
    members[u"videoStreamCount"_s] = number(title.videoStreamCount);
    members[u"primaryAudioCount"_s] = number(title.primaryAudioCount);
    members[u"primarySubtitleCount"_s] = number(title.primarySubtitleCount);
    members[u"interactiveGraphicsCount"_s] = number(title.interactiveGraphicsCount);
    members[u"secondaryVideoCount"_s] = number(title.secondaryVideoCount);
    members[u"segmentMap"_s] = QJsonArray::fromStringList(title.segmentMap);
    members[u"videoCodecNames"_s] = QJsonArray::fromStringList(title.videoCodecNames);
    return members;
}

QJsonObject object(const DiscSummary& summary)
{
    return {
        {u"titleCount"_s, number(summary.titleCount)},
        {u"durationMs"_s, number(summary.durationMs)},
        {u"playbackSizeBytes"_s, number(summary.playbackSizeBytes)},
        {u"chapterCount"_s, number(summary.chapterCount)},
    };
}

QJsonObject object(const dvdmeta::DvdDisc& disc)
{
    return {
        {u"providerText"_s, discText(disc.providerText)}, {u"providerRaw"_s, hexadecimal(disc.providerRaw)},
        {u"hasVolumeInfo"_s, disc.hasVolumeInfo},         {u"volumeLabel"_s, discText(disc.volumeLabel)},
        {u"volumeRaw"_s, hexadecimal(disc.volumeRaw)},
    };
}

QJsonObject object(const bdmeta::BlurayDisc& disc)
{
    return {
        {u"volumeId"_s, discText(disc.volumeId)},
        {u"volumeIdBytes"_s, hexadecimal(disc.volumeId)},
        {u"indexVersion"_s, discText(disc.indexVersion)},
        {u"organizationId"_s, discText(disc.organizationId)},
        {u"discId"_s, discText(disc.discId)},
        {u"titleCount"_s, number(disc.titleCount)},
    };
}

QJsonObject identity(const scan::ParsedDisc& disc, const DiscScanResult& result)
{
    QJsonObject members;
    if (const auto* const bluray = std::get_if<bdmeta::BlurayDisc>(&disc)) {
        members = object(*bluray);
        members[u"discIdBytes"_s] = hexadecimal(result.blurayDiscIdBytes);
    } else if (const auto* const dvd = std::get_if<dvdmeta::DvdDisc>(&disc)) {
        members = object(*dvd);
    }
    members[u"discSummary"_s] = object(result.discSummary);
    return members;
}

}  // namespace

QByteArray jsonReport(const QString& path, const scan::ParsedDisc& disc, const DiscScanResult& result)
{
    const bool isDvd = result.discType == DiscType::Dvd;
    const QJsonObject report = {
        {u"schema"_s, QString::fromLatin1(kJsonSchema)},
        {u"kind"_s, isDvd ? u"dvd"_s : u"bluray"_s},
        {u"path"_s, path},
        {u"disc"_s, identity(disc, result)},
        {u"titles"_s, isDvd ? array(result.dvdTitles) : array(result.blurayTitles)},
        {u"warnings"_s, array(result.readWarnings)},
        {u"packageSha256"_s, hexadecimal(packageSha256Of(result))},
    };
    return terminaltext::json(QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
}

}  // namespace report
