#include "bdmeta/title_streams.h"
#include "tests/bdmeta/derivation.h"

using bdmeta::BlurayTitle;
using bdmeta::StreamCategory;
using testsupport::MplsSpec;

namespace {

TEST(TitleStreams, StreamCountsAreSumsOverTheItems)
{
    MplsSpec spec;
    testsupport::StnTableSpec stn = {
        .primaryVideo = {video(1)},
        .primaryAudio = {audio(2), audio(3)},
        .graphics = {graphics(4), graphics(5)},
        .pipGraphics = {graphics(6)},
        .interactiveGraphics = {graphics(7), graphics(8), graphics(9), graphics(10)},
        .secondaryAudio = {audio(11)},
        .secondaryVideo = {video(12), video(13)},
        .dolbyVision = {video(14)}};
    spec.playItems = {{.stn = stn}, {.stn = stn}, {}, {.stn = stn}};
    const BlurayTitle title = titleOf(spec);
    EXPECT_EQ(title.primaryVideoCount, 3U);
    EXPECT_EQ(title.primaryAudioCount, 6U);
    EXPECT_EQ(title.subtitleCount, 9U);
    EXPECT_EQ(title.interactiveGraphicsCount, 12U);
    EXPECT_EQ(title.secondaryAudioCount, 3U);
    EXPECT_EQ(title.secondaryVideoCount, 6U);
    EXPECT_EQ(title.videoCodecs.size(), 4U);
    EXPECT_EQ(title.audioTracks.size(), 3U);
    EXPECT_EQ(title.subtitleTracks.size(), 3U);
}

TEST(TitleStreams, DistinctStreamsInTheOrderTheyAreMet)
{
    MplsSpec spec;
    testsupport::StnTableSpec first = {.primaryVideo = {video(9), video(1)},
                                       .primaryAudio = {audio(8, "fra"), audio(8, "eng"), audio(8, "fra")},
                                       .secondaryAudio = {audio(8, "fra")}};
    testsupport::StnTableSpec second = {.primaryVideo = {video(1), video(1, 2), video(9, 27, 5)},
                                        .primaryAudio = {audio(8, "fra", 0x82), audio(2), audio(8, "eng")},
                                        .graphics = {graphics(3), graphics(3, "deu"), graphics(3)},
                                        .secondaryVideo = {video(9)}};
    spec.playItems = {{.stn = first}, {.stn = second}, {.stn = first}};
    const BlurayTitle title = titleOf(spec);

    std::ostringstream videos;
    for (const bdmeta::BlurayVideoCodec& codec : title.videoCodecs) {
        videos << codec.pid << ' ' << codec.codingName << ' ' << static_cast<int>(codec.category) << '/'
               << int{codec.entryType} << ' ' << codec.videoFormatName << "; ";
    }
    EXPECT_EQ(videos.str(),
              "9 H.264 1/1 1080p; 1 H.264 1/1 1080p; 1 MPEG-2 video 1/1 1080p; 9 H.264 6/1 1080p; ");
    std::ostringstream audios;
    for (const bdmeta::BlurayAudioTrack& track : title.audioTracks) {
        audios << track.pid << ' ' << track.name << ' ' << track.language.view() << ' '
               << static_cast<int>(track.category) << ' ' << track.channelLayout << ' ' << track.sampleRate
               << "; ";
    }
    EXPECT_EQ(audios.str(), "8 AC-3 fra 2 Multi-channel 48 kHz; 8 AC-3 eng 2 Multi-channel 48 kHz; "
                            "8 AC-3 fra 5 Multi-channel 48 kHz; 8 DTS fra 2 Multi-channel 48 kHz; "
                            "2 AC-3 eng 2 Multi-channel 48 kHz; ");
    ASSERT_EQ(title.subtitleTracks.size(), 2U);
    EXPECT_EQ(title.subtitleTracks[1].language.view(), "deu");
    EXPECT_STREQ(title.subtitleTracks[0].format, "Presentation graphics");
}

TEST(TitleStreams, PictureSizeIsOfTheFirstVideoThatHasOne)
{
    MplsSpec spec;
    spec.playItems = {
        {.stn = {.primaryVideo = {video(1, 27, 0), video(2, 27, 9)}, .primaryAudio = {audio(3)}}},
        {.stn = {.secondaryVideo = {video(4, 27, 2)}}},
        {.stn = {.primaryVideo = {video(5, 27, 8)}}}};
    const BlurayTitle title = titleOf(spec);
    EXPECT_EQ(title.width, 720U);
    EXPECT_EQ(title.height, 576U);
    EXPECT_EQ(titleOf({}).width, 0U);
}

TEST(TitleStreams, TextSubtitlesNameTheirEncoding)
{
    const std::vector<std::pair<std::uint8_t, std::string>> encodings = {
        {0, ""},        {1, "UTF-8"}, {2, "UTF-16BE"}, {3, "Shift JIS"}, {4, "EUC-KR"},
        {5, "GB18030"}, {6, "GB"},    {7, "Big5"},     {8, ""},          {255, ""}};
    MplsSpec spec;
    for (const auto& [code, name] : encodings) {
        spec.playItems[0].stn.graphics.push_back(
            {.pid = code, .attributes = testsupport::textAttributes("eng", code)});
    }
    const BlurayTitle title = titleOf(spec);
    ASSERT_EQ(title.subtitleTracks.size(), encodings.size());
    for (std::size_t i = 0; i < encodings.size(); ++i) {
        EXPECT_EQ(title.subtitleTracks[i].characterEncoding, encodings[i].second);
    }
}

TEST(TitleStreams, StreamsWithoutNamesGetOnes)
{
    std::vector<bdmeta::BlurayStream> streams;
    for (const std::uint8_t codingType : std::vector<std::uint8_t>{4, 131, 134, 161}) {
        streams.emplace_back().codingType = codingType;
        streams.back().category = StreamCategory::PrimaryAudio;
    }
    for (const std::uint8_t codingType : std::vector<std::uint8_t>{144, 145, 146}) {
        streams.emplace_back().codingType = codingType;
        streams.back().category = StreamCategory::Subtitle;
    }
    streams.emplace_back().category = StreamCategory::PrimaryVideo;
    bdmeta::BlurayDisc disc;
    disc.playlists = {playlistOf({})};
    disc.playlists[0].playItems[0].streams =
        std::make_shared<const std::vector<bdmeta::BlurayStream>>(std::move(streams));

    const BlurayTitle title = derive(disc).titles[0];
    std::string names;
    for (const bdmeta::BlurayAudioTrack& track : title.audioTracks) {
        names += std::string(track.name) + "; " + track.channelLayout + "; " + track.sampleRate + '\n';
    }
    EXPECT_EQ(names, "MPEG-2 Audio; Unknown; Unknown\n"
                     "Dolby TrueHD; Unknown; Unknown\n"
                     "DTS-HD Master Audio; Unknown; Unknown\n"
                     "Unknown; Unknown; Unknown\n");
    ASSERT_EQ(title.subtitleTracks.size(), 3U);
    EXPECT_STREQ(title.subtitleTracks[0].format, "Presentation Graphics");
    EXPECT_STREQ(title.subtitleTracks[1].format, "Subtitle");
    EXPECT_STREQ(title.subtitleTracks[2].format, "Text Subtitle");
    EXPECT_STREQ(title.videoCodecs.at(0).codingName, "Unknown");
}

}  // namespace
