// Files made to exhaust their reader: small ones that claim much.
#include "bdmeta/ep_map.h"
#include "tests/bdmeta/derivation.h"
#include "tests/bdmeta/ep_walk.h"
#include "tests/support/fault_table.h"

using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::EpStreamSpec;

namespace {

// Coarse entries of which every second owns all fine ones.
EpStreamSpec zigzag(std::uint32_t coarseCount, std::uint32_t fineCount)
{
    EpStreamSpec stream;
    for (std::uint32_t i = 0; i < coarseCount; ++i) {
        stream.coarse.push_back({i % 2 == 0 ? 0 : fineCount, 2 * (i % 0x2000), (i % 0x8000) << 17U});
    }
    for (std::uint32_t i = 0; i < fineCount; ++i) {
        stream.fine.push_back({.pts = i * 37 % 0x800, .spn = i * 91 % 0x20000});
    }
    return stream;
}

TEST(HostileDisc, FineEntriesOfManyOwnersAreAnsweredRight)
{
    ClpiSpec spec;
    spec.epStreams = {zigzag(101, 300)};
    const bdmeta::BlurayClip clip = clipOf(spec);
    const EpWalk walk(clip.rawData, clip.sourcePacketCount);
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    for (std::uint32_t time = 0; time < 103U << 19U; time += 1234567) {
        for (const bool isStart : {true, false}) {
            const auto expected = walk.find(time, isStart, 0);
            std::uint32_t packet = 0;
            ASSERT_EQ(findEntryPacket(map, time, isStart, 0, packet), expected.has_value());
            if (expected) { ASSERT_EQ(packet, *expected) << time; }
        }
    }
    EXPECT_EQ(budget.reached(), nullptr);
}

TEST(HostileDisc, WalksAreCountedAndNotIndexed)
{
    ClpiSpec spec;
    spec.epStreams = {zigzag(100, 300)};
    const bdmeta::BlurayClip clip = clipOf(spec);
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::LookUps, 100 + 2 * (100 + 50 * 300) + 1, "steps");
    bdmeta::EpMap map(clip, budget);
    std::uint32_t packet = 0;
    EXPECT_TRUE(findEntryPacket(map, 0, false, 0, packet));
    EXPECT_TRUE(findEntryPacket(map, 0, false, 0, packet));
    EXPECT_EQ(budget.reached(), nullptr);
    EXPECT_FALSE(findEntryPacket(map, 0, false, 0, packet));
    EXPECT_STREQ(budget.reached(), "steps");
}

TEST(HostileDisc, LookupsThatWouldTakeHoursFailTheDerivation)
{
    ClpiSpec spec;
    spec.epStreams = {zigzag(0xFFFF, 0x3FFFF)};  // thousands of millions of entries in 1.5 MB
    bdmeta::BlurayDisc disc;
    disc.clips = {clipOf(spec, 1000)};
    disc.playlists = {playlistOf({.playItems = {{.clipName = "00009"}}})};
    EXPECT_EQ(derive(disc).code, 0) << "nothing plays the clip";
    disc.playlists = {playlistOf({})};
    const Derivation derivation = derive(disc);
    EXPECT_EQ(derivation.code, -1);
    EXPECT_EQ(derivation.bound, "the searches for entry points take more than 1,000,000,000 steps");
    EXPECT_TRUE(derivation.titles.empty());
    EXPECT_EQ(derivation.fallback.count, 0U);
    if (!HasFailure()) {
        testsupport::recordFault("Clip information: an EP map whose look-ups would take hours",
                                 "the titles fail");
    }
}

TEST(HostileDisc, StreamsOverTheSameTablesCostNothing)
{
    EpStreamSpec stream = zigzag(2, 1000);
    stream.startAddress = 2 + 255 * 12;
    ClpiSpec spec;
    spec.epStreams = {stream};
    EpStreamSpec header = {
        .numberOfEpCoarseEntries = 2, .numberOfEpFineEntries = 1000, .startAddress = 2 + 255 * 12};
    spec.epStreams.resize(254, header);
    spec.epStreams.push_back(stream);
    Bytes bytes =
        spec.build();  // the builder puts the tables of each header behind it: the last are the real ones
    const std::size_t tables = bytes.size() - (4 + 2 * 8 + 1000 * 4);
    for (std::size_t i = 0; i < 255; ++i) {
        const std::size_t startField = spec.cpiStart() + 6 + 2 + i * 12 + 8;
        testsupport::putBe32(bytes, startField, static_cast<std::uint32_t>(tables - spec.cpiStart() - 6));
    }
    bdmeta::BlurayClip clip;
    clip.rawData = bytes;
    clip.sourcePacketCount = 5;
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::LookUps, 2 + bdmeta::kIndexLookupCost,
                 "steps");  // one index, asked once
    bdmeta::EpMap map(clip, budget);
    std::uint32_t packet = 0;
    EXPECT_TRUE(findEntryPacket(map, UINT32_MAX, false, 0, packet));
    EXPECT_EQ(packet, 5U);
    EXPECT_EQ(budget.reached(), nullptr);
}

