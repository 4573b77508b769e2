#include "bdmeta/stream_attributes.h"
#include "tests/support/mpls_spec.h"

#include <gtest/gtest.h>

#include <map>

using bdmeta::BlurayStream;
using bdmeta::StreamKind;
using testsupport::Bytes;

namespace {

BlurayStream decode(const Bytes& attributes, bool fromClipInfo = false)
{
    BlurayStream stream;
    stream.language = bdmeta::LanguageCode("old");  // of a stream decoded before
    stream.width = 1;
    bdmeta::decodeStreamAttributes(stream, 0x1011, attributes, fromClipInfo);
    EXPECT_EQ(stream.pid, 0x1011);
    return stream;
}

struct NamedKind {
    std::string name;
    StreamKind kind;
};

TEST(StreamAttributes, EveryCodingTypeHasItsNameAndKind)
{
    const std::map<int, NamedKind> known = {{1, {"MPEG-1 video", StreamKind::Video}},
                                            {2, {"MPEG-2 video", StreamKind::Video}},
                                            {3, {"MPEG-1 audio", StreamKind::Audio}},
                                            {4, {"MPEG-2 audio", StreamKind::Audio}},
                                            {27, {"H.264", StreamKind::Video}},
                                            {32, {"H.264 MVC", StreamKind::Video}},
                                            {36, {"HEVC", StreamKind::Video}},
                                            {128, {"LPCM", StreamKind::Audio}},
                                            {129, {"AC-3", StreamKind::Audio}},
                                            {130, {"DTS", StreamKind::Audio}},
                                            {131, {"TrueHD", StreamKind::Audio}},
                                            {132, {"AC-3 Plus", StreamKind::Audio}},
                                            {133, {"DTS-HD", StreamKind::Audio}},
                                            {134, {"DTS-HD Master", StreamKind::Audio}},
                                            {144, {"Presentation graphics", StreamKind::Subtitle}},
                                            {145, {"Interactive graphics", StreamKind::InteractiveGraphics}},
                                            {146, {"Text subtitle", StreamKind::Subtitle}},
                                            {161, {"AC-3 Plus secondary", StreamKind::Audio}},
                                            {162, {"DTS-HD secondary", StreamKind::Audio}},
                                            {234, {"VC-1", StreamKind::Video}}};
    for (int type = 0; type < 256; ++type) {
        const BlurayStream stream = decode({static_cast<std::uint8_t>(type), 0, 0, 0, 0});
        const auto expected = known.find(type);
        EXPECT_EQ(stream.codingType, type);
        EXPECT_EQ(stream.codingName, expected != known.end() ? expected->second.name : "Unknown") << type;
        EXPECT_EQ(stream.kind, expected != known.end() ? expected->second.kind : StreamKind::Unknown) << type;
    }
}

TEST(StreamAttributes, VideoFormatsWithTheirSizes)
{
    struct Format {
        std::string name;
        int width;
        int height;
    };
    const std::vector<Format> known = {{"Unknown", 0, 0},     {"480i", 720, 480},    {"576i", 720, 576},
                                       {"480p", 720, 480},    {"1080i", 1920, 1080}, {"720p", 1280, 720},
                                       {"1080p", 1920, 1080}, {"576p", 720, 576},    {"2160p", 3840, 2160}};
    for (std::uint8_t code = 0; code < 16; ++code) {
        const BlurayStream stream = decode(testsupport::videoAttributes(2, code, 0));
        const Format& expected = known[code < known.size() ? code : 0];
        EXPECT_EQ(stream.videoFormat, code);
        EXPECT_EQ(stream.videoFormatName, expected.name);
        EXPECT_EQ(stream.width, expected.width);
        EXPECT_EQ(stream.height, expected.height);
    }
}

TEST(StreamAttributes, RatesAndLayouts)
{
    const std::map<int, std::string> frameRates = {{1, "23.976 Hz"}, {2, "24 Hz"}, {3, "25 Hz"},
                                                   {4, "29.97 Hz"},  {6, "50 Hz"}, {7, "59.94 Hz"}};
    const std::map<int, std::string> layouts = {
        {1, "Mono"}, {3, "Stereo"}, {6, "Multi-channel"}, {12, "Combo"}};
    const std::map<int, std::string> sampleRates = {
        {1, "48 kHz"}, {4, "96 kHz"}, {5, "192 kHz"}, {12, "48/192 kHz"}, {14, "48/96 kHz"}};
    const auto nameIn = [](const std::map<int, std::string>& names, int code) {
        const auto name = names.find(code);
        return name != names.end() ? name->second : "Unknown";
    };
    for (std::uint8_t code = 0; code < 16; ++code) {
        EXPECT_EQ(decode(testsupport::videoAttributes(27, 6, code)).frameRateName, nameIn(frameRates, code));
        const BlurayStream audio = decode(testsupport::audioAttributes("deu", 0x83, code, 15U - code));
        EXPECT_EQ(audio.channelLayoutName, nameIn(layouts, code));
        EXPECT_EQ(audio.sampleRateName, nameIn(sampleRates, 15 - code));
        EXPECT_EQ(audio.audioFormat, code);
        EXPECT_EQ(audio.sampleRate, 15 - code);
        EXPECT_EQ(audio.language.view(), "deu");
        EXPECT_STREQ(audio.videoFormatName, "");
        EXPECT_EQ(audio.width, 0);
    }
}

TEST(StreamAttributes, HevcIsLaidOutDifferentlyInClipInformation)
{
    const Bytes attributes = {36, 0x81, 0b1101'1010, 0xC7};
    const BlurayStream inPlaylist = decode(attributes);
    EXPECT_EQ(inPlaylist.dynamicRangeType, 13);
    EXPECT_EQ(inPlaylist.colorSpace, 10);
    const BlurayStream inClip = decode(attributes, true);
    EXPECT_EQ(inClip.dynamicRangeType, 0b1011);
    EXPECT_EQ(inClip.colorSpace, 2 * 16 + 0xC);

    // One byte less each.
    EXPECT_EQ(decode({36, 0x81}).dynamicRangeType, 0);
    EXPECT_EQ(decode({36, 0x81, 0xFF}, true).dynamicRangeType, 0);
    EXPECT_EQ(decode({36, 0x81, 0xFF}, true).height, 2160);
    EXPECT_EQ(decode({27, 0x81, 0xFF, 0xFF}).dynamicRangeType, 0) << "HEVC alone has them";
}

TEST(StreamAttributes, GraphicsAndText)
{
    EXPECT_EQ(decode(testsupport::graphicsAttributes("fra")).language.view(), "fra");
    EXPECT_EQ(decode(testsupport::graphicsAttributes("fra", 145)).language.view(), "fra");
    const BlurayStream text = decode(testsupport::textAttributes("zho", 5));
    EXPECT_EQ(text.language.view(), "zho");
    EXPECT_EQ(text.characterCode, 5);
    EXPECT_EQ(decode({144, 'e', 0, 'g'}).language.view(), "e") << "a text ends at its first NUL";
}

TEST(StreamAttributes, BodiesTooShortForTheirKindGiveTheCodingAlone)
{
    const std::vector<Bytes> whole = {{27, 0x61},
                                      {129, 0x31, 'e', 'n', 'g'},
                                      {144, 'e', 'n', 'g'},
                                      {145, 'e', 'n', 'g'},
                                      {146, 1, 'e', 'n', 'g'}};
    for (Bytes body : whole) {
        EXPECT_NE(decode(body).kind, StreamKind::Unknown);
        body.pop_back();
        const BlurayStream stream = decode(body);
        EXPECT_EQ(stream.kind, StreamKind::Unknown);
        EXPECT_EQ(stream.codingType, body.front());
        EXPECT_STRNE(stream.codingName, "");
        EXPECT_TRUE(stream.language.isEmpty());
        EXPECT_TRUE(stream.audioFormat == 0 && stream.characterCode == 0 && stream.videoFormat == 0);
        EXPECT_STREQ(stream.channelLayoutName, "");
        EXPECT_STREQ(stream.videoFormatName, "");
    }
    const BlurayStream none = decode({});
    EXPECT_EQ(none.codingType, 0);
    EXPECT_STREQ(none.codingName, "");
}

}  // namespace
