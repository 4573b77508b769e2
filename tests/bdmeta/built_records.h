// Records as the readers make them from files that a test builds, and what they hold as text.
#pragma once

#include "bdmeta/bluray_titles.h"
#include "bdmeta/clpi.h"
#include "bdmeta/mpls.h"
#include "tests/support/clpi_spec.h"
#include "tests/support/mpls_spec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// What deriving the titles of a disc gives, over the results of a disc before.
struct Derivation {
    explicit Derivation(const bdmeta::BlurayDisc& disc, discio::ReadBudget budget = {})
    {
        summary.totalClips = 7;
        code = deriveBlurayTitles(&disc, &titles, &summary, &fallback, budget);
        if (budget.reached() != nullptr) { bound = budget.reached(); }
    }

    int code = 0;
    std::vector<bdmeta::BlurayTitle> titles = std::vector<bdmeta::BlurayTitle>(2);
    bdmeta::BlurayDiscSummary summary;
    bdmeta::SizeFallback fallback = {7, {}, {}};
    std::string bound;  // that was reached
};

// A record as text: its fields in their order, and a line for each record that it holds.
struct Text {
    static std::string of(const bdmeta::BlurayStream& s)
    {
        return words("\n  stream", s.pid, s.category, s.entryType, s.kind, s.codingType, s.codingName,
                     s.language, "video", s.videoFormat, s.videoFormatName, s.width, s.height, s.frameRate,
                     s.frameRateName, s.dynamicRangeType, s.colorSpace, "audio", s.audioFormat,
                     s.channelLayoutName, s.sampleRate, s.sampleRateName, "text", s.characterCode);
    }
    static std::string of(const bdmeta::BlurayAngle& a) { return words(a.clipName, a.codecId, a.stcId); }
    static std::string of(const bdmeta::BlurayPlayItem& i)
    {
        return words("\n item", i.clipName, i.codecId, i.stcId, i.connectionCondition, "times", i.inTime,
                     i.outTime, i.durationMs, i.randomAccess, "still", i.stillMode, i.stillTime, i.angles,
                     *i.streams);
    }
    static std::string of(const bdmeta::BlurayPlaylistMark& m)
    {
        return words("\n mark", m.markType, m.playItemRef, m.timeStamp, m.entryPid, m.duration);
    }
    static std::string of(const bdmeta::BlurayPlaylist& p)
    {
        return words("playlist", p.version, p.durationMs, "ms", p.subPathCount, p.playbackType, "flags",
                     p.randomAccess, p.audioMixApp, p.losslessBypassMixer, p.marks, p.playItems);
    }
    static std::string of(const bdmeta::BlurayClip& c)
    {
        return words("clip", c.version, c.clipStreamType, c.applicationType, c.tsRecordingRate,
                     c.sourcePacketCount, "programs", c.programCount, c.maxStcDurationMs, "ms", c.streams);
    }
    static std::string of(const bdmeta::ParsedStreamTable& t) { return words("to", t.sizeBytes, t.streams); }
    static std::string of(const bdmeta::BlurayVideoCodec& v)
    {
        return words("\n  video", v.pid, v.category, v.entryType, v.codingType, v.codingName, v.width,
                     v.height, v.videoFormatName, v.frameRateName);
    }
    static std::string of(const bdmeta::BlurayAudioTrack& a)
    {
        return words("\n  audio", a.pid, a.category, a.codingType, a.name, a.language, a.channelLayout,
                     a.sampleRate);
    }
    static std::string of(const bdmeta::BluraySubtitleTrack& s)
    {
        return words("\n  subtitles", s.pid, s.category, s.codingType, s.format, s.language,
                     s.characterEncoding);
    }
    static std::string of(const bdmeta::BlurayTitle& t)
    {
        return words("\ntitle", t.index, t.titleNumber, t.durationMs, "ms", t.playbackSize, t.approximate,
                     "picture", t.width, t.height, "chapters", t.chapterCount, t.playmarkCount, "clips",
                     t.clipCount, t.segmentMap, "angles", t.angleCount, t.alternateAngleItemCount, "streams",
                     t.primaryVideoCount, t.primaryAudioCount, t.subtitleCount, t.interactiveGraphicsCount,
                     t.secondaryAudioCount, t.secondaryVideoCount, t.videoCodecs, t.audioTracks,
                     t.subtitleTracks);
    }
    static std::string of(const Derivation& derived)
    {
        const bdmeta::BlurayDiscSummary& d = derived.summary;
        return words(derived.titles, "\ndisc", d.discName, d.discLabel, d.discIdBytes, d.titleCount,
                     d.totalDurationMs, "ms", d.totalPlaybackSize, "chapters", d.totalChapters,
                     d.totalPlaymarks, "clips", d.totalClips, "streams", d.totalPrimaryVideo,
                     d.totalPrimaryAudio, d.totalSubtitles, d.totalInteractiveGraphics, d.totalSecondaryAudio,
                     d.totalSecondaryVideo, "fallbacks", derived.fallback.count,
                     derived.fallback.firstPlaylist, derived.fallback.firstClip);
    }
    template <typename Record>
    static std::string of(const std::optional<Record>& record)
    {
        return record ? of(*record) : "malformed";
    }

    template <typename... Values>
    static std::string words(const Values&... values)
    {
        std::string text;
        (add(text, values), ...);
        return text;
    }

private:
    template <typename Value>
    static void add(std::string& text, const Value& value)
    {
        if constexpr (requires { value.view(); }) {
            add(text, '[' + std::string(value.view()) + ']');
        } else if constexpr (requires { std::string_view(value); }) {
            const std::string_view word(value);
            if (!text.empty() && !word.starts_with('\n')) { text += ' '; }
            text += word;
        } else if constexpr (requires { of(value); }) {
            add(text, of(value));
        } else if constexpr (requires { value.begin(); }) {
            std::ranges::for_each(value, [&text](const auto& item) { add(text, item); });
        } else {
            add(text, std::to_string(static_cast<long long>(value)));
        }
    }
};

inline std::optional<bdmeta::BlurayPlaylist> parsePlaylist(const testsupport::Bytes& bytes)
{
    discio::ReadBudget budget;
    bdmeta::StreamTables tables(budget);
    return bdmeta::parsePlaylistBytes(bytes, tables);
}

inline bdmeta::BlurayPlaylist playlistOf(const testsupport::MplsSpec& spec, std::string_view name = "00000")
{
    bdmeta::BlurayPlaylist playlist = parsePlaylist(spec.build()).value();
    playlist.name = bdmeta::FixedText<5>(name);
    return playlist;
}

inline bdmeta::BlurayClip clipOf(const testsupport::ClpiSpec& spec, std::uint64_t streamFileSize = 0,
                                 std::string_view name = "00001")
{
    const testsupport::Bytes bytes = spec.build();
    bdmeta::BlurayClip clip = bdmeta::parseClipInfoBytes(bytes).value();
    clip.name = bdmeta::ClipName(name);
    clip.rawData = bytes;
    clip.streamFileSize = streamFileSize;
    return clip;
}
