// Playlist files (.mpls), built by field. Lengths, counts and addresses follow from what a specification holds; a test
// that wants a lie patches the bytes.
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

// A stream_entry and its stream_attributes, with the reference lists that follow secondary streams.
struct StnStreamSpec {
    std::uint8_t entryType = 1;  // 1 own clip, 2 a sub path's clip, 3 and 4 of the other kinds of sub path
    std::uint16_t pid = 0;
    Bytes attributes = {};        // the coding type first
    Bytes primaryAudioRefs = {};  // secondary audio; for secondary video its secondary audio
    Bytes pipGraphicsRefs = {};   // secondary video
};

// Bodies of stream attributes, of the usual lengths.
[[nodiscard]] Bytes videoAttributes(std::uint8_t codingType = 0x1B, std::uint8_t format = 6,
                                    std::uint8_t frameRate = 1);
[[nodiscard]] Bytes audioAttributes(const std::string& language = "eng", std::uint8_t codingType = 0x81,
                                    std::uint8_t format = 6, std::uint8_t sampleRate = 1);
[[nodiscard]] Bytes graphicsAttributes(const std::string& language = "eng", std::uint8_t codingType = 0x90);
[[nodiscard]] Bytes textAttributes(const std::string& language = "eng", std::uint8_t characterCode = 1);

struct StnTableSpec {
    std::vector<StnStreamSpec> primaryVideo = {};
    std::vector<StnStreamSpec> primaryAudio = {};
    std::vector<StnStreamSpec> graphics = {};     // presentation graphics and text subtitles
    std::vector<StnStreamSpec> pipGraphics = {};  // picture-in-picture
    std::vector<StnStreamSpec> interactiveGraphics = {};
    std::vector<StnStreamSpec> secondaryAudio = {};
    std::vector<StnStreamSpec> secondaryVideo = {};
    std::vector<StnStreamSpec> dolbyVision = {};

    [[nodiscard]] Bytes build() const;
};

struct PlayItemSpec {
    std::string clipName = "00001";
    std::string codecId = "M2TS";
    std::uint8_t connectionCondition = 1;
    std::uint8_t refToStcId = 0;
    std::uint32_t inTime = 0;
    std::uint32_t outTime = 45000;
    bool randomAccess = false;
    std::uint8_t stillMode = 0;
    std::uint16_t stillTime = 0;
    std::vector<AngleSpec> furtherAngles = {};
    StnTableSpec stn = {};
};

struct MarkSpec {
    std::uint8_t markType = 1;
    std::uint16_t refToPlayItemId = 0;
    std::uint32_t timeStamp = 0;
    std::uint16_t entryEsPid = 0xFFFF;
    std::uint32_t duration = 0;
};

inline constexpr std::size_t kPlayListStart = 64;
inline constexpr std::size_t kFirstPlayItem = kPlayListStart + 10;

struct MplsSpec {
    std::string version = "0200";
    std::uint32_t appInfoLength = 14;
    std::uint8_t playbackType = 1;
    std::uint8_t appInfoFlags = 0;
    std::uint16_t numberOfSubPaths = 0;
    std::vector<PlayItemSpec> playItems = {PlayItemSpec{}};
    std::vector<MarkSpec> marks = {MarkSpec{}};

    // The header with AppInfoPlayList(), PlayList(), PlayListMark(), and nothing behind them.
    [[nodiscard]] Bytes build() const;
};

}  // namespace testsupport
