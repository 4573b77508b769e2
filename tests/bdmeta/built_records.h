// Records as the readers make them from files that a test builds, and what they hold as text.
#pragma once

#include "bdmeta/bluray_titles.h"
#include "bdmeta/clpi.h"
#include "bdmeta/mpls.h"
#include "tests/support/clpi_spec.h"
#include "tests/support/mpls_spec.h"

#include <gtest/gtest.h>

#include <string>

// ---- As text ----

// Texts and numbers, with a blank between them.
template <typename... Values>
std::string words(const Values&... values)
{
    const auto word = [](const auto& value) -> std::string {
        if constexpr (requires { value.view(); }) {
            return '[' + std::string(value.view()) + ']';
        } else if constexpr (requires { std::string(value); }) {
            return value;
        } else {
            return std::to_string(static_cast<long long>(value));
        }
    };
    std::string text = ((word(values) + ' ') + ...);
    text.pop_back();
    return text;
}

inline std::string describe(const bdmeta::BlurayStream& s)
{
    return words("\n  stream", s.pid, "group", s.category, "entry", s.entryType, "kind", s.kind, "coding",
                 s.codingType, s.codingName, s.language, "video", s.videoFormat, s.videoFormatName, s.width,
                 s.height, s.frameRate, s.frameRateName, s.dynamicRangeType, s.colorSpace, "audio",
                 s.audioFormat, s.channelLayoutName, s.sampleRate, s.sampleRateName, "text", s.characterCode);
}

inline std::string describe(const std::vector<bdmeta::BlurayStream>& streams)
{
    std::string text;
    for (const bdmeta::BlurayStream& stream : streams) {
        text += describe(stream);
    }
    return text;
}

// Of streams only the PIDs.
inline std::string describe(const bdmeta::BlurayPlaylist& p)
{
    std::string text = words("playlist", p.version, p.durationMs, "ms, sub paths", p.subPathCount, "type",
                             p.playbackType, "flags", p.randomAccess, p.audioMixApp, p.losslessBypassMixer);
    for (const bdmeta::BlurayPlaylistMark& mark : p.marks) {
        text += words(" mark", mark.markType, mark.playItemRef, mark.timeStamp, mark.entryPid, mark.duration);
    }
    for (const bdmeta::BlurayPlayItem& item : p.playItems) {
        text += words("\n  item", item.clipName, item.codecId, "STC", item.stcId, "connection",
                      item.connectionCondition, "times", item.inTime, item.outTime, item.durationMs, "random",
                      item.randomAccess, "still", item.stillMode, item.stillTime, "angles");
        for (const bdmeta::BlurayAngle& angle : item.angles) {
            text += words("", angle.clipName, angle.codecId, angle.stcId);
        }
        text += " streams";
        for (const bdmeta::BlurayStream& stream : *item.streams) {
            text += words("", stream.pid);
        }
    }
    return text;
}

inline std::string describe(const bdmeta::BlurayClip& c)
{
    return words("clip", c.version, "types", c.clipStreamType, c.applicationType, "rate", c.tsRecordingRate,
                 "packets", c.sourcePacketCount, "programs", c.programCount, "STC", c.maxStcDurationMs) +
           describe(c.streams);
}

inline std::string describe(const bdmeta::BlurayTitle& t)
{
    std::string text =
        words("title", t.index, t.titleNumber, t.durationMs, "ms", t.playbackSize, "bytes, approximate",
              t.approximate, "picture", t.width, t.height, "chapters", t.chapterCount, t.playmarkCount,
              "clips", t.clipCount, "angles", t.angleCount, t.alternateAngleItemCount, "streams",
              t.primaryVideoCount, t.primaryAudioCount, t.subtitleCount, t.interactiveGraphicsCount,
              t.secondaryAudioCount, t.secondaryVideoCount);
    for (const bdmeta::ClipName& clip : t.segmentMap) {
        text += words("", clip);
    }
    for (const bdmeta::BlurayVideoCodec& v : t.videoCodecs) {
        text += words("\n  video", v.pid, v.category, v.entryType, v.codingType, v.codingName, v.width,
                      v.height, v.videoFormatName, v.frameRateName);
    }
    for (const bdmeta::BlurayAudioTrack& a : t.audioTracks) {
        text += words("\n  audio", a.pid, a.category, a.codingType, a.name, a.language, a.channelLayout,
                      a.sampleRate);
    }
    for (const bdmeta::BluraySubtitleTrack& s : t.subtitleTracks) {
        text += words("\n  subtitles", s.pid, s.category, s.codingType, s.format, s.language,
                      s.characterEncoding);
    }
    return text + '\n';
}

// ---- From files ----

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

struct Derivation {
    Derivation()  // of a disc before
        : titles(2)
    {
        summary.totalClips = 7;
        fallback.count = 7;
    }
    int code = 0;
    std::vector<bdmeta::BlurayTitle> titles;
    bdmeta::BlurayDiscSummary summary;
    bdmeta::SizeFallback fallback;
    std::string bound;  // that was reached
};

inline Derivation derive(const bdmeta::BlurayDisc& disc)
{
    Derivation result;
    discio::ReadBudget budget;
    result.code = deriveBlurayTitles(&disc, &result.titles, &result.summary, &result.fallback, budget);
    result.bound = budget.reached() == nullptr ? "" : budget.reached();
    return result;
}
