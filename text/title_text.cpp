#include "text/title_text.h"

#include "text/language_name.h"

#include <QCoreApplication>
#include <QStringList>

#include <array>

namespace titletext {

namespace {

// The names of formats, codecs and layouts that the readers use, except those that are the same in every language.
[[maybe_unused]] constexpr std::array kTerms = {
    QT_TRANSLATE_NOOP("DiscWord", "Unknown"),          QT_TRANSLATE_NOOP("DiscWord", "MPEG-1 audio"),
    QT_TRANSLATE_NOOP("DiscWord", "MPEG-2 audio"),     QT_TRANSLATE_NOOP("DiscWord", "AC-3 Plus secondary"),
    QT_TRANSLATE_NOOP("DiscWord", "DTS-HD secondary"), QT_TRANSLATE_NOOP("DiscWord", "Presentation graphics"),
    QT_TRANSLATE_NOOP("DiscWord", "Text subtitle"),    QT_TRANSLATE_NOOP("DiscWord", "DVD subpicture"),
    QT_TRANSLATE_NOOP("DiscWord", "Multi-channel"),    QT_TRANSLATE_NOOP("DiscWord", "Combo"),
    QT_TRANSLATE_NOOP("DiscWord", "1 channels"),       QT_TRANSLATE_NOOP("DiscWord", "2 channels"),
    QT_TRANSLATE_NOOP("DiscWord", "3 channels"),       QT_TRANSLATE_NOOP("DiscWord", "4 channels"),
    QT_TRANSLATE_NOOP("DiscWord", "5 channels"),       QT_TRANSLATE_NOOP("DiscWord", "6 channels"),
    QT_TRANSLATE_NOOP("DiscWord", "7 channels"),       QT_TRANSLATE_NOOP("DiscWord", "8 channels"),
};

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TitleText)
};

// The role of a video stream, from the number of the stream table's group that lists it.
QString roleName(int category)
{
    switch (category) {
    case 1:
        return Texts::tr("Primary");
    case 6:
        return Texts::tr("Secondary");
    case 7:
        return Texts::tr("Dolby Vision enhancement");
    default:
        return Texts::tr("Unknown (0x%1)").arg(category, 0, 16);
    }
}

QString withoutEmpty(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(QLatin1StringView(", "));
}

}  // namespace

QString unknownIfEmpty(const QString& text)
{
    return text.isEmpty() ? Texts::tr("Unknown") : text;
}

QString translatedTerm(const QString& english)
{
    return QCoreApplication::translate("DiscWord", english.toUtf8().constData());
}

QString label(const BlurayTitleInfo& title)
{
    return Texts::tr("%1 (%2 angles)").arg(title.name, QString::number(title.angleCount));
}

QString duration(quint64 durationMs)
{
    const quint64 total = durationMs / 1000;
    const quint64 hours = total / 3600;
    const quint64 minutes = total / 60 - 60 * hours;
    const quint64 seconds = total % 60;

    // Not the toolkit's handling of %n, which would choose plural forms.
    const auto counted = [](QString text, quint64 count) {
        return text.replace(QLatin1StringView("%n"), QString::number(count));
    };
    QStringList parts;
    if (hours > 0) { parts.append(counted(Texts::tr("%n Hour"), hours)); }
    if (minutes > 0) { parts.append(counted(Texts::tr("%n Minute"), minutes)); }
    if (seconds > 0 || parts.isEmpty()) { parts.append(counted(Texts::tr("%n Second"), seconds)); }
    return parts.join(QLatin1Char(' '));
}

QString titleSummary(quint32 chapterCount, quint64 durationMs)
{
    return Texts::tr("%1 Chapters, %2").arg(QString::number(chapterCount), duration(durationMs));
}

QString summary(const VideoStreamInfo& stream)
{
    const QString size =
        stream.width > 0 ? Texts::tr("%1x%2").arg(stream.width).arg(stream.height) : QString();
    return withoutEmpty({unknownIfEmpty(translatedTerm(stream.codecName)), size,
                         translatedTerm(stream.formatName), translatedTerm(stream.frameRateName)});
}

QString summary(const AudioTrackInfo& stream)
{
    return withoutEmpty({unknownIfEmpty(languageName(stream.language)),
                         unknownIfEmpty(translatedTerm(stream.codecName)),
                         translatedTerm(stream.channelLayout), translatedTerm(stream.sampleRate)});
}

QString summary(const SubtitleTrackInfo& stream)
{
    return withoutEmpty({unknownIfEmpty(languageName(stream.language)),
                         unknownIfEmpty(translatedTerm(stream.format)), stream.characterEncoding});
}

namespace {

QString streamId(quint32 id, DiscType discType)
{
    const QString text =
        discType == DiscType::Bluray ? Texts::tr("PID 0x%1 (%2)") : Texts::tr("stream ID 0x%1 (%2)");
    return text.arg(QString::number(id, 16).toUpper(), QString::number(id));
}

}  // namespace

QString toolTip(const VideoStreamInfo& stream, DiscType discType)
{
    return streamId(stream.pid, discType);
}

QString toolTip(const AudioTrackInfo& stream, DiscType discType)
{
    return withoutEmpty({unknownIfEmpty(languageName(stream.language)), streamId(stream.pid, discType)});
}

