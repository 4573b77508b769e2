// Titles and their streams in words: rows, one-line summaries and details, for the titles view and for reports.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace titletext {

// "1 Hour 1 Minute 1 Second": whole seconds, parts that are 0 left out, "0 Second" for none. The words have
// no plural forms.
[[nodiscard]] QString duration(quint64 durationMs);

// The description column of a title's row.
[[nodiscard]] QString titleSummary(quint32 chapterCount, quint64 durationMs);

// The description column of a stream's row: language in words first, then what else tells streams apart.
[[nodiscard]] QString summary(const VideoStreamInfo& stream);
[[nodiscard]] QString summary(const AudioTrackInfo& stream);
[[nodiscard]] QString summary(const SubtitleTrackInfo& stream);

// What the disc says, or "Unknown" where it says nothing.
[[nodiscard]] QString orUnknown(const QString& text);

// A format's, codec's or layout's name in the user's language; an empty one stays empty.
[[nodiscard]] QString word(const QString& english);

// The title's label in the user's language: "#1 00800 (1 angles)".
[[nodiscard]] QString label(const BlurayTitleInfo& title);

// The tool tip of a stream's row: "English, PID 0x1100 (4352)". A DVD's streams have no PID; theirs says
// "stream ID 0x80 (128)", the id in the program stream. A video stream has no language.
[[nodiscard]] QString toolTip(const VideoStreamInfo& stream, DiscType discType);
[[nodiscard]] QString toolTip(const AudioTrackInfo& stream, DiscType discType);
[[nodiscard]] QString toolTip(const SubtitleTrackInfo& stream, DiscType discType);

// A line for each fact, each line with a line break at its end. A fact that the disc does not contain is "Unknown".
[[nodiscard]] QString details(const DvdTitleInfo& title);
[[nodiscard]] QString details(const BlurayTitleInfo& title);
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

// The same of a title that a configuration names: two lines are worded otherwise there.
[[nodiscard]] QString matchingDetails(const DvdTitleInfo& title);
[[nodiscard]] QString matchingDetails(const BlurayTitleInfo& title);

}  // namespace titletext
