#include "report/text_report.h"

#include "base/terminal_text.h"
#include "report/disc_text.h"
#include "text/title_text.h"

#include <QCoreApplication>
#include <QStringList>

namespace report {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TextReport)
};

constexpr char kIndent[] = "  ";

QString printable(const QString& text)
{
    return QString::fromUtf8(terminaltext::line(text));
}

// The title with printable texts. The names of codecs, layouts and formats come from the program, not from the disc.
template <typename Title>
Title printableTitle(Title title)
{
    for (AudioTrackInfo& track : title.audioTracks) {
        track.language = printable(track.language);
    }
    for (SubtitleTrackInfo& track : title.subtitleTracks) {
        track.language = printable(track.language);
    }
    if constexpr (requires { title.segmentMap; }) {
        for (QString& clip : title.segmentMap) {
            clip = printable(clip);
        }
        title.name = printable(title.name);
    }
    return title;
}

QString titleLabel(const BlurayTitleInfo& title)
{
    return titletext::label(title);
}

QString titleLabel(const DvdTitleInfo& title)
{
    return QStringLiteral("#%1").arg(title.titleNumber);
}

QString indented(const QString& lines)
{
    QString text;
    for (const QString& line : lines.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        text += QLatin1StringView(kIndent) + line + QLatin1Char('\n');
    }
    return text;
}

template <typename Stream>
QString streamLines(const QList<Stream>& streams)
{
    QString lines;
    for (const Stream& stream : streams) {
        lines += titletext::heading(stream) + QLatin1StringView(": ") + titletext::summary(stream) +
                 QLatin1Char('\n') + indented(titletext::facts(stream));
    }
    return lines;
}

template <typename Title>
QString titleLines(const QList<Title>& titles)
{
    QString lines;
    for (const Title& raw : titles) {
        const Title title = printableTitle(raw);
        lines += QLatin1Char('\n') + titleLabel(title) + QLatin1StringView(": ") +
                 titletext::titleSummary(title.chapterCount, title.durationMs) + QLatin1Char('\n') +
                 indented(titletext::details(title) + streamLines(title.videoStreams) +
                          streamLines(title.audioTracks) + streamLines(title.subtitleTracks));
    }
    return lines;
}

template <typename Characters>
QString fact(const Characters& stored)
{
    return titletext::unknownIfEmpty(printable(discText(stored)));
}

QString identityLines(const bdmeta::BlurayDisc& disc)
{
    return Texts::tr("Volume identifier: %1\n").arg(fact(disc.volumeId)) +
           Texts::tr("Disc identifier: %1\n").arg(fact(disc.discId)) +
           Texts::tr("Organization identifier: %1\n").arg(fact(disc.organizationId)) +
           Texts::tr("Index version: %1\n").arg(fact(disc.indexVersion)) +
           Texts::tr("Titles in the index: %1\n").arg(disc.titleCount);
}

QString identityLines(const dvdmeta::DvdDisc& disc)
{
    return Texts::tr("Volume identifier: %1\n").arg(fact(disc.volumeLabel)) +
           Texts::tr("Provider: %1\n").arg(fact(disc.providerText));
}

QString identityLines(const scan::NoDisc& /*none*/)
{
    return {};
}

QString totalLines(const DiscSummary& summary)
{
    return Texts::tr("Titles: %1\n").arg(summary.titleCount) +
           Texts::tr("Total duration: %1\n").arg(titletext::duration(summary.durationMs)) +
           Texts::tr("Total playback size (angle 1): %1 bytes\n").arg(summary.playbackSizeBytes) +
           Texts::tr("Total chapters: %1\n").arg(summary.chapterCount);
}

}  // namespace

QString textReport(const QString& path, const scan::ParsedDisc& disc, const DiscScanResult& result)
{
    const bool isDvd = result.discType == DiscType::Dvd;
    return Texts::tr("Disc: %1\n").arg(isDvd ? Texts::tr("DVD") : Texts::tr("Blu-ray")) +
           Texts::tr("Path: %1\n").arg(printable(path)) +
           std::visit([](const auto& model) { return identityLines(model); }, disc) +
           totalLines(result.discSummary) +
           Texts::tr("Package SHA-256: %1\n").arg(QString::fromLatin1(packageSha256Of(result).toHex())) +
           titleLines(result.dvdTitles) + titleLines(result.blurayTitles);
}

}  // namespace report
