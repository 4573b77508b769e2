#include "dvdmeta/stream_attributes.h"

#include <array>
#include <string_view>

namespace dvdmeta {

namespace {

constexpr std::uint64_t kVideoOffset = 0x200;
constexpr std::uint64_t kAudioCountOffset = 0x203;
constexpr std::uint64_t kAudioOffset = 0x204;
constexpr std::uint64_t kAudioEntrySize = 8;
constexpr std::uint64_t kSubpictureCountOffset = 0x255;
constexpr std::uint64_t kSubpictureOffset = 0x256;
constexpr std::uint64_t kSubpictureEntrySize = 6;

constexpr std::array<std::string_view, 8> kAudioCodings = {"AC-3", "Unknown", "MPEG-1", "MPEG-2 ext",
                                                           "LPCM", "SDDS",    "DTS",    "Unknown"};
constexpr std::array<std::string_view, 4> kSampleRates = {"48 kHz", "96 kHz", "44.1 kHz", "32 kHz"};

std::string_view videoCodingName(std::uint8_t codingMode)
{
    switch (codingMode) {
    case 0:
        return "MPEG-1 Video";
    case 1:
        return "MPEG-2 Video";
    default:
        return "Unknown";
    }
}

DvdVideoAttributes parseVideo(discio::ByteReader reader)
{
    const std::uint8_t coding = reader.u8();
    const std::uint8_t picture = reader.u8();
    const bool isPal = (coding & 0x30U) == 0x10;

    DvdVideoAttributes video;
    video.codingMode = static_cast<std::uint8_t>(coding >> 6U);
    video.formatName = videoCodingName(video.codingMode);
    video.height = isPal ? 576 : 480;
    switch (picture & 0x0CU) {
    case 0x00:
        video.width = 720;
        break;
    case 0x04:
        video.width = 704;
        break;
    case 0x08:
        video.width = 352;
        break;
    default:
        video.width = 352;
        video.height /= 2;
        break;
    }
    return video;
}

bool isPrintable(std::uint8_t character)
{
    return character >= 0x20 && character <= 0x7E;
}

// Reads the two language characters. Returns zeros if the entry declares no language or they are not printable.
DvdLanguage parseLanguage(discio::ByteReader& reader, bool isDeclared)
{
    const std::uint8_t first = reader.u8();
    const std::uint8_t second = reader.u8();
    if (!isDeclared || !isPrintable(first) || !isPrintable(second)) { return {}; }
    return {static_cast<char>(first), static_cast<char>(second)};
}

DvdAudioStream parseAudio(discio::ByteReader reader)
{
    const std::uint8_t coding = reader.u8();
    const std::uint8_t format = reader.u8();

    DvdAudioStream audio;
    audio.language = parseLanguage(reader, (coding & 0x0CU) == 0x04);
    audio.codingMode = static_cast<std::uint8_t>(coding >> 5U);
    audio.codingName = kAudioCodings.at(audio.codingMode);
    audio.channelsMinusOne = format & 0x07U;
    const unsigned channels = audio.channelsMinusOne + 1U;
    audio.channels = std::to_string(channels) + (channels > 1 ? " channels" : " channel");
    audio.sampleRateCode = (format >> 4U) & 0x03U;
    audio.sampleRateName = kSampleRates.at(audio.sampleRateCode);
    return audio;
}

DvdSubpictureStream parseSubpicture(discio::ByteReader reader)
{
    const std::uint8_t coding = reader.u8();
    reader.skip(1);

    DvdSubpictureStream subpicture;
    subpicture.language = parseLanguage(reader, (coding & 0x03U) == 0x01);
    subpicture.codingMode = static_cast<std::uint8_t>(coding >> 5U);
    subpicture.codingName = subpicture.codingMode == 1 ? "DVD subpicture extended" : "DVD subpicture";
    return subpicture;
}

}  // namespace

bool isVtsIfo(const IfoFile& ifo)
{
    return ifo.sizeBytes() >= kVtsIfoMinimum && ifo.at(0, kVtsIfoMinimum).ok() && ifo.beginsWith(kVtsMagic);
}

std::optional<DvdStreamAttributes> parseStreamAttributes(const IfoFile& ifo)
{
    const std::uint8_t audioCount = ifo.at(kAudioCountOffset, 1).u8();
    const std::uint8_t subpictureCount = ifo.at(kSubpictureCountOffset, 1).u8();
    if (audioCount > kMaxAudioStreams || subpictureCount > kMaxSubpictureStreams) { return std::nullopt; }

    DvdStreamAttributes streams;
    streams.video = parseVideo(ifo.at(kVideoOffset, 2));
    for (std::uint64_t i = 0; i < audioCount; ++i) {
        streams.audio.push_back(parseAudio(ifo.at(kAudioOffset + i * kAudioEntrySize, kAudioEntrySize)));
    }
    for (std::uint64_t i = 0; i < subpictureCount; ++i) {
        streams.subpicture.push_back(
            parseSubpicture(ifo.at(kSubpictureOffset + i * kSubpictureEntrySize, kSubpictureEntrySize)));
    }
    return streams;
}

}  // namespace dvdmeta
