// Playlist files (.mpls), built by field. Lengths, counts and addresses follow from what a specification
// holds; an optional field, where set, stands in the file in place of the right value.
#pragma once

#include "tests/support/bytes.h"

#include <optional>
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
    std::uint8_t refToSubPathId = 0;
    std::uint8_t refToSubClipId = 0;
    Bytes attributes = {};        // the coding type first
    Bytes primaryAudioRefs = {};  // secondary audio; for secondary video its secondary audio
    Bytes pipGraphicsRefs = {};   // secondary video

    std::optional<Bytes> entry = std::nullopt;  // behind its length byte
    std::optional<std::uint8_t> entryLength = std::nullopt;
    std::optional<std::uint8_t> attributesLength = std::nullopt;
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

    std::optional<std::uint16_t> length = std::nullopt;
    std::optional<std::uint8_t> primaryVideoCount = std::nullopt;

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
    std::vector<AngleSpec> furtherAngles = {};  // sets the multi-angle bit
    StnTableSpec stn = {};

    std::optional<bool> isMultiAngle = std::nullopt;
    std::optional<std::uint8_t> numberOfAngles = std::nullopt;
    std::optional<std::uint16_t> length = std::nullopt;

    [[nodiscard]] Bytes build() const;
};

struct MarkSpec {
    std::uint8_t markType = 1;
    std::uint16_t refToPlayItemId = 0;
    std::uint32_t timeStamp = 0;
    std::uint16_t entryEsPid = 0xFFFF;
    std::uint32_t duration = 0;
};

struct MplsSpec {
    std::string magic = "MPLS";
    std::string version = "0200";
    std::uint8_t playbackType = 1;
    std::uint8_t appInfoFlags = 0;  // the byte at 56
    std::vector<PlayItemSpec> playItems = {PlayItemSpec{}};
    std::vector<MarkSpec> marks = {MarkSpec{}};

    std::uint32_t appInfoLength = 14;
    std::uint16_t numberOfSubPaths = 0;
    std::optional<std::uint16_t> numberOfPlayItems = std::nullopt;
    std::optional<std::uint16_t> numberOfMarks = std::nullopt;
    std::optional<std::uint32_t> playListAddress = std::nullopt;
    std::optional<std::uint32_t> markAddress = std::nullopt;

    // The header with AppInfoPlayList(), PlayList(), PlayListMark(), and nothing behind them.
    [[nodiscard]] Bytes build() const;

    // Where a PlayItem begins, for tests that patch the file.
    [[nodiscard]] std::size_t playItemStart(std::size_t index) const;
};

}  // namespace testsupport
