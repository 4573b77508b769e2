#include "bdmeta/bluray_titles.h"
#include "bdmeta/distinct_play_time.h"
#include "tests/bdmeta/derivation.h"

using bdmeta::BlurayDisc;
using bdmeta::BlurayTitle;
using testsupport::ClpiSpec;
using testsupport::MplsSpec;

namespace {

// Entry points of 1,000, 3,000 and 6,000 packets at 1, 2 and 3 times 25,600 ticks; 9,000 packets.
ClpiSpec mappedClip()
{
    ClpiSpec spec;
    spec.numberOfSourcePackets = 9000;
    spec.epStreams = {testsupport::epStream({{25600, 1000}, {51200, 3000}, {76800, 6000}})};
    return spec;
}

TEST(BlurayTitles, FieldsOfATitle)
{
    BlurayDisc disc;
    MplsSpec spec;
    spec.playItems = {{.clipName = "00003", .inTime = 0, .outTime = 45000},
                      {.clipName = "00001", .outTime = 90000, .furtherAngles = {{}, {}}},
                      {.clipName = "00003", .furtherAngles = {{}}}};
    spec.marks.resize(4);
    disc.playlists = {playlistOf({}, "00000"), playlistOf(spec, "01234")};
    const Derivation derivation = derive(disc);
    ASSERT_EQ(derivation.titles.size(), 2U);
    EXPECT_EQ(derivation.titles[0].titleNumber, 0U);
    const BlurayTitle& title = derivation.titles[1];
    EXPECT_EQ(title.index, 1U);
    EXPECT_EQ(title.titleNumber, 1234U);
    EXPECT_EQ(title.durationMs, 4000U);
    EXPECT_EQ(title.chapterCount, 4U);
    EXPECT_EQ(title.playmarkCount, 4U);
    EXPECT_EQ(title.clipCount, 3U);
    EXPECT_EQ(title.angleCount, 3);
    EXPECT_EQ(title.alternateAngleItemCount, 2U);
    EXPECT_EQ(title.segmentMap,
              (std::vector{bdmeta::ClipName("00003"), bdmeta::ClipName("00001"), bdmeta::ClipName("00003")}));
}

TEST(BlurayTitles, PlayTimeCountsEachStretchOfAClipOnce)
{
    const auto item = [](const char* clip, std::uint32_t in, std::uint32_t out, std::uint8_t stcId = 0) {
        return testsupport::PlayItemSpec{
            .clipName = clip, .refToStcId = stcId, .inTime = in * 45'000, .outTime = out * 45'000};
    };
    MplsSpec spec;
    spec.playItems = {item("00001", 10, 20), item("00001", 15, 30),    item("00001", 40, 41),
                      item("00001", 10, 20), item("00001", 10, 20, 1), item("00002", 0, 100)};
    EXPECT_EQ(bdmeta::distinctPlayTimeMs(playlistOf(spec)), (20U + 1 + 10 + 100) * 1000);
    spec.playItems = std::vector(300, item("00001", 600, 650));
    EXPECT_EQ(bdmeta::distinctPlayTimeMs(playlistOf(spec)), 50'000U);
}

TEST(BlurayTitles, TitleNumbersAreReadAsNumbersAreElsewhere)
{
    const std::vector<std::pair<std::string, std::uint32_t>> cases = {
        {"00800", 800}, {"99999", 99999}, {"12ab", 12}, {"abc", 0}, {"", 0}, {" 7", 7}, {"-1", UINT32_MAX}};
    BlurayDisc disc;
    for (const auto& [name, number] : cases) {
        disc.playlists = {playlistOf({}, name)};
        EXPECT_EQ(derive(disc).titles.at(0).titleNumber, number) << name;
    }
}

TEST(BlurayTitles, SizesOfAllItemsAddUp)
{
    BlurayDisc disc;
    disc.clips = {clipOf(mappedClip(), 9000 * 192, "00001"), clipOf(mappedClip(), 4000 * 192, "00002")};
    MplsSpec spec;
    spec.playItems = {{.clipName = "00001", .inTime = 25600, .outTime = 60000},  // 1,000 to 6,000
                      {.clipName = "00002", .inTime = 51200, .outTime = 76800},  // 3,000 to the file's 4,000
                      {.clipName = "00001", .inTime = 30000, .outTime = 30000},  // nothing
                      {.clipName = "00007", .inTime = 25600, .outTime = 60000},  // no such clip
                      {.clipName = "00001", .inTime = 76800, .outTime = 76801, .furtherAngles = {{"00002"}}}};
    disc.playlists = {playlistOf(spec)};
    const Derivation derivation = derive(disc);
    EXPECT_EQ(derivation.titles[0].playbackSize, (5000U + 1000U + 0U + 0U + 3000U) * 192U);
    EXPECT_FALSE(derivation.titles[0].approximate);
    EXPECT_EQ(derivation.fallback.count, 0U);
    EXPECT_TRUE(derivation.fallback.firstClip.isEmpty());
}

TEST(BlurayTitles, RangesThatAreNotFoundCountTheWholeFile)
{
    BlurayDisc disc;
    disc.clips = {clipOf(mappedClip(), 10'000'000'000, "00001"), clipOf({}, 5000, "00002"),
                  clipOf({}, 0, "00003")};
    MplsSpec exact;
    exact.playItems = {{.inTime = 25600, .outTime = 30000}};
    MplsSpec spec;
    spec.playItems = {{.clipName = "00002"},                                     // no map
                      {.clipName = "00001", .inTime = 0, .outTime = 60000},      // no entry to start at
                      {.clipName = "00001", .inTime = 60000, .outTime = 25600},  // backwards
                      {.clipName = "00001", .refToStcId = 1, .inTime = 25600, .outTime = 60000},
                      {.clipName = "00003"},
                      {.clipName = "00001", .inTime = 25600, .outTime = 30000}};
    disc.playlists = {playlistOf(exact, "00001"), playlistOf(spec, "00002"), playlistOf(spec, "00003")};
    const Derivation derivation = derive(disc);
    EXPECT_FALSE(derivation.titles[0].approximate);
    EXPECT_EQ(derivation.titles[0].playbackSize, 2000U * 192U);
    EXPECT_TRUE(derivation.titles[1].approximate);
    EXPECT_EQ(derivation.titles[1].playbackSize, 5000 + 3 * 10'000'000'000 + 0 + 2000 * 192);
    EXPECT_EQ(derivation.fallback.count, 10U);
    EXPECT_EQ(derivation.fallback.firstPlaylist.view(), "00002");
    EXPECT_EQ(derivation.fallback.firstClip.view(), "00002");
}

TEST(BlurayTitles, FirstClipOfANameCounts)
{
    BlurayDisc disc;
    disc.clips = {clipOf({}, 7, "00002"), clipOf({}, 100, "00001"), clipOf({}, 200, "00001")};
    disc.playlists = {playlistOf({})};
    EXPECT_EQ(derive(disc).titles[0].playbackSize, 100U);
}

TEST(BlurayTitles, SummaryAddsUpTheTitles)
{
    BlurayDisc disc;
    disc.volumeId = "A_DISC";
    disc.discId = "00112233445566778899AABBCCDDEEFF";
    disc.clips = {clipOf({}, 6'000'000'000)};
    MplsSpec spec;
    spec.playItems[0].stn = {.primaryVideo = {video(1)},
                             .primaryAudio = {audio(2), audio(3)},
                             .graphics = {graphics(4)},
                             .interactiveGraphics = {graphics(5)},
                             .secondaryAudio = {audio(6)},
                             .secondaryVideo = {video(7)}};
    disc.playlists = {playlistOf(spec), playlistOf(spec)};
    const bdmeta::BlurayDiscSummary summary = derive(disc).summary;
    EXPECT_EQ(summary.discName, "A_DISC");
    EXPECT_EQ(summary.discLabel, "A_DISC");
    EXPECT_EQ(summary.discIdBytes,
              (std::array<std::uint8_t, 16>{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA,
                                            0xBB, 0xCC, 0xDD, 0xEE, 0xFF}));
    EXPECT_EQ(summary.titleCount, 2U);
    EXPECT_EQ(summary.totalDurationMs, 2000U);
    EXPECT_EQ(summary.totalPlaybackSize, 12'000'000'000U);
    EXPECT_EQ(summary.totalChapters, 2U);
    EXPECT_EQ(summary.totalPlaymarks, 2U);
    EXPECT_EQ(summary.totalClips, 2U);
    EXPECT_EQ(summary.totalPrimaryVideo, 2U);
    EXPECT_EQ(summary.totalPrimaryAudio, 4U);
    EXPECT_EQ(summary.totalSubtitles, 2U);
    EXPECT_EQ(summary.totalInteractiveGraphics, 2U);
    EXPECT_EQ(summary.totalSecondaryAudio, 2U);
    EXPECT_EQ(summary.totalSecondaryVideo, 2U);
}

TEST(BlurayTitles, DiscIdIsReadUpToTheFirstPairThatIsNone)
{
    BlurayDisc disc;
    disc.playlists = {playlistOf({})};
    const auto idBytes = [&disc](const std::string& text) {
        disc.discId = text;
        const auto bytes = derive(disc).summary.discIdBytes;
        return std::vector<int>(bytes.begin(), bytes.begin() + 3);
    };
    EXPECT_EQ(idBytes(""), (std::vector{0, 0, 0}));
    EXPECT_EQ(idBytes("A1B"), (std::vector{0xA1, 0, 0}));
    EXPECT_EQ(idBytes("A1BG22"), (std::vector{0xA1, 0, 0}));
    EXPECT_EQ(idBytes("A1 122"), (std::vector{0xA1, 0, 0}));
    EXPECT_EQ(idBytes(std::string(40, 'F')), (std::vector{0xFF, 0xFF, 0xFF}));
}

TEST(BlurayTitles, DiscWithoutPlaylists)
{
    BlurayDisc disc;
    disc.volumeId = "EMPTY";
    const Derivation derivation = derive(disc);
    EXPECT_TRUE(derivation.titles.empty());
    EXPECT_EQ(derivation.summary.discName, "");
    EXPECT_EQ(derivation.summary.totalClips, 0U);
    EXPECT_EQ(derivation.fallback.count, 0U);
}

TEST(BlurayTitles, ItemsWithoutAny)
{
    MplsSpec spec;
    spec.playItems.clear();
    const BlurayTitle title = titleOf(spec);
    EXPECT_EQ(title.angleCount, 0);
    EXPECT_EQ(title.playbackSize, 0U);
    EXPECT_FALSE(title.approximate);
}

TEST(BlurayTitles, EveryArgumentIsRequired)
{
    const BlurayDisc disc;
    Derivation derivation;
    auto* titles = &derivation.titles;
    auto* summary = &derivation.summary;
    auto* fallback = &derivation.fallback;
    discio::ReadBudget budget;
    EXPECT_EQ(deriveBlurayTitles(nullptr, titles, summary, fallback, budget), -1);
    EXPECT_EQ(deriveBlurayTitles(&disc, nullptr, summary, fallback, budget), -1);
    EXPECT_EQ(deriveBlurayTitles(&disc, titles, nullptr, fallback, budget), -1);
    EXPECT_EQ(deriveBlurayTitles(&disc, titles, summary, nullptr, budget), -1);
    EXPECT_EQ(deriveBlurayTitles(&disc, titles, summary, fallback, budget), 0);
}

// Tables that overlap in the file can claim more streams than any view could show.
TEST(BlurayTitles, MoreDistinctStreamsThanCanBeShownFail)
{
    std::vector<bdmeta::BlurayStream> streams(125'000);
    for (std::size_t i = 0; i < streams.size(); ++i) {
        streams[i].pid = static_cast<std::uint16_t>(i & 0xFFFFU);
        streams[i].codingType = static_cast<std::uint8_t>(128 + (i >> 16U));
        streams[i].category = bdmeta::StreamCategory::PrimaryAudio;
    }
    BlurayDisc disc;
    disc.playlists = {playlistOf({}, "00001")};
    disc.playlists[0].playItems[0].streams =
        std::make_shared<const std::vector<bdmeta::BlurayStream>>(std::move(streams));
    EXPECT_EQ(derive(disc).titles.at(0).audioTracks.size(), 125'000U);
    disc.playlists.push_back(disc.playlists[0]);
    const Derivation derivation = derive(disc);
    EXPECT_EQ(derivation.bound, "the disc has more than 250,000 titles and streams to show");
    EXPECT_TRUE(derivation.titles.empty());
}

}  // namespace