// A PlayItem of 34 bytes without a table: its table is what follows, so it overlaps those of all items behind
// it. Each item is also an entry of those tables, from its byte 16 to the next one's.
Bytes overlappingItem(std::uint32_t number)
{
    Bytes item(34);
    testsupport::putBe16(item, 0, 32);           // as a table: its length
    testsupport::putBe32(item, 4, 0x10101010);   // 16 streams in each of four groups
    testsupport::putBe32(item, 16, 0x01011F02);  // an entry of 1 byte, attributes of 31
    testsupport::putBe32(item, 22, number);
    return item;
}

Bytes overlappingPlaylist(std::uint16_t itemCount)
{
    Bytes bytes = testsupport::MplsSpec{.playItems = {}, .numberOfPlayItems = itemCount}.build();
    bytes.resize(bytes.size() - 20);  // the marks
    for (std::uint32_t i = 0; i < itemCount + 100U; ++i) {
        testsupport::putBytes(bytes, bytes.size(), overlappingItem(i));
    }
    testsupport::putBe32(bytes, 12, static_cast<std::uint32_t>(bytes.size()));
    bytes.resize(bytes.size() + 6);
    return bytes;
}

TEST(HostileDisc, OverlappingStreamTablesAreBounded)
{
    const Bytes bytes = overlappingPlaylist(1000);
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::Streams, 64'000, "streams");
    bdmeta::StreamTables tables(budget);
    const auto playlist = bdmeta::parsePlaylistBytes(bytes, tables);
    ASSERT_TRUE(playlist);
    EXPECT_EQ(playlist->playItems.back().streams->size(), 64U);
    EXPECT_EQ(budget.left(discio::ReadBudget::Bound::Streams), 0U);
    EXPECT_FALSE(bdmeta::parsePlaylistBytes(bytes, tables));
    EXPECT_STREQ(budget.reached(), "streams");
    if (!HasFailure()) {
        testsupport::recordFault("Playlist: stream tables that overlap",
                                 "counted, and malformed over the limit", 2);
    }
}

// However many titles share the tables.
TEST(HostileDisc, TitlesThatShareTheirTablesLookAtThemOnce)
{
    auto playlist = parsePlaylist(overlappingPlaylist(1000));
    ASSERT_TRUE(playlist);
    bdmeta::BlurayDisc disc;
    disc.playlists.assign(70, *std::move(playlist));
    EXPECT_EQ(derive(disc).code, 0);

    disc.playlists.assign(250'000, {});
    EXPECT_EQ(derive(disc).code, 0);
    disc.playlists.emplace_back();
    EXPECT_EQ(derive(disc).code, -1);
    if (!HasFailure()) {
        testsupport::recordFault("Disc: playlists by the thousand that share their bytes",
                                 "the titles fail over the limit");
    }
}

TEST(HostileDisc, MillionsOfDifferentStreamsAreListedOnce)
{
    // 60 items with tables of 2,040 streams each, all of different PIDs or languages, every one of them
    // twice.
    bdmeta::BlurayDisc disc;
    bdmeta::BlurayPlaylist playlist;
    for (std::uint32_t table = 0; table < 60; ++table) {
        std::vector<bdmeta::BlurayStream> streams(2040);
        for (std::uint32_t i = 0; i < 2040; ++i) {
            const std::uint32_t number = table / 2 * 2040 + i;
            streams[i].pid = static_cast<std::uint16_t>(number % 1000);
            const std::string language = std::to_string(number / 1000);
            streams[i].language = bdmeta::LanguageCode(language);
            streams[i].category = bdmeta::StreamCategory::Subtitle;
        }
        bdmeta::BlurayPlayItem item;
        item.streams = std::make_shared<const std::vector<bdmeta::BlurayStream>>(std::move(streams));
        playlist.playItems.push_back(std::move(item));
    }
    disc.playlists = {std::move(playlist)};
    const Derivation derivation = derive(disc);
    ASSERT_EQ(derivation.code, 0);
    EXPECT_EQ(derivation.titles[0].subtitleTracks.size(), 30U * 2040U);
    EXPECT_EQ(derivation.titles[0].subtitleCount, 60U * 2040U);
    EXPECT_EQ(derivation.titles[0].subtitleTracks[2040].pid, 40);
}

}  // namespace
