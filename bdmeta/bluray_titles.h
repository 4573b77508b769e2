// Derives a title from each playlist: stream counts, distinct streams and the size of angle 1. Sizes come from the
// clips' EP maps. A PlayItem whose range is not in its clip's EP map counts the whole stream file, and its title is
// marked as approximate.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "discio/read_budget.h"

namespace bdmeta {

struct BlurayVideoCodec {
    const char* codingName = "";
    std::uint8_t codingType = 0;
    std::uint8_t entryType = 0;
    std::uint16_t pid = 0;
    StreamCategory category = StreamCategory::None;
    // Of the same stream, for the views.
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    const char* videoFormatName = "";
    const char* frameRateName = "";
};

struct BlurayAudioTrack {
    const char* name = "";
    LanguageCode language;
    const char* channelLayout = "";
    const char* sampleRate = "";
    std::uint8_t codingType = 0;
    StreamCategory category = StreamCategory::None;
    std::uint16_t pid = 0;
};

struct BluraySubtitleTrack {
    const char* format = "";
    LanguageCode language;
    const char* characterEncoding = "";  // text subtitles only
    std::uint8_t codingType = 0;
    StreamCategory category = StreamCategory::None;
    std::uint16_t pid = 0;
};

struct BlurayTitle {
    std::uint32_t index = 0;        // of the playlist
    std::uint32_t titleNumber = 0;  // the playlist's name as a number
    std::uint32_t width = 0;        // of the first video stream whose format has a size
    std::uint32_t height = 0;
    std::uint64_t durationMs = 0;
    std::uint64_t playbackSize = 0;  // bytes of angle 1
    bool approximate = false;        // a PlayItem counted its whole stream file
    // Deliberate: one count in two fields; the views print both.
    std::uint32_t chapterCount = 0;
    std::uint32_t playmarkCount = 0;
    std::uint32_t clipCount = 0;
    std::uint8_t angleCount = 0;                // the largest of any PlayItem
    std::uint32_t alternateAngleItemCount = 0;  // PlayItems of more than one angle
    // Streams summed over all PlayItems, by group; group 7 is counted nowhere.
    std::uint32_t primaryVideoCount = 0;
    std::uint32_t primaryAudioCount = 0;
    std::uint32_t subtitleCount = 0;
    std::uint32_t interactiveGraphicsCount = 0;
    std::uint32_t secondaryAudioCount = 0;
    std::uint32_t secondaryVideoCount = 0;
    std::vector<ClipName> segmentMap;  // each PlayItem's clip
    // Distinct streams, in the order of their first occurrence.
    std::vector<BlurayVideoCodec> videoCodecs;
    std::vector<BlurayAudioTrack> audioTracks;
    std::vector<BluraySubtitleTrack> subtitleTracks;
};

struct BlurayDiscSummary {
    std::string discName;  // the volume identifier, like discLabel
    std::string discLabel;
    std::array<std::uint8_t, 16> discIdBytes = {};
    std::uint32_t titleCount = 0;
    std::uint64_t totalDurationMs = 0;
    std::uint64_t totalPlaybackSize = 0;
    std::uint32_t totalChapters = 0;
    std::uint32_t totalPlaymarks = 0;
    std::uint32_t totalClips = 0;
    std::uint32_t totalPrimaryVideo = 0;
    std::uint32_t totalPrimaryAudio = 0;
    std::uint32_t totalSubtitles = 0;
    std::uint32_t totalInteractiveGraphics = 0;
    std::uint32_t totalSecondaryAudio = 0;
    std::uint32_t totalSecondaryVideo = 0;
};

// How many PlayItems of a derivation counted a whole stream file, and the first of them. The caller logs it.
struct SizeFallback {
    std::uint64_t count = 0;
    FixedText<5> firstPlaylist;
    ClipName firstClip;
};

// Derives a title from every playlist, in their order. Returns 0, or -1 if an argument is null, memory runs out or a
// bound of the budget is reached; budget.reached() is then its message. A disc without playlists gives no titles and an
// empty summary.
[[nodiscard]] int deriveBlurayTitles(const BlurayDisc* disc, std::vector<BlurayTitle>* titles,
                                     BlurayDiscSummary* summary, SizeFallback* fallback,
                                     discio::ReadBudget& budget);

}  // namespace bdmeta
