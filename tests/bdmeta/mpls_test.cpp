#include "bdmeta/mpls.h"
#include "tests/bdmeta/built_records.h"
#include "tests/support/fault_table.h"

using bdmeta::BlurayPlayItem;
using bdmeta::BlurayPlaylist;
using testsupport::Bytes;
using testsupport::MplsSpec;

namespace {

testsupport::StnTableSpec oneVideo(std::uint16_t pid)
{
    return {.primaryVideo = {{.pid = pid, .attributes = testsupport::videoAttributes()}}};
}

// Two PlayItems, one of them with angles, three marks.
MplsSpec richPlaylist()
{
    MplsSpec spec;
    spec.numberOfSubPaths = 3;
    spec.playItems = {{.clipName = "00007",
                       .connectionCondition = 6,
                       .refToStcId = 2,
                       .inTime = 90000,
                       .outTime = 180000,
                       .randomAccess = true,
                       .stillMode = 1,
                       .stillTime = 300,
                       .stn = oneVideo(0x1011)},
                      {.clipName = "00008",
                       .inTime = 1,
                       .outTime = 45000,
                       .furtherAngles = {{"00009", "M2TS", 4}, {"00010", "FMTS", 5}},
                       .stn = oneVideo(0x1012)}};
    spec.marks = {{.timeStamp = 90000},
                  {.markType = 2, .refToPlayItemId = 1, .timeStamp = 5, .entryEsPid = 0x1100, .duration = 77},
                  {}};
    return spec;
}

bool parses(const MplsSpec& spec)
{
    return parsePlaylist(spec.build()).has_value();
}

TEST(Mpls, FieldsOfPlaylistItemsAndMarks)
{
    const BlurayPlaylist playlist = playlistOf(richPlaylist());
    EXPECT_EQ(playlist.version.view(), "0200");
    EXPECT_EQ(playlist.subPathCount, 3U);
    EXPECT_EQ(playlist.durationMs, 2000U + 999U);
    ASSERT_EQ(playlist.playItems.size(), 2U);
    const BlurayPlayItem& item = playlist.playItems[0];
    EXPECT_EQ(item.clipName.view(), "00007");
    EXPECT_EQ(item.codecId.view(), "M2TS");
    EXPECT_EQ(item.connectionCondition, 6);
    EXPECT_EQ(item.stcId, 2);
    EXPECT_EQ(item.inTime, 90000U);
    EXPECT_EQ(item.outTime, 180000U);
    EXPECT_EQ(item.durationMs, 2000U);
    EXPECT_TRUE(item.randomAccess);
    EXPECT_EQ(item.stillMode, 1);
    EXPECT_EQ(item.stillTime, 300);
    EXPECT_EQ(item.streams->at(0).pid, 0x1011);
    EXPECT_FALSE(playlist.playItems[1].randomAccess);

    ASSERT_EQ(playlist.marks.size(), 3U);
    const bdmeta::BlurayPlaylistMark& mark = playlist.marks[1];
    EXPECT_EQ(mark.markType, 2);
    EXPECT_EQ(mark.playItemRef, 1);
    EXPECT_EQ(mark.timeStamp, 5U);
    EXPECT_EQ(mark.entryPid, 0x1100);
    EXPECT_EQ(mark.duration, 77U);
}

TEST(Mpls, AnglesBeginWithTheItemsOwnClip)
{
    const BlurayPlaylist playlist = playlistOf(richPlaylist());
    ASSERT_EQ(playlist.playItems[0].angles.size(), 1U);
    EXPECT_EQ(playlist.playItems[0].angles[0].clipName.view(), "00007");
    EXPECT_EQ(playlist.playItems[0].angles[0].stcId, 2);
    const auto& angles = playlist.playItems[1].angles;
    ASSERT_EQ(angles.size(), 3U);
    EXPECT_EQ(angles[0].clipName.view(), "00008");
    EXPECT_EQ(angles[1].clipName.view(), "00009");
    EXPECT_EQ(angles[1].stcId, 4);
    EXPECT_EQ(angles[2].codecId.view(), "FMTS");
    EXPECT_EQ(playlist.playItems[1].streams->at(0).pid, 0x1012) << "behind the angles";
}

TEST(Mpls, AngleCountsAtTheirLimits)
{
    MplsSpec spec;
    spec.playItems[0] = {.stn = oneVideo(5), .isMultiAngle = true, .numberOfAngles = 0};
    BlurayPlaylist playlist = playlistOf(spec);
    EXPECT_EQ(playlist.playItems[0].angles.size(), 1U) << "0 stands for 1";
    EXPECT_EQ(playlist.playItems[0].streams->at(0).pid, 5);

    spec.playItems[0] = {.furtherAngles = std::vector<testsupport::AngleSpec>(254), .stn = oneVideo(6)};
    playlist = playlistOf(spec);
    EXPECT_EQ(playlist.playItems[0].angles.size(), 255U);
    EXPECT_EQ(playlist.playItems[0].streams->at(0).pid, 6);

    // The angles must lie inside the item, the stream table need not.
    spec.playItems[0] = {.furtherAngles = std::vector<testsupport::AngleSpec>(2), .length = 34 + 20};
    EXPECT_TRUE(parses(spec));
    spec.playItems[0].length = 34 + 19;
    EXPECT_FALSE(parses(spec));
    spec.playItems[0] = {.isMultiAngle = true, .length = 34};
    EXPECT_TRUE(parses(spec));
    spec.playItems[0].length = 33;
    EXPECT_FALSE(parses(spec));
}

TEST(Mpls, DurationsWrapAndAddUp)
{
    MplsSpec spec;
    spec.playItems = {
        {.inTime = 45000, .outTime = 0}, {.inTime = 7, .outTime = 7}, {.inTime = 0, .outTime = 44}};
    const BlurayPlaylist playlist = playlistOf(spec);
    const std::uint64_t wrapped = (0x1'0000'0000ULL - 45000) * 1000 / 45000;
    EXPECT_EQ(playlist.playItems[0].durationMs, wrapped);
    EXPECT_EQ(playlist.playItems[1].durationMs, 0U);
    EXPECT_EQ(playlist.playItems[2].durationMs, 0U) << "44 ticks are less than a millisecond";
    EXPECT_EQ(playlist.durationMs, wrapped);
}

TEST(Mpls, AppInfoIsTakenFromLength17OnWhereItFits)
{
    MplsSpec spec;
    spec.playbackType = 3;
    spec.appInfoFlags = 0xA0;
    BlurayPlaylist playlist = playlistOf(spec);  // of length 14
    EXPECT_EQ(playlist.playbackType, 0);
    EXPECT_FALSE(playlist.randomAccess || playlist.audioMixApp || playlist.losslessBypassMixer);

    const auto fits = static_cast<std::uint32_t>(spec.build().size() - 44);
    for (const auto& [length, isTaken] : std::vector<std::pair<std::uint32_t, bool>>{
             {16, false}, {17, true}, {fits, true}, {fits + 1, false}, {UINT32_MAX, false}}) {
        spec.appInfoLength = length;
        playlist = playlistOf(spec);
        EXPECT_EQ(playlist.playbackType, isTaken ? 3 : 0) << length;
        EXPECT_EQ(playlist.randomAccess, isTaken);
        EXPECT_FALSE(playlist.audioMixApp);
        EXPECT_EQ(playlist.losslessBypassMixer, isTaken);
    }
    spec.appInfoFlags = 0x40;
    spec.appInfoLength = 17;
    EXPECT_TRUE(playlistOf(spec).audioMixApp);
}

TEST(Mpls, ItemsFollowTheirLengthsWhateverTheTableTook)
{
    // The first item's table takes its entries from beyond its end, which is in the second item.
    MplsSpec spec;
    spec.playItems = {{.stn = {.length = 14}}, {.clipName = "00002"}};
    spec.playItems[0].stn.primaryVideoCount =
        1;  // its entry: 0 bytes of type ... the next item's length, 0x0030
    EXPECT_FALSE(parses(spec));
    spec.playItems[0].stn.primaryVideoCount = 0;
    spec.playItems[0].length = 32;  // the next item would begin with the table
    EXPECT_FALSE(parses(spec));
    spec.playItems[0].length = 60;  // a gap behind the table of 16 bytes
    Bytes bytes = spec.build();
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(spec.playItemStart(1)), 12, 0xEE);
    testsupport::putBe32(bytes, 12, static_cast<std::uint32_t>(bytes.size() - 20));
    const auto playlist = parsePlaylist(bytes);
    ASSERT_TRUE(playlist);
    EXPECT_EQ(playlist->playItems[1].clipName.view(), "00002");
}

