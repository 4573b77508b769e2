#include "bdmeta/stream_attributes.h"

#include "bdmeta/field_text.h"

namespace bdmeta {

using discio::ByteReader;

namespace {

constexpr std::uint8_t kHevc = 36;
constexpr std::uint8_t kPresentationGraphics = 144;
constexpr std::uint8_t kInteractiveGraphics = 145;
constexpr std::uint8_t kTextSubtitle = 146;

struct Coding {
    std::uint8_t type;
    StreamKind kind;
    const char* name;
};

constexpr std::array kCodings = {
    Coding{1, StreamKind::Video, "MPEG-1 video"},
    Coding{2, StreamKind::Video, "MPEG-2 video"},
    Coding{3, StreamKind::Audio, "MPEG-1 audio"},
    Coding{4, StreamKind::Audio, "MPEG-2 audio"},
    Coding{27, StreamKind::Video, "H.264"},
    Coding{32, StreamKind::Video, "H.264 MVC"},
    Coding{kHevc, StreamKind::Video, "HEVC"},
    Coding{128, StreamKind::Audio, "LPCM"},
    Coding{129, StreamKind::Audio, "AC-3"},
    Coding{130, StreamKind::Audio, "DTS"},
    Coding{131, StreamKind::Audio, "TrueHD"},
    Coding{132, StreamKind::Audio, "AC-3 Plus"},
    Coding{133, StreamKind::Audio, "DTS-HD"},
    Coding{134, StreamKind::Audio, "DTS-HD Master"},
    Coding{kPresentationGraphics, StreamKind::Subtitle, "Presentation graphics"},
    Coding{kInteractiveGraphics, StreamKind::InteractiveGraphics, "Interactive graphics"},
    Coding{kTextSubtitle, StreamKind::Subtitle, "Text subtitle"},
    Coding{161, StreamKind::Audio, "AC-3 Plus secondary"},
    Coding{162, StreamKind::Audio, "DTS-HD secondary"},
    Coding{234, StreamKind::Video, "VC-1"},
};

struct VideoFormat {
    const char* name = "Unknown";
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

// Indexed by codes of four bits; unassigned codes are unknown.
constexpr std::array<VideoFormat, 16> kVideoFormats = {{
    {},
    {"480i", 720, 480},
    {"576i", 720, 576},
    {"480p", 720, 480},
    {"1080i", 1920, 1080},
    {"720p", 1280, 720},
    {"1080p", 1920, 1080},
    {"576p", 720, 576},
    {"2160p", 3840, 2160},
}};

constexpr std::array<const char*, 16> kFrameRates = {
    "Unknown", "23.976 Hz", "24 Hz",   "25 Hz",   "29.97 Hz", "Unknown", "50 Hz",   "59.94 Hz",
    "Unknown", "Unknown",   "Unknown", "Unknown", "Unknown",  "Unknown", "Unknown", "Unknown"};

constexpr std::array<const char*, 16> kChannelLayouts = {
    "Unknown", "Mono",    "Unknown", "Stereo",  "Unknown", "Unknown", "Multi-channel", "Unknown",
    "Unknown", "Unknown", "Unknown", "Unknown", "Combo",   "Unknown", "Unknown",       "Unknown"};

constexpr std::array<const char*, 16> kSampleRates = {
    "Unknown", "48 kHz",  "Unknown", "Unknown", "96 kHz",     "192 kHz", "Unknown",   "Unknown",
    "Unknown", "Unknown", "Unknown", "Unknown", "48/192 kHz", "Unknown", "48/96 kHz", "Unknown"};

Coding codingOf(std::uint8_t type)
{
    const auto* const coding = std::ranges::find(kCodings, type, &Coding::type);
    return coding != kCodings.end() ? *coding : Coding{type, StreamKind::Unknown, "Unknown"};
}

std::uint8_t highNibble(std::uint8_t byte)
{
    return static_cast<std::uint8_t>(byte >> 4U);
}

std::uint8_t lowNibble(std::uint8_t byte)
{
    return byte & 0x0FU;
}

// Deliberate: a playlist has both in one byte, clip information in two.
void decodeHevc(BlurayStream& stream, ByteReader reader, bool fromClipInfo)
{
    const std::uint8_t first = reader.u8();
    const std::uint8_t second = fromClipInfo ? reader.u8() : std::uint8_t{0};
    if (!reader.ok()) { return; }
    if (fromClipInfo) {
        stream.dynamicRangeType = (first >> 3U) & 0x0FU;
        stream.colorSpace = static_cast<std::uint8_t>((first & 0x07U) << 4U | highNibble(second));
    } else {
        stream.dynamicRangeType = highNibble(first);
        stream.colorSpace = lowNibble(first);
    }
}

void decodeVideo(BlurayStream& stream, ByteReader reader, bool fromClipInfo)
{
    const std::uint8_t formatAndRate = reader.u8();
    if (!reader.ok()) { return; }
    stream.kind = StreamKind::Video;
    stream.videoFormat = highNibble(formatAndRate);
    stream.frameRate = lowNibble(formatAndRate);
    const VideoFormat& format = kVideoFormats.at(stream.videoFormat);
    stream.videoFormatName = format.name;
    stream.width = format.width;
    stream.height = format.height;
    stream.frameRateName = kFrameRates.at(stream.frameRate);
    if (stream.codingType == kHevc) { decodeHevc(stream, reader, fromClipInfo); }
}

void decodeAudio(BlurayStream& stream, ByteReader reader)
{
    const std::uint8_t layoutAndRate = reader.u8();
    const auto language = readText<3>(reader);
    if (!reader.ok()) { return; }
    stream.kind = StreamKind::Audio;
    stream.audioFormat = highNibble(layoutAndRate);
    stream.sampleRate = lowNibble(layoutAndRate);
    stream.channelLayoutName = kChannelLayouts.at(stream.audioFormat);
    stream.sampleRateName = kSampleRates.at(stream.sampleRate);
    stream.language = language;
}

void decodeGraphicsOrText(BlurayStream& stream, ByteReader reader, StreamKind kind)
{
    const std::uint8_t characterCode = stream.codingType == kTextSubtitle ? reader.u8() : std::uint8_t{0};
    const auto language = readText<3>(reader);
    if (!reader.ok()) { return; }
    stream.kind = kind;
    stream.characterCode = characterCode;
    stream.language = language;
}

}  // namespace

void decodeStreamAttributes(BlurayStream& stream, std::uint16_t pid, std::span<const std::uint8_t> attributes,
                            bool fromClipInfo)
{
    stream = {};
    stream.pid = pid;
    ByteReader reader(attributes);
    const std::uint8_t codingType = reader.u8();
    if (!reader.ok()) { return; }
    const Coding coding = codingOf(codingType);
    stream.codingType = codingType;
    stream.codingName = coding.name;
    switch (coding.kind) {
    case StreamKind::Video:
        decodeVideo(stream, reader, fromClipInfo);
        break;
    case StreamKind::Audio:
        decodeAudio(stream, reader);
        break;
    case StreamKind::Subtitle:
    case StreamKind::InteractiveGraphics:
        decodeGraphicsOrText(stream, reader, coding.kind);
        break;
    case StreamKind::Unknown:
        break;
    }
}

}  // namespace bdmeta
