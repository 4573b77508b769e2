#include "dvdmeta/stream_attributes.h"
#include "tests/support/ifo_spec.h"

#include <gtest/gtest.h>

#include <utility>

using testsupport::VtsSpec;

namespace {

dvdmeta::DvdStreamAttributes streamsOf(const VtsSpec& spec)
{
    const testsupport::Bytes bytes = spec.build();
    const auto streams =
        dvdmeta::parseStreamAttributes(dvdmeta::IfoFile("VTS_01_0.IFO", {bytes, bytes.size()}));
    EXPECT_TRUE(streams);
    return streams.value_or(dvdmeta::DvdStreamAttributes{});
}

TEST(StreamAttributes, PictureSizes)
{
    constexpr std::array<std::array<std::uint32_t, 4>, 2> kWidths = {
        {{720, 704, 352, 352}, {720, 704, 352, 352}}};
    constexpr std::array<std::array<std::uint32_t, 4>, 2> kHeights = {
        {{480, 480, 480, 240}, {576, 576, 576, 288}}};
    for (std::uint8_t system = 0; system < 4; ++system) {
        for (std::uint8_t size = 0; size < 4; ++size) {
            const auto video = streamsOf({.video = {.system = system, .pictureSize = size}}).video;
            const bool isPal = system == 1;  // 2 and 3 are NTSC like 0
            EXPECT_EQ(video.width, kWidths.at(isPal ? 1 : 0).at(size));
            EXPECT_EQ(video.height, kHeights.at(isPal ? 1 : 0).at(size));
        }
    }
    for (const auto& [mode, name] : {std::pair{0, "MPEG-1 Video"}, std::pair{1, "MPEG-2 Video"},
                                     std::pair{2, "Unknown"}, std::pair{3, "Unknown"}}) {
        const auto video = streamsOf({.video = {.codingMode = static_cast<std::uint8_t>(mode)}}).video;
        EXPECT_EQ(video.formatName, name);
        EXPECT_EQ(video.codingMode, mode);
    }
}

TEST(StreamAttributes, AudioCodingsChannelsAndRates)
{
    VtsSpec spec;
    for (std::uint8_t i = 0; i < 8; ++i) {
        spec.audio.push_back({.codingMode = i,
                              .sampleRate = static_cast<std::uint8_t>(i % 4),
                              .channels = static_cast<std::uint8_t>(i + 1)});
    }
    const auto audio = streamsOf(spec).audio;
    constexpr std::array<const char*, 8> kCodings = {"AC-3", "Unknown", "MPEG-1", "MPEG-2 ext",
                                                     "LPCM", "SDDS",    "DTS",    "Unknown"};
    constexpr std::array<const char*, 4> kRates = {"48 kHz", "96 kHz", "44.1 kHz", "32 kHz"};
    ASSERT_EQ(audio.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(audio[i].codingMode, i);
        EXPECT_EQ(audio[i].codingName, kCodings.at(i));
        EXPECT_EQ(audio[i].channelsMinusOne, i);
        EXPECT_EQ(audio[i].sampleRateCode, i % 4);
        EXPECT_EQ(audio[i].sampleRateName, kRates.at(i % 4));
    }
    EXPECT_EQ(audio[0].channels, "1 channel");
    EXPECT_EQ(audio[1].channels, "2 channels");
    EXPECT_EQ(audio[7].channels, "8 channels");
}

TEST(StreamAttributes, LanguageMustBeDeclaredAndPrintable)
{
    using namespace std::string_literals;
    const std::vector<std::pair<std::string, dvdmeta::DvdLanguage>> cases = {
        {"de", {'d', 'e'}}, {" ~", {' ', '~'}}, {"d\0"s, {}}, {"\0e"s, {}}, {"d\x7F", {}}, {"\xE9s", {}}};
    for (const auto& [stored, language] : cases) {
        for (std::uint8_t type = 0; type < 4; ++type) {
            const auto streams = streamsOf({.audio = {{.languageType = type, .language = stored}},
                                            .subpicture = {{.languageType = type, .language = stored}}});
            const auto expected = type == 1 ? language : dvdmeta::DvdLanguage{};
            EXPECT_EQ(streams.audio.at(0).language, expected);
            EXPECT_EQ(streams.subpicture.at(0).language, expected);
        }
    }
}

TEST(StreamAttributes, SubpicturesUpTo32)
{
    VtsSpec spec;
    for (std::uint8_t i = 0; i < 32; ++i) {
        spec.subpicture.push_back({.codingMode = static_cast<std::uint8_t>(i % 8)});
    }
    spec.subpicture.back().language = "zz";
    const auto subpicture = streamsOf(spec).subpicture;
    ASSERT_EQ(subpicture.size(), 32U);
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(subpicture[i].codingMode, i % 8);
        EXPECT_EQ(subpicture[i].codingName, i % 8 == 1 ? "DVD subpicture extended" : "DVD subpicture");
    }
    EXPECT_EQ(subpicture[31].language, (dvdmeta::DvdLanguage{'z', 'z'}));
}

TEST(StreamAttributes, OnlyTheLowByteOfACountCounts)
{
    testsupport::Bytes bytes = VtsSpec{.audio = {{}}, .subpicture = {{}}}.build();
    bytes[0x202] = bytes[0x254] = 0xFF;
    const auto streams =
        dvdmeta::parseStreamAttributes(dvdmeta::IfoFile("VTS_01_0.IFO", {bytes, bytes.size()}));
    ASSERT_TRUE(streams);
    EXPECT_EQ(streams->audio.size(), 1U);
    EXPECT_EQ(streams->subpicture.size(), 1U);
}

}  // namespace