TEST(Mpls, TableMayReachIntoTheMarks)
{
    MplsSpec spec;
    spec.playItems[0].stn = oneVideo(0x1011);
    spec.playItems[0].stn.length = 14;
    spec.playItems[0].length = 32 + 16;  // with the table's header alone
    Bytes bytes = spec.build();
    testsupport::putBe32(bytes, 12, static_cast<std::uint32_t>(spec.playItemStart(0) + 50));
    const auto playlist = parsePlaylist(bytes);
    ASSERT_TRUE(playlist);
    EXPECT_EQ(playlist->playItems[0].streams->at(0).pid, 0x1011);
}

TEST(Mpls, NothingToPlay)
{
    MplsSpec spec;
    spec.playItems.clear();
    spec.marks.clear();
    const BlurayPlaylist playlist = playlistOf(spec);
    EXPECT_TRUE(playlist.playItems.empty() && playlist.marks.empty());
    EXPECT_EQ(playlist.durationMs, 0U);
}

TEST(Mpls, HeadersThatAreNone)
{
    EXPECT_FALSE(parses({.magic = "MPLX"}));
    EXPECT_FALSE(parses({.magic = "mpls"}));
    Bytes bytes = MplsSpec().build();
    const auto size = static_cast<std::uint32_t>(bytes.size());
    for (const std::uint32_t address : {size - 9, size, size + 1, UINT32_MAX}) {
        EXPECT_FALSE(parses({.playListAddress = address})) << address;
    }
    for (const std::uint32_t address : {size - 5, size, size + 1, UINT32_MAX}) {
        EXPECT_FALSE(parses({.markAddress = address})) << address;
    }
    // Lists of nothing at the very end.
    bytes.resize(bytes.size() + 10);
    testsupport::putBe32(bytes, 8, size);
    testsupport::putBe32(bytes, 12, size + 4);
    EXPECT_TRUE(parsePlaylist(bytes));
}

