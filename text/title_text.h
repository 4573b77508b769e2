// Titles and their streams in words: rows, one-line summaries and details, for the titles view and for reports.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace titletext {

// "1 Hour 1 Minute 1 Second": whole seconds, without the parts that are 0; "0 Second" if all are. The words have no
// plural forms.
[[nodiscard]] QString duration(quint64 durationMs);

// The description of a title's row: chapters and duration.
[[nodiscard]] QString titleSummary(quint32 chapterCount, quint64 durationMs);

// The description of a stream's row: the language's name first, then the other facts that distinguish streams.
[[nodiscard]] QString summary(const VideoStreamInfo& stream);
[[nodiscard]] QString summary(const AudioTrackInfo& stream);
[[nodiscard]] QString summary(const SubtitleTrackInfo& stream);

// Returns `text`, or "Unknown" if it is empty.
[[nodiscard]] QString unknownIfEmpty(const QString& text);

// A format's, codec's or layout's name in the user's language; an empty one stays empty.
[[nodiscard]] QString translatedTerm(const QString& english);

// The title's label in the user's language: "#1 00800 (1 angles)".
[[nodiscard]] QString label(const BlurayTitleInfo& title);

// The tool tip of a stream's row: "English, PID 0x1100 (4352)", without the language for a video stream. A DVD's
// streams have no PID but an id in the program stream: "English, stream ID 0x80 (128)".
[[nodiscard]] QString toolTip(const VideoStreamInfo& stream, DiscType discType);
[[nodiscard]] QString toolTip(const AudioTrackInfo& stream, DiscType discType);
[[nodiscard]] QString toolTip(const SubtitleTrackInfo& stream, DiscType discType);

// The details, one fact a line; every line ends with a line break. A fact that the disc does not state is "Unknown".
[[nodiscard]] QString details(const DvdTitleInfo& title);
[[nodiscard]] QString details(const BlurayTitleInfo& title);

// The details of a title of a configuration, where one line is worded differently.
[[nodiscard]] QString matchingDetails(const DvdTitleInfo& title);
[[nodiscard]] QString matchingDetails(const BlurayTitleInfo& title);

// The facts of a stream, in lines as in details().
[[nodiscard]] QString facts(const VideoStreamInfo& stream);
[[nodiscard]] QString facts(const AudioTrackInfo& stream);
[[nodiscard]] QString facts(const SubtitleTrackInfo& stream);

// "Video track", "Audio track" or "Subtitle track".
[[nodiscard]] QString heading(const VideoStreamInfo& stream);
[[nodiscard]] QString heading(const AudioTrackInfo& stream);
[[nodiscard]] QString heading(const SubtitleTrackInfo& stream);

// The details of a stream: its heading on a line of its own, then its facts.
template <typename Stream>
[[nodiscard]] QString details(const Stream& stream)
{
    return heading(stream) + QLatin1Char('\n') + facts(stream);
}

}  // namespace titletext