QString toolTip(const SubtitleTrackInfo& stream, DiscType discType)
{
    return withoutEmpty({unknownIfEmpty(languageName(stream.language)), streamId(stream.pid, discType)});
}

namespace {

// The lines of a title that details() and matchingDetails() share.

QString facts(const DvdTitleInfo& title)
{
    const QString sizeLine = title.isSizeEstimated
                                 ? Texts::tr("Playback size (angle 1, estimated): %1 bytes\n")
                                 : Texts::tr("Playback size (angle 1): %1 bytes\n");
    return Texts::tr("Resolution: %1x%2\n").arg(title.videoWidth).arg(title.videoHeight) +
           Texts::tr("Video codec: %1\n").arg(unknownIfEmpty(translatedTerm(title.videoCodec))) +
           Texts::tr("Duration: %1\n").arg(duration(title.durationMs)) +
           sizeLine.arg(title.playbackSizeBytes) + Texts::tr("Chapters: %1\n").arg(title.chapterCount) +
           Texts::tr("Angles: %1\n").arg(title.angleCount) +
           Texts::tr("Audio tracks: %1\n").arg(title.audioTracks.size()) +
           Texts::tr("Subtitle tracks: %1\n").arg(title.subtitleTracks.size());
}

QString facts(const BlurayTitleInfo& title)
{
    const QString sizeLine = title.isSizeEstimated
                                 ? Texts::tr("Playback size (angle 1, estimated): %1 bytes\n")
                                 : Texts::tr("Playback size (angle 1, approx): %1 bytes\n");
    return Texts::tr("Playlist ID: %1\n").arg(title.playlistId) +
           Texts::tr("Resolution: %1x%2\n").arg(title.videoWidth).arg(title.videoHeight) +
           Texts::tr("Duration: %1\n").arg(duration(title.durationMs)) +
           sizeLine.arg(title.playbackSizeBytes) + Texts::tr("Clips: %1\n").arg(title.clipCount) +
           Texts::tr("Angles: %1\n").arg(title.angleCount) +
           Texts::tr("Alternate-angle PlayItems: %1\n").arg(title.alternateAngleItemCount) +
           Texts::tr("Chapters: %1\n").arg(title.chapterCount) +
           Texts::tr("Playmarks: %1\n").arg(title.playmarkCount) +
           Texts::tr("Video streams: %1\n").arg(title.videoStreamCount) +
           Texts::tr("Video codecs: %1\n")
               .arg(unknownIfEmpty(title.videoCodecNames.join(QLatin1StringView(", ")))) +
           Texts::tr("Primary audio tracks: %1\n").arg(title.primaryAudioCount) +
           Texts::tr("Primary subtitle tracks: %1\n").arg(title.primarySubtitleCount) +
           Texts::tr("IG (menu) streams: %1\n").arg(title.interactiveGraphicsCount) +
           Texts::tr("Secondary video: %1\n").arg(title.secondaryVideoCount);
}

QString segments(const BlurayTitleInfo& title)
{
    return title.segmentMap.join(QLatin1StringView(", "));
}

}  // namespace

QString details(const DvdTitleInfo& title)
{
    return Texts::tr("Title number: %1\n").arg(title.titleNumber) + facts(title);
}

QString details(const BlurayTitleInfo& title)
{
    return facts(title) + Texts::tr("Segment map (clip IDs):\n") + segments(title) + QLatin1Char('\n');
}

QString matchingDetails(const DvdTitleInfo& title)
{
    return Texts::tr("Title Number: %1\n").arg(title.titleNumber) + facts(title);
}

QString matchingDetails(const BlurayTitleInfo& title)
{
    return facts(title) + Texts::tr("Segment map (clip IDs): %1\n").arg(segments(title));
}

QString heading(const VideoStreamInfo& /*stream*/)
{
    return Texts::tr("Video track");
}

QString heading(const AudioTrackInfo& /*stream*/)
{
    return Texts::tr("Audio track");
}

QString heading(const SubtitleTrackInfo& /*stream*/)
{
    return Texts::tr("Subtitle track");
}

QString facts(const VideoStreamInfo& stream)
{
    return Texts::tr("Codec: %1\n").arg(unknownIfEmpty(translatedTerm(stream.codecName))) +
           Texts::tr("Role: %1\n").arg(roleName(stream.category)) + Texts::tr("PID: %1\n").arg(stream.pid);
}

QString facts(const AudioTrackInfo& stream)
{
    return Texts::tr("Language: %1\n").arg(unknownIfEmpty(stream.language)) +
           Texts::tr("Codec: %1\n").arg(unknownIfEmpty(translatedTerm(stream.codecName))) +
           Texts::tr("Channel layout: %1\n").arg(unknownIfEmpty(translatedTerm(stream.channelLayout))) +
           Texts::tr("Sample rate: %1\n").arg(unknownIfEmpty(translatedTerm(stream.sampleRate))) +
           Texts::tr("PID: %1\n").arg(stream.pid);
}

QString facts(const SubtitleTrackInfo& stream)
{
    return Texts::tr("Language: %1\n").arg(unknownIfEmpty(stream.language)) +
           Texts::tr("Format: %1\n").arg(unknownIfEmpty(translatedTerm(stream.format))) +
           Texts::tr("Character encoding: %1\n").arg(unknownIfEmpty(stream.characterEncoding)) +
           Texts::tr("PID: %1\n").arg(stream.pid);
}

}  // namespace titletext
