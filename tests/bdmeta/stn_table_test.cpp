#include "bdmeta/stn_table.h"
#include "tests/bdmeta/built_records.h"

#include <algorithm>

using bdmeta::StreamCategory;
using testsupport::Bytes;
using testsupport::StnStreamSpec;
using testsupport::StnTableSpec;

namespace {

StnStreamSpec stream(std::uint16_t pid, Bytes attributes = testsupport::videoAttributes())
{
    return {.pid = pid, .attributes = std::move(attributes)};
}

// Two streams in each group, those of the secondary groups with references.
StnTableSpec fullTable()
{
    StnTableSpec stn;
    stn.primaryVideo = {stream(11), stream(12)};
    stn.primaryAudio = {stream(21, testsupport::audioAttributes("eng")), stream(22)};
    stn.graphics = {stream(31, testsupport::graphicsAttributes("fra")), stream(32)};
    stn.pipGraphics = {stream(33), stream(34)};
    stn.interactiveGraphics = {stream(41), stream(42)};
    stn.secondaryAudio = {stream(51), stream(52)};
    stn.secondaryAudio[0].primaryAudioRefs = {0, 1, 2};
    stn.secondaryVideo = {stream(61), stream(62)};
    stn.secondaryVideo[0].primaryAudioRefs = {1, 2};
    stn.secondaryVideo[0].pipGraphicsRefs = {7};
    stn.dolbyVision = {stream(71), stream(72)};
    return stn;
}

std::uint16_t pidOf(const StnStreamSpec& spec)
{
    const auto table = bdmeta::parseStreamTable(StnTableSpec{.primaryVideo = {spec}}.build());
    EXPECT_TRUE(table);
    return table ? table->streams.at(0).pid : 0xDEAD;
}

TEST(StnTable, GroupsFollowEachOtherInTheirOrder)
{
    const Bytes bytes = fullTable().build();
    const auto table = bdmeta::parseStreamTable(bytes);
    ASSERT_TRUE(table);
    EXPECT_EQ(table->sizeBytes, bytes.size());
    std::vector<std::uint16_t> pids;
    for (const bdmeta::BlurayStream& parsed : table->streams) {
        pids.push_back(parsed.pid);
        EXPECT_EQ(static_cast<int>(parsed.category), parsed.pid / 10);
        EXPECT_EQ(parsed.entryType, 1);
    }
    EXPECT_EQ(pids,
              (std::vector<std::uint16_t>{11, 12, 21, 22, 31, 32, 33, 34, 41, 42, 51, 52, 61, 62, 71, 72}));
    EXPECT_EQ(table->streams[2].language.view(), "eng");
    EXPECT_EQ(table->streams[4].language.view(), "fra");
}

TEST(StnTable, CountsOfAllGroupsMayBe255)
{
    StnTableSpec stn;
    for (auto* group :
         {&stn.primaryVideo, &stn.primaryAudio, &stn.graphics, &stn.pipGraphics, &stn.interactiveGraphics,
          &stn.secondaryAudio, &stn.secondaryVideo, &stn.dolbyVision}) {
        group->assign(255, stream(1));
    }
    const auto table = bdmeta::parseStreamTable(stn.build());
    ASSERT_TRUE(table);
    EXPECT_EQ(table->streams.size(), 8U * 255U);
    const auto inGroup3 =
        std::ranges::count(table->streams, StreamCategory::Subtitle, &bdmeta::BlurayStream::category);
    EXPECT_EQ(inGroup3, 510) << "graphics and picture-in-picture graphics";
}

TEST(StnTable, PidStandsWhereTheEntryTypePutsIt)
{
    for (std::uint8_t type = 1; type <= 4; ++type) {
        EXPECT_EQ(pidOf({.entryType = type, .pid = 0x1A0B, .refToSubPathId = 9, .attributes = {27}}), 0x1A0B);
    }
    EXPECT_EQ(pidOf({.attributes = {27}, .entry = Bytes{5, 0x1A, 0x0B, 0x1A, 0x0B}}), 0) << "no such type";
    EXPECT_EQ(pidOf({.attributes = {27}, .entry = Bytes{0, 0x1A, 0x0B, 0x1A, 0x0B}}), 0);

    // The shortest entry that holds the PID of its type, and the same cut by a byte.
    const std::vector<Bytes> shortest = {
        {1, 0x1A, 0x0B}, {2, 9, 9, 0x1A, 0x0B}, {3, 9, 0x1A, 0x0B}, {4, 9, 0x1A, 0x0B}};
    for (Bytes entry : shortest) {
        EXPECT_EQ(pidOf({.attributes = {27}, .entry = entry}), 0x1A0B);
        entry.pop_back();
        EXPECT_EQ(pidOf({.attributes = {27}, .entry = entry}), 0);
    }
    EXPECT_EQ(pidOf({.attributes = {27}, .entry = Bytes{1}}), 0);
}

TEST(StnTable, DeclaredLengthIsHeldAgainstTheFile)
{
    const auto parse = [](std::uint16_t length, std::size_t filled) {
        Bytes bytes = StnTableSpec{.length = length}.build();
        bytes.resize(filled);
        return bdmeta::parseStreamTable(bytes).has_value();
    };
    EXPECT_TRUE(parse(14, 16));
    EXPECT_FALSE(parse(13, 16));
    EXPECT_FALSE(parse(0, 16));
    EXPECT_FALSE(parse(14, 15));
    EXPECT_TRUE(parse(18, 20));
    EXPECT_FALSE(parse(19, 20));
    EXPECT_FALSE(parse(0xFFFF, 20));
}

TEST(StnTable, EntriesMayGoBeyondTheDeclaredLength)
{
    StnTableSpec stn = fullTable();
    stn.length = 14;
    const auto table = bdmeta::parseStreamTable(stn.build());
    ASSERT_TRUE(table);
    EXPECT_EQ(table->streams.size(), 16U);
}

TEST(StnTable, EntriesWithoutAnythingInThemAreMalformed)
{
    StnStreamSpec spec = stream(1);
    spec.entryLength = 0;
    EXPECT_FALSE(bdmeta::parseStreamTable(StnTableSpec{.primaryAudio = {spec}}.build()));
    spec = stream(1, {});
    EXPECT_FALSE(bdmeta::parseStreamTable(StnTableSpec{.primaryAudio = {spec}}.build()));
    spec = stream(1, {0});
    const auto table = bdmeta::parseStreamTable(StnTableSpec{.primaryAudio = {spec}}.build());
    ASSERT_TRUE(table);
    EXPECT_STREQ(table->streams.front().codingName, "Unknown");
}

// Nothing behind the last entry is needed, and nothing of it can be missing.
TEST(StnTable, EveryPrefixIsMalformed)
{
    StnTableSpec stn = fullTable();
    stn.length = 14;
    const Bytes bytes = stn.build();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        ASSERT_FALSE(bdmeta::parseStreamTable(std::span(bytes).first(size))) << size;
    }
}

