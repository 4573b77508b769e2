// The contents of a Blu-ray disc's navigation files: the disc's identity, every playlist (BDMV/PLAYLIST/*.mpls) and
// every clip information file (BDMV/CLIPINF/*.clpi), and the raw bytes of both. A PlayItem's clipName is the name of
// its clip, which the disc may lack.
#pragma once

#include "discio/error_text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace bdmeta {

// A text of at most `Capacity` characters from a fixed field of a file. Needs no memory of its own; ends at the first
// NUL.
template <std::size_t Capacity>
class FixedText {
public:
    FixedText() = default;
    // Cuts the text at its first NUL and to the capacity.
    explicit FixedText(std::string_view text)
    {
        text = text.substr(0, text.find('\0'));
        text.copy(m_text.data(), Capacity);
    }

    [[nodiscard]] std::string_view view() const { return m_text.data(); }
    [[nodiscard]] bool isEmpty() const { return m_text[0] == '\0'; }
    friend bool operator==(const FixedText&, const FixedText&) = default;

private:
    std::array<char, Capacity + 1> m_text = {};
};

using ClipName = FixedText<5>;      // "00001"
using CodecId = FixedText<4>;       // "M2TS"
using LanguageCode = FixedText<3>;  // ISO 639-2, as stored

enum class StreamKind : std::uint8_t {
    Unknown = 0,
    Video = 1,
    Audio = 2,
    Subtitle = 3,  // presentation graphics or text
    InteractiveGraphics = 4
};

// The groups of a PlayItem's stream table (STN), in their order in the table.
enum class StreamCategory : std::uint8_t {
    None = 0,  // streams of clip information
    PrimaryVideo = 1,
    PrimaryAudio = 2,
    Subtitle = 3,
    InteractiveGraphics = 4,
    SecondaryAudio = 5,
    SecondaryVideo = 6,
    DolbyVision = 7
};

// An elementary stream. The names point into constant tables and are never null; a name that the kind does not have is
// "".
struct BlurayStream {
    const char* codingName = "";
    const char* videoFormatName = "";    // video: "1080p"
    const char* frameRateName = "";      // video: "23.976 Hz"
    const char* channelLayoutName = "";  // audio: "Stereo"
    const char* sampleRateName = "";     // audio: "48 kHz"
    std::uint16_t pid = 0;
    std::uint16_t width = 0;  // implied by the video format; 0 for formats without a size
    std::uint16_t height = 0;
    std::uint8_t codingType = 0;
    std::uint8_t entryType = 0;  // of the STN entry, 1 to 4; 0 for streams of clip information
    StreamKind kind = StreamKind::Unknown;
    StreamCategory category = StreamCategory::None;
    LanguageCode language;
    std::uint8_t videoFormat = 0;
    std::uint8_t frameRate = 0;
    std::uint8_t audioFormat = 0;
    std::uint8_t sampleRate = 0;
    std::uint8_t characterCode = 0;     // text subtitles
    std::uint8_t dynamicRangeType = 0;  // HEVC
    std::uint8_t colorSpace = 0;        // HEVC
};

struct BlurayAngle {
    ClipName clipName;
    CodecId codecId;
    std::uint8_t stcId = 0;
};

// PlayItems with byte-wise equal tables share one: a disc of decoy playlists repeats one table a hundred thousand
// times.
using StreamTable = std::shared_ptr<const std::vector<BlurayStream>>;

struct BlurayPlayItem {
    ClipName clipName;
    CodecId codecId;
    std::uint8_t stcId = 0;
    std::uint8_t connectionCondition = 0;
    bool randomAccess = false;
    std::uint8_t stillMode = 0;
    std::uint16_t stillTime = 0;
    std::uint32_t inTime = 0;  // 45 kHz ticks, like outTime
    std::uint32_t outTime = 0;
    std::uint64_t durationMs = 0;
    std::vector<BlurayAngle> angles;  // at least one; the first is the item's own clip
    StreamTable streams;              // never null
};

struct BlurayPlaylistMark {
    std::uint8_t markType = 0;
    std::uint16_t playItemRef = 0;
    std::uint16_t entryPid = 0;
    std::uint32_t timeStamp = 0;  // 45 kHz ticks, like duration
    std::uint32_t duration = 0;
};

struct BlurayPlaylist {
    FixedText<5> name;  // of the file without ".mpls", cut to 5 characters
    FixedText<4> version;
    std::vector<std::uint8_t> rawData;
    std::uint8_t playbackType = 0;
    bool randomAccess = false;
    bool audioMixApp = false;
    bool losslessBypassMixer = false;
    std::uint64_t durationMs = 0;
    std::vector<BlurayPlayItem> playItems;
    std::vector<BlurayPlaylistMark> marks;
    std::uint32_t subPathCount = 0;
};

struct BlurayClip {
    ClipName name;  // of the file without ".clpi", cut to 5 characters
    FixedText<4> version;
    std::vector<std::uint8_t> rawData;
    std::uint8_t clipStreamType = 0;
    std::uint8_t applicationType = 0;
    std::uint32_t tsRecordingRate = 0;
    std::uint32_t sourcePacketCount = 0;
    std::uint64_t streamFileSize = 0;    // bytes of the .m2ts; 0 when absent
    std::uint64_t maxStcDurationMs = 0;  // longest presentation span of an STC sequence
    std::uint16_t programCount = 0;
    std::vector<BlurayStream> streams;  // of all programs, in file order
};

struct BlurayDisc {
    std::string volumeId;                           // images with an ISO-9660 side only
    std::array<std::uint8_t, 4> indexVersion = {};  // bytes 4-7 of index.bdmv, raw: "0200"
    std::string organizationId;                     // 8 upper-case hexadecimal digits, or empty
    std::string discId;                             // 32 upper-case hexadecimal digits, or empty
    std::uint32_t titleCount = 0;                   // declared by index.bdmv
    std::vector<BlurayPlaylist> playlists;          // in byte-wise order of their names
    std::vector<BlurayClip> clips;                  // likewise
    // Optional files and directories that exist but could not be read, each with its reason; the disc was read without
    // them. If the whole disc could not be read: advice how to read it.
    std::vector<discio::Message> readWarnings;
};

// Reads a disc directory or image. Returns 0, or -1 with a message; `disc` then holds only warnings. A malformed playlist
// or clip information file fails the whole disc, and so does a bound that is reached (discio/read_budget.h). The message
// is empty if memory ran out while the disc was opened.
[[nodiscard]] int readBlurayDisc(const char* path, BlurayDisc* disc, const discio::ErrorText& error);

// The same with a buffer that the caller provides: `errorText` may be null, and `errorCapacity` 0.
[[nodiscard]] inline int readBlurayDisc(const char* path, BlurayDisc* disc, char* errorText,
                                        std::size_t errorCapacity)
{
    return readBlurayDisc(path, disc, discio::ErrorText(errorText, errorCapacity));
}

// Empties the record and frees its memory.
void releaseBlurayDisc(BlurayDisc& disc);

}  // namespace bdmeta