TEST(Mpls, MinimumSizeIs58)
{
    Bytes bytes(58);
    testsupport::putText(bytes, 0, "MPLS0300");
    testsupport::putBe32(bytes, 8, 48);
    testsupport::putBe32(bytes, 12, 52);
    EXPECT_TRUE(parsePlaylist(bytes));
    testsupport::putBe32(bytes, 8, 47);
    testsupport::putBe32(bytes, 12, 51);
    bytes.pop_back();
    EXPECT_FALSE(parsePlaylist(bytes));
}

TEST(Mpls, CountsAndLengthsThatAreNotThere)
{
    MplsSpec spec = richPlaylist();
    spec.numberOfPlayItems = 3;  // the third would be the marks
    EXPECT_FALSE(parses(spec));
    spec.numberOfPlayItems = 0xFFFF;
    EXPECT_FALSE(parses(spec));
    spec = richPlaylist();
    spec.numberOfMarks = 4;
    EXPECT_FALSE(parses(spec));
    spec = richPlaylist();
    spec.numberOfMarks = 2;
    EXPECT_TRUE(parses(spec));
    for (const std::uint16_t length : std::initializer_list<std::uint16_t>{0, 31, 0xFFFF}) {
        spec = richPlaylist();
        spec.playItems[1].length = length;
        EXPECT_FALSE(parses(spec)) << length;
    }
}

TEST(Mpls, EveryPrefixIsMalformed)
{
    const Bytes bytes = richPlaylist().build();
    ASSERT_TRUE(parsePlaylist(bytes));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        ASSERT_FALSE(parsePlaylist(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))))
            << size;
    }
    testsupport::recordFault("File: cut off after any byte", "malformed", bytes.size());
}

}  // namespace
