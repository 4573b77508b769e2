// Files made to exhaust their reader: small ones that claim much.
#include "bdmeta/ep_map.h"
#include "tests/bdmeta/built_records.h"

using namespace testsupport;
using bdmeta::BlurayDisc;
using discio::ReadBudget;

namespace {

// A clip with coarse entries of which every second owns all fine ones.
ClpiSpec zigzag(std::uint32_t coarseCount, std::uint32_t fineCount)
{
    ClpiSpec spec{.numberOfSourcePackets = 5};
    auto& [coarse, fine] = spec.epStreams.emplace_back();
    for (std::uint32_t i = 0; i < coarseCount; ++i) {
        coarse.push_back({i % 2 == 0 ? 0 : fineCount, 2 * (i % 0x2000), (i % 0x8000) << 17U});
    }
    for (std::uint32_t i = 0; i < fineCount; ++i) {
        fine.push_back({.pts = i * 37 % 0x800, .spn = i * 91 % 0x20000});
    }
    return spec;
}

// How many lookups of the clip's end succeed, up to 10, before the budget for so many entries and searches is spent.
int lookupsWithin(std::uint64_t count, const bdmeta::BlurayClip& clip)
{
    ReadBudget budget;
    budget.lower(ReadBudget::Bound::LookUps, count * bdmeta::kEpStepCost, "steps");
    bdmeta::EpMap map(clip, budget);
    std::uint32_t packet = 0;
    int found = 0;
    while (found < 10 && findEntryPacket(map, UINT32_MAX, false, 0, packet)) {
        EXPECT_EQ(packet, 5U);
        ++found;
    }
    EXPECT_EQ(budget.reached() == nullptr, found == 10);
    return found;
}

TEST(HostileDisc, LookupsAreCounted)
{
    EXPECT_EQ(lookupsWithin(100 + 100 + 50 * 300 + 2, clipOf(zigzag(100, 300))), 2)
        << "an entry for each owner";

    ClpiSpec spec = zigzag(2, 1000);  // streams over the same tables cost nothing
    spec.epStreams.resize(255, spec.epStreams[0]);
    bdmeta::BlurayClip clip = clipOf(spec);
    const std::size_t headers = clip.rawData.size() - 255 * (12 + 4 + 2 * 8 + 1000 * 4);
    for (std::size_t i = 1; i < 255; ++i) {
        putBe(clip.rawData, headers + 12 * i + 8, 2 + 255 * 12, 4);
    }
    EXPECT_EQ(lookupsWithin(2 + 2 + 1000 + 10, clip), 10);
}

TEST(HostileDisc, LookupsThatWouldTakeHoursFailTheDerivation)
{
    BlurayDisc disc;
    disc.clips = {clipOf(zigzag(0xFFFF, 0x3FFFF), 1000)};  // thousands of millions of entries in 1.5 MB
    disc.playlists = {playlistOf({.playItems = {{.clipName = "00009"}}})};
    EXPECT_EQ(Derivation(disc).code, 0) << "nothing plays the clip";
    disc.playlists = {playlistOf({})};
    const Derivation derivation(disc);
    EXPECT_EQ(derivation.bound, "the searches for entry points take more than 1,000,000,000 steps");
    EXPECT_EQ(derivation.titles.size() + derivation.fallback.count, 0U);
}

// PlayItems of 34 bytes without tables: the bytes that follow an item are its table, which overlaps the tables of all later items.
// Each item is also an entry of those tables, from its byte 16 to the next one's.
Bytes overlappingPlaylist(std::uint16_t itemCount)
{
    Bytes bytes = MplsSpec{.playItems = {}}.build();
    bytes.resize(kFirstPlayItem);
    for (std::uint32_t i = 0; i < itemCount + 100U; ++i) {
        // As a table: its length and 16 streams in each of four groups; an entry of 1 byte, attributes of 31.
        appendBe(bytes, {{32, 2}, {0, 2}, {0x10101010, 4}, {0, 8}, {0x01011F02, 4}, {0, 2}, {i, 4}, {0, 8}});
    }
    return patched(bytes, {{kFirstPlayItem - 4, 2, itemCount}, {12, 4, bytes.size()}, {bytes.size(), 6, 0}});
}

TEST(HostileDisc, OverlappingStreamTablesAreBounded)
{
    const Bytes bytes = overlappingPlaylist(1000);
    ReadBudget budget;
    budget.lower(ReadBudget::Bound::Streams, 64'000, "streams");
    bdmeta::StreamTables tables(budget);
    const auto playlist = bdmeta::parsePlaylistBytes(bytes, tables);
    ASSERT_TRUE(playlist);
    EXPECT_EQ(playlist->playItems.back().streams->size(), 64U);
    EXPECT_EQ(budget.left(ReadBudget::Bound::Streams), 0U);
    EXPECT_FALSE(bdmeta::parsePlaylistBytes(bytes, tables));
    EXPECT_STREQ(budget.reached(), "streams");

    BlurayDisc disc;  // the tables are looked at once, however many titles share them
    disc.playlists.assign(70, *playlist);
    EXPECT_EQ(Derivation(disc).code, 0);
}

TEST(HostileDisc, TitlesAndStreamsAreShownUpToALimit)
{
    PlayItemSpec item;
    for (std::uint16_t pid = 0; pid < 250; ++pid) {
        item.stn.primaryAudio.push_back({.pid = pid, .attributes = audioAttributes()});
    }
    BlurayDisc disc;  // the first title has no stream of its second item's that is new
    disc.playlists = {playlistOf({.playItems = {item, item}}), playlistOf({.playItems = {item}})};
    ReadBudget budget;
    budget.lower(ReadBudget::Bound::TitleRows, 502, "rows");
    EXPECT_EQ(Derivation(disc, budget).titles.size(), 2U);
    disc.playlists.emplace_back();
    const Derivation tooMuch(disc, budget);
    EXPECT_EQ(tooMuch.bound, "rows");
    EXPECT_TRUE(tooMuch.titles.empty());
}

}  // namespace