TEST(StreamTables, EqualTablesAreShared)
{
    StnTableSpec stn = fullTable();
    stn.length = 14;
    Bytes bytes = stn.build();
    discio::ReadBudget budget;
    const std::uint64_t allowed = budget.left(discio::ReadBudget::Bound::Streams);
    bdmeta::StreamTables tables(budget);
    const auto first = tables.read(bytes);
    ASSERT_TRUE(first);
    bytes.push_back(0xFF);  // behind the table
    EXPECT_EQ(tables.read(bytes), first);
    EXPECT_EQ(allowed - budget.left(discio::ReadBudget::Bound::Streams), 16U);

    // Each byte of the table makes it another one; equal or not, it says what it says on its own.
    for (std::size_t i = 12; i < bytes.size() - 1; ++i) {
        ASSERT_EQ(tables.read(bytes), first);
        Bytes changed = bytes;
        changed[i] ^= 0x01;
        const auto other = tables.read(changed);
        const auto alone = bdmeta::parseStreamTable(changed);
        ASSERT_EQ(other != nullptr, alone.has_value());
        ASSERT_NE(other, first);
        if (!alone) { continue; }
        ASSERT_EQ(other->size(), alone->streams.size());
        for (std::size_t k = 0; k < other->size(); ++k) {
            ASSERT_EQ(describe((*other)[k]), describe(alone->streams[k]));
        }
    }
}

TEST(StreamTables, SharingChecksTheDeclaredLengthAgain)
{
    Bytes bytes = StnTableSpec{.primaryVideo = {stream(1)}, .length = 60}.build();
    bytes.resize(62);
    discio::ReadBudget budget;
    bdmeta::StreamTables tables(budget);
    EXPECT_TRUE(tables.read(bytes));
    EXPECT_FALSE(tables.read(std::span(bytes).first(61))) << "at the end of another file";
}

TEST(StreamTables, TablesThatTakeTurnsAreSharedAndLongUnusedOnesForgotten)
{
    discio::ReadBudget budget;
    const std::uint64_t allowed = budget.left(discio::ReadBudget::Bound::Streams);
    bdmeta::StreamTables tables(budget);
    std::vector<Bytes> turns(20);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        turns[i] = StnTableSpec{.primaryVideo = {stream(static_cast<std::uint16_t>(i))}}.build();
    }
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < turns.size(); ++i) {
            EXPECT_EQ(tables.read(turns[i])->front().pid, i);
        }
    }
    EXPECT_EQ(allowed - budget.left(discio::ReadBudget::Bound::Streams), turns.size());
    for (std::uint16_t pid = 1000; pid < 1100; ++pid) {
        EXPECT_TRUE(tables.read(StnTableSpec{.primaryVideo = {stream(pid)}}.build()));
    }
    EXPECT_EQ(tables.read(turns[0])->front().pid, 0);
    EXPECT_EQ(allowed - budget.left(discio::ReadBudget::Bound::Streams), turns.size() + 101);
}

}  // namespace
