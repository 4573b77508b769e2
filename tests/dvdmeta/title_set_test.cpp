#include "dvdmeta/distinct_play_time.h"
#include "dvdmeta/title_set.h"
#include "tests/dvdmeta/read_outcome.h"

#include <functional>

using testsupport::DvdSpec;
using testsupport::FrameRate;
using testsupport::kDvdSector;
using testsupport::PgcSpec;
using testsupport::playbackTime;
using testsupport::VtsSpec;

namespace {

DvdSpec discWith(const PgcSpec& pgc, std::uint16_t startProgram = 1)
{
    DvdSpec spec;
    spec.titleSets[1].titles = {{.ptts = {{1, startProgram}}}};
    spec.titleSets[1].pgcs = {pgc};
    return spec;
}

TEST(PlaybackTime, CountsFramesByTheirRate)
{
    const auto ms = [](unsigned hours, unsigned minutes, unsigned seconds, unsigned frames, FrameRate rate) {
        return dvdmeta::playbackTimeMs(playbackTime(hours, minutes, seconds, frames, rate));
    };
    EXPECT_EQ(ms(1, 30, 0, 12, FrameRate::Pal), 5'400'480U);
    EXPECT_EQ(ms(0, 0, 1, 29, FrameRate::Ntsc), 1'967U);
    EXPECT_EQ(ms(0, 0, 1, 29, FrameRate::None), 1'000U);
    EXPECT_EQ(ms(0, 0, 0, 1, FrameRate::Ntsc), 33U);
    EXPECT_EQ(ms(99, 59, 59, 24, FrameRate::Pal), 359'999'960U);
    EXPECT_EQ(dvdmeta::playbackTimeMs({0, 0, 1, 0x80 | 0x10}), 1'000U) << "rate code 2 is none";
}

TEST(PlaybackTime, DigitsAboveNineCountAsTensAndUnits)
{
    EXPECT_EQ(dvdmeta::playbackTimeMs({0, 0, 0x1A, 0}), 20'000U);
    EXPECT_EQ(dvdmeta::playbackTimeMs({0xFF, 0, 0, 0}), 165ULL * 3'600'000);
    EXPECT_EQ(dvdmeta::playbackTimeMs({0, 0, 0, 0x7F}), 45U * 40U);
}

TEST(DvdTitle, CountsChaptersUpToTheNextTitlesList)
{
    DvdSpec spec;
    spec.vmg.titles = {{.vtsTtn = 1}, {.vtsTtn = 2}, {.vtsTtn = 3}};
    spec.titleSets[1].titles = {{.ptts = {{1, 1}, {1, 1}, {1, 1}}}, {.ptts = {}}, {.ptts = {{1, 1}, {1, 1}}}};
    const dvdmeta::DvdDisc disc = discOf(spec);
    EXPECT_EQ(disc.titles[0].chapterCount, 3U);
    EXPECT_EQ(disc.titles[1].chapterCount, 0U);
    EXPECT_EQ(disc.titles[2].chapterCount, 2U);
}

TEST(DvdTitle, PttEndOfZeroStandsForTheOffsetTablesEnd)
{
    DvdSpec spec = discWith({.time = playbackTime(0, 0, 7)});
    spec.titleSets[1].pttEndAddress = 0;
    const dvdmeta::DvdTitle title = titleOf(spec);
    EXPECT_EQ(title.chapterCount, 0U);
    EXPECT_EQ(title.durationMs, 7'000U) << "the first chapter is read all the same";
}

TEST(DvdTitle, SizeStartsAtTheStartProgram)
{
    const PgcSpec pgc = {.programMap = {1, 2, 4},
                         .cells = {{0, 9}, {10, 19}, {20, 29}, {30, 34}, {100, 100}}};
    const dvdmeta::DvdTitle fromThird = titleOf(discWith(pgc, 3));
    EXPECT_EQ(fromThird.playbackSizeBytes, 6 * kDvdSector);
    EXPECT_EQ(fromThird.firstSector, 30U);
    EXPECT_EQ(fromThird.lastSector, 100U);
    EXPECT_EQ(fromThird.programCount, 3U);
    EXPECT_EQ(fromThird.cellCount, 5U);
    EXPECT_EQ(fromThird.complexAngle, 0U);
    EXPECT_EQ(titleOf(discWith(pgc, 1)).playbackSizeBytes, 36 * kDvdSector);
}

TEST(DvdTitle, LaterAnglesAreMarkedAndNotCounted)
{
    const dvdmeta::DvdTitle title =
        titleOf(discWith({.cells = {{50, 59, 0x50}, {10, 19, 0x90}, {0, 1'000, 0xD0}, {70, 79}}}));
    EXPECT_EQ(title.complexAngle, 1U);
    EXPECT_TRUE(title.isSizeEstimated());
    EXPECT_EQ(title.playbackSizeBytes, 20 * kDvdSector);
    EXPECT_EQ(title.firstSector, 50U);
    EXPECT_EQ(title.lastSector, 79U);

    // Only the block type of angles is one, and only mode 1 is its first cell.
    EXPECT_EQ(titleOf(discWith({.cells = {{0, 0, 0x80}, {1, 1, 0xF0}}})).complexAngle, 0U);
    EXPECT_EQ(titleOf(discWith({.cells = {{0, 0, 0x10}}})).complexAngle, 1U);
}

TEST(DvdTitle, PlayTimeCountsEachCellOnce)
{
    const auto minutes = [](unsigned count) { return playbackTime(0, count, 0); };
    const dvdmeta::DvdTitle title = titleOf(discWith({.programMap = {1, 2},
                                                      .cells = {{0, 9, 0, minutes(40)},
                                                                {10, 19, 0, minutes(1)},
                                                                {20, 29, 0x50, minutes(2)},
                                                                {30, 39, 0xD0, minutes(4)},
                                                                {10, 19, 0, minutes(1)},
                                                                {10, 15, 0, minutes(8)}}},
                                                     2));
    EXPECT_EQ(dvdmeta::distinctPlayTimeMs(title.cells), 11U * 60'000)
        << "from the title's first cell, one angle";
}

TEST(DvdTitle, CellsThatEndBeforeTheyBeginCountNothing)
{
    DvdSpec spec = discWith({.cells = {{9, 8}, {5, 5}, {UINT32_MAX, 0}}});
    spec.titleSets[1].titleVobSector = 100;
    dvdmeta::DvdTitle title = titleOf(spec);
    EXPECT_EQ(title.playbackSizeBytes, kDvdSector);
    EXPECT_EQ(title.firstSector, 105U);
    EXPECT_EQ(title.lastSector, 105U);

    spec.titleSets[1].pgcs[0].cells = {{9, 8}};
    title = titleOf(spec);
    EXPECT_EQ(title.playbackSizeBytes + title.firstSector + title.lastSector, 0U);
}

TEST(DvdTitle, SizesAndSectorsDoNotWrap)
{
    DvdSpec spec =
        discWith({.programMap = {1}, .cells = std::vector<testsupport::CellSpec>(255, {0, UINT32_MAX})});
    spec.titleSets[1].titleVobSector = UINT32_MAX;
    const dvdmeta::DvdTitle title = titleOf(spec);
    EXPECT_EQ(title.playbackSizeBytes, 255ULL << 43U);
    EXPECT_EQ(title.lastSector, 2ULL * UINT32_MAX);
}

TEST(DvdTitle, ProgramChainWithoutCellsHasADurationAlone)
{
    const dvdmeta::DvdTitle title =
        titleOf(discWith({.programMap = {}, .cells = {}, .programMapOffset = 0, .cellPlaybackOffset = 0}, 7));
    EXPECT_EQ(title.durationMs, 60'000U);
    EXPECT_EQ(title.playbackSizeBytes, 0U);
}

using Lie = std::pair<std::function<void(VtsSpec&)>, std::string>;

// Tells each lie about an otherwise right title set; the disc must fail with its message.
void expectFailures(const std::vector<Lie>& lies)
{
    for (const auto& [tell, message] : lies) {
        SCOPED_TRACE(message);
        DvdSpec spec;
        tell(spec.titleSets[1]);
        expectFailure(spec, message);
    }
}

TEST(DvdTitle, LiesAboutTablesAndStreams)
{
    constexpr char kTables[] = "VTS_01_0.IFO has missing title tables";
    constexpr char kPtt[] = "VTS_01_0.IFO has invalid title PTT data";
    constexpr char kOffsets[] = "VTS_01_0.IFO has malformed PTT offsets";
    constexpr char kStreams[] = "VTS_01_0.IFO has an invalid declared stream count";
    expectFailures({
        {[](VtsSpec& vts) { vts.magic = "DVDVIDEO-VMG"; }, "VTS_01_0.IFO is not a valid VTS IFO"},
        {[](VtsSpec& vts) { vts.pttTableSector = 0; }, kTables},
        {[](VtsSpec& vts) { vts.pttTableSector = 9; }, kTables},
        {[](VtsSpec& vts) { vts.pgcTableSector = 0; }, kTables},
        {[](VtsSpec& vts) { vts.pgcTableSector = UINT32_MAX; }, kTables},
        {[](VtsSpec& vts) { vts.declaredTitleCount = 0; }, kPtt},
        {[](VtsSpec& vts) { vts.pttEndAddress = UINT32_MAX; }, kPtt},
        {[](VtsSpec& vts) { vts.pttEndAddress = 10; }, kOffsets},
        {[](VtsSpec& vts) { vts.titles[0].pttOffset = 13; }, kOffsets},
        {[](VtsSpec& vts) { vts.titles[0].pttOffset = UINT32_MAX - 3; }, kOffsets},
        {[](VtsSpec& vts) { vts.titles.push_back({.ptts = {}, .pttOffset = 100}); }, kOffsets},
        {[](VtsSpec& vts) { vts.audioCount = 9; }, kStreams},
        {[](VtsSpec& vts) { vts.subpictureCount = 33; }, kStreams},
    });
    DvdSpec spec;
    spec.vmg.titles = {{.vtsTtn = 2}};
    expectFailure(spec, kPtt);
}

TEST(DvdTitle, LiesAboutTheProgramChain)
{
    constexpr char kPgc[] = "VTS_01_0.IFO has invalid PGC data";
    constexpr char kCells[] = "VTS_01_0.IFO has invalid cell playback data";
    constexpr char kStart[] = "VTS_01_0.IFO has an invalid title start program";
    expectFailures({
        {[](VtsSpec& vts) {
             vts.titles[0].ptts = {{0, 1}};
         },
         kPgc},
        {[](VtsSpec& vts) {
             vts.titles[0].ptts = {{2, 1}};
         },
         kPgc},
        {[](VtsSpec& vts) { vts.declaredPgcCount = 0; }, kPgc},
        {[](VtsSpec& vts) {
             vts.titles[0].ptts = {{0xFFFF, 1}}, vts.declaredPgcCount = 0xFFFF;
         },
         kPgc},
        {[](VtsSpec& vts) { vts.pgcs[0].offset = UINT32_MAX; }, "cannot read title PGC in VTS_01_0.IFO"},
        {[](VtsSpec& vts) { vts.pgcs[0].programMapOffset = 0; }, kCells},
        {[](VtsSpec& vts) { vts.pgcs[0].programMapOffset = 0xFFFF; }, kCells},
        {[](VtsSpec& vts) { vts.pgcs[0].cellPlaybackOffset = 0; }, kCells},
        {[](VtsSpec& vts) { vts.pgcs[0].cellPlaybackOffset = 0xFFFF; }, kCells},
        {[](VtsSpec& vts) { vts.pgcs[0].cellCount = 2; }, kCells},
        {[](VtsSpec& vts) {
             vts.titles[0].ptts = {{1, 0}};
         },
         kCells},
        {[](VtsSpec& vts) {
             vts.titles[0].ptts = {{1, 2}};
         },
         kCells},
        {[](VtsSpec& vts) { vts.pgcs[0].programMap = {0}; }, kStart},
        {[](VtsSpec& vts) { vts.pgcs[0].programMap = {2}; }, kStart},
    });
}

// A title set that no title belongs to is read for its streams alone.
TEST(DvdTitleSet, OfNoTitle)
{
    DvdSpec spec;
    spec.titleSets[2] = {.audio = {{.language = "it"}}, .pttTableSector = 0, .pgcTableSector = 0};
    EXPECT_EQ(discOf(spec).titleSets.at(1).streams.audio.size(), 1U);
    spec.titleSets[2] = {.magic = "DVDVIDEO-VMG"};
    expectFailure(spec, "VTS_02_0.IFO is not a valid VTS IFO");
    spec.titleSets[2] = {.audioCount = 9};
    expectFailure(spec, "VTS_02_0.IFO has an invalid declared stream count");
    spec.titleSets[2] = {.subpictureCount = 255};
    expectFailure(spec, "VTS_02_0.IFO has an invalid declared stream count");
}

TEST(DvdTitleSet, NumberAndCountAreChecked)
{
    const testsupport::Bytes bytes = VtsSpec().build();
    const dvdmeta::IfoFile ifo("VTS_01_0.IFO", {bytes, bytes.size()});
    std::array<char, 64> text = {};
    const discio::ErrorText error(text.data(), text.size());
    dvdmeta::DvdDisc disc;
    for (const std::uint32_t number : {0U, 100U}) {
        EXPECT_EQ(dvdmeta::readTitleSet(ifo, number, disc, error), -1);
        EXPECT_STREQ(text.data(), "DVD has invalid VTS metadata");
    }
    for (std::uint32_t i = 0; i < 99; ++i) {
        ASSERT_EQ(dvdmeta::readTitleSet(ifo, 99, disc, error), 0);
    }
    EXPECT_EQ(dvdmeta::readTitleSet(ifo, 99, disc, error), -1);
    EXPECT_EQ(disc.titleSets.size(), 99U);
}

}  // namespace
