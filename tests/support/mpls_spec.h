// Playlist files (.mpls), built by field. Lengths, counts and addresses follow from the fields; a test that wants a lie
// patches the bytes.
#pragma once

#include "tests/support/bytes.h"

#include <string>

namespace testsupport {

// A PlayItem's clip in one angle.
struct AngleSpec {
    std::string clipName = "00001";
    std::string codecId = "M2TS";
    std::uint8_t refToStcId = 0;
};

// Bodies of stream attributes, of the usual lengths.
[[nodiscard]] inline Bytes withLanguage(Bytes attributes, const std::string& language)
{
    append(attributes, language);
    attributes.resize(5);
    return attributes;
}
[[nodiscard]] inline Bytes audioAttributes(const std::string& language = "eng",
                                           std::uint8_t codingType = 0x81, unsigned format = 6,
                                           unsigned sampleRate = 1)
{
    return withLanguage({codingType, static_cast<std::uint8_t>(format << 4U | sampleRate)}, language);
}
[[nodiscard]] inline Bytes videoAttributes(std::uint8_t codingType = 0x1B, unsigned format = 6,
                                           unsigned frameRate = 1)
{
    return audioAttributes("", codingType, format, frameRate);
}
[[nodiscard]] inline Bytes graphicsAttributes(const std::string& language = "eng",
                                              std::uint8_t codingType = 0x90)
{
    return withLanguage({codingType}, language);
}
[[nodiscard]] inline Bytes textAttributes(const std::string& language = "eng", std::uint8_t characterCode = 1)
{
    return withLanguage({0x92, characterCode}, language);
}

// A stream_entry of the PlayItem's own clip and its stream_attributes, with the reference lists that follow secondary
// streams.
struct StnStreamSpec {
    std::uint16_t pid = 0;
    Bytes attributes = {};        // the coding type first
    Bytes primaryAudioRefs = {};  // secondary audio; for secondary video its secondary audio
    Bytes pipGraphicsRefs = {};   // secondary video
};

struct StnTableSpec {
    std::vector<StnStreamSpec> primaryVideo = {};
    std::vector<StnStreamSpec> primaryAudio = {};
    std::vector<StnStreamSpec> graphics = {};     // presentation graphics and text subtitles
    std::vector<StnStreamSpec> pipGraphics = {};  // picture-in-picture
    std::vector<StnStreamSpec> interactiveGraphics = {};
    std::vector<StnStreamSpec> secondaryAudio = {};
    std::vector<StnStreamSpec> secondaryVideo = {};
    std::vector<StnStreamSpec> dolbyVision = {};

    [[nodiscard]] Bytes build() const
    {
        Bytes table(16);
        const auto add = [&table](std::size_t countOffset, const std::vector<StnStreamSpec>& streams,
                                  std::initializer_list<Bytes StnStreamSpec::*> lists = {}) {
            putBe(table, countOffset, streams.size(), 1);
            for (const StnStreamSpec& stream : streams) {
                appendBe(table, {{9, 1}, {1, 1}, {stream.pid, 2}, {0, 6}, {stream.attributes.size(), 1}});
                append(table, stream.attributes);
                for (const auto list : lists) {
                    appendBe(table, {{(stream.*list).size(), 1}, {0, 1}});
                    append(table, stream.*list);
                    appendBe(table, {{0, (stream.*list).size() % 2}});
                }
            }
        };
        add(4, primaryVideo);
        add(5, primaryAudio);
        add(6, graphics);
        add(10, pipGraphics);
        add(7, interactiveGraphics);
        add(8, secondaryAudio, {&StnStreamSpec::primaryAudioRefs});
        add(9, secondaryVideo, {&StnStreamSpec::primaryAudioRefs, &StnStreamSpec::pipGraphicsRefs});
        add(11, dolbyVision);
        putBe(table, 0, table.size() - 2, 2);
        return table;
    }
};

struct PlayItemSpec {
    std::string clipName = "00001";
    std::uint8_t connectionCondition = 1;
    std::uint8_t refToStcId = 0;
    std::uint32_t inTime = 0;
    std::uint32_t outTime = 45000;
    bool randomAccess = false;
    std::uint8_t stillMode = 0;
    std::uint16_t stillTime = 0;
    std::vector<AngleSpec> furtherAngles = {};
    StnTableSpec stn = {};

    [[nodiscard]] Bytes build() const
    {
        Bytes item(2);
        append(item, clipName + "M2TS");
        appendBe(item, {{(furtherAngles.empty() ? 0U : 0x10U) | connectionCondition, 2}});
        appendBe(item, {{refToStcId, 1}, {inTime, 4}, {outTime, 4}, {0, 8}});
        appendBe(item, {{randomAccess ? 0x80U : 0U, 1}, {stillMode, 1}, {stillTime, 2}});
        if (!furtherAngles.empty()) { appendBe(item, {{furtherAngles.size() + 1, 1}, {0, 1}}); }
        for (const AngleSpec& angle : furtherAngles) {
            append(item, angle.clipName + angle.codecId);
            appendBe(item, {{angle.refToStcId, 1}});
        }
        append(item, stn.build());
        putBe(item, 0, item.size() - 2, 2);
        return item;
    }
};

struct MarkSpec {
    std::uint8_t markType = 1;
    std::uint16_t refToPlayItemId = 0;
    std::uint32_t timeStamp = 0;
    std::uint16_t entryEsPid = 0xFFFF;
    std::uint32_t duration = 0;
};

inline constexpr std::size_t kFirstPlayItem = 74;

struct MplsSpec {
    std::uint32_t appInfoLength = 14;
    std::uint8_t playbackType = 1;
    std::uint8_t appInfoFlags = 0;
    std::uint16_t numberOfSubPaths = 0;
    std::vector<PlayItemSpec> playItems = {PlayItemSpec{}};
    std::vector<MarkSpec> marks = {MarkSpec{}};

    // The header with AppInfoPlayList(), PlayList(), PlayListMark(), and nothing after them.
    [[nodiscard]] Bytes build() const
    {
        Bytes file = patched(Bytes(64), {{8, 4, 64}, {40, 4, appInfoLength}, {45, 1, playbackType}});
        putText(file, 0, "MPLS0200");
        putBe(file, 56, appInfoFlags, 1);
        appendBe(file, {{0, 6}, {playItems.size(), 2}, {numberOfSubPaths, 2}});
        for (const PlayItemSpec& item : playItems) {
            append(file, item.build());
        }
        putBe(file, 64, file.size() - 68, 4);
        putBe(file, 12, file.size(), 4);
        appendBe(file, {{2 + 14 * marks.size(), 4}, {marks.size(), 2}});
        for (const MarkSpec& mark : marks) {
            appendBe(file, {{mark.markType, 2}, {mark.refToPlayItemId, 2}, {mark.timeStamp, 4}});
            appendBe(file, {{mark.entryEsPid, 2}, {mark.duration, 4}});
        }
        return file;
    }
};

}  // namespace testsupport
