#include "bdmeta/ep_map.h"
#include "tests/bdmeta/built_records.h"

using bdmeta::BlurayClip;
using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::epStream;
using testsupport::EpStreamSpec;

namespace {

constexpr std::uint32_t kNotFound = 0xFFFFFFFF;

std::uint32_t find(const BlurayClip& clip, std::uint32_t time, bool isStart, std::uint8_t stcId = 0)
{
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    std::uint32_t packet = 0;
    return findEntryPacket(map, time, isStart, stcId, packet) ? packet : kNotFound;
}

std::uint32_t findStart(const ClpiSpec& spec, std::uint32_t time, std::uint8_t stcId = 0)
{
    return find(clipOf(spec), time, true, stcId);
}

std::uint32_t findEnd(const ClpiSpec& spec, std::uint32_t time, std::uint8_t stcId = 0)
{
    return find(clipOf(spec), time, false, stcId);
}

// -1 where the size cannot be computed.
std::int64_t sizeOf(const BlurayClip& clip, std::uint32_t inTime, std::uint32_t outTime)
{
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    std::uint64_t size = 0;
    return computePlayItemSize(map, inTime, outTime, 0, size) == 0 ? static_cast<std::int64_t>(size) : -1;
}

// Entry points at 1, 2 and 3 times 25,600 ticks.
ClpiSpec threeEntries()
{
    ClpiSpec spec;
    spec.numberOfSourcePackets = 9000;
    spec.epStreams = {epStream({{25600, 1000}, {51200, 3000}, {76800, 6000}})};
    return spec;
}

TEST(EpMap, StartTakesTheLatestEntryNotAfterAndEndTheEarliestAfter)
{
    const ClpiSpec spec = threeEntries();
    EXPECT_EQ(findStart(spec, 25599), kNotFound);
    EXPECT_EQ(findStart(spec, 25600), 1000U);
    EXPECT_EQ(findStart(spec, 51199), 1000U);
    EXPECT_EQ(findStart(spec, 51200), 3000U);
    EXPECT_EQ(findStart(spec, UINT32_MAX), 6000U);
    EXPECT_EQ(findEnd(spec, 0), 1000U);
    EXPECT_EQ(findEnd(spec, 25599), 1000U);
    EXPECT_EQ(findEnd(spec, 25600), 3000U);
    EXPECT_EQ(findEnd(spec, 76799), 6000U);
    EXPECT_EQ(findEnd(spec, 76800), 9000U) << "the clip's end";
}

TEST(EpMap, TimesAndPacketsArePutTogetherFromCoarseAndFine)
{
    ClpiSpec spec;
    spec.epStreams = {
        {.coarse = {{.refToEpFineId = 0, .pts = 0x2CB, .spn = 0x0123FFFF}},
         .fine = {{.pts = 0x648, .spn = 0x1ABCD, .isAngleChangePoint = true, .iEndPositionOffset = 7}}}};
    const std::uint32_t time =
        (0x2CAU << 18U) + (0x648U << 8U);               // the coarse time's lowest bit does not count
    const std::uint32_t packet = 0x01220000 + 0x1ABCD;  // nor the coarse packet's low 17
    EXPECT_EQ(findStart(spec, time), packet);
    EXPECT_EQ(findStart(spec, time - 1), kNotFound);

    // The largest numbers of all fields.
    spec.epStreams = {
        {.coarse = {{.pts = 0x3FFF, .spn = UINT32_MAX}}, .fine = {{.pts = 0x7FF, .spn = 0x1FFFF}}}};
    EXPECT_EQ(findStart(spec, 0xFFFFFF00), UINT32_MAX);
    EXPECT_EQ(findStart(spec, 0xFFFFFEFF), kNotFound);
}

TEST(EpMap, FirstOfEqualTimesCounts)
{
    ClpiSpec spec;
    spec.epStreams = {epStream({{25600, 500}, {25600, 100}, {51200, 900}, {51200, 700}, {51200, 800}})};
    EXPECT_EQ(findStart(spec, 30000), 500U);
    EXPECT_EQ(findStart(spec, 60000), 900U);
    EXPECT_EQ(findEnd(spec, 25600), 900U);
    spec.atcSequences[0].stcSequences[0].spnStcStart = 901;
    EXPECT_EQ(findStart(spec, 60000), kNotFound);
    spec.atcSequences[0].stcSequences[0].spnStcStart = 750;
    spec.epStreams = {epStream({{51200, 700}, {51200, 800}, {51200, 900}})};
    EXPECT_EQ(findStart(spec, 60000), 800U) << "the first that counts at all";
    EXPECT_EQ(findEnd(spec, 0), 800U);
}

TEST(EpMap, FirstStreamWithAnEntryDecides)
{
    ClpiSpec spec;
    spec.numberOfSourcePackets = 77;
    spec.epStreams = {{}, epStream({{51200, 10}}), epStream({{25600, 20}, {76800, 30}})};
    spec.epStreams[0].startAddress = UINT32_MAX;  // without coarse entries, its tables are not read
    EXPECT_EQ(findStart(spec, 60000), 10U);
    EXPECT_EQ(findStart(spec, 90000), 10U) << "though the third has a later one";
    EXPECT_EQ(findStart(spec, 30000), 20U);
    EXPECT_EQ(findEnd(spec, 0), 10U);
    EXPECT_EQ(findEnd(spec, 51200), 30U);
    EXPECT_EQ(findEnd(spec, 76800), 77U);
}

TEST(EpMap, EntriesBeforeTheStcSequenceDoNotCount)
{
    ClpiSpec spec = threeEntries();
    spec.atcSequences = {{.offsetStcId = 3, .stcSequences = {{.spnStcStart = 0}, {.spnStcStart = 3000}}},
                         {.offsetStcId = 4, .stcSequences = {{.spnStcStart = 1}, {.spnStcStart = 6001}}},
                         {.offsetStcId = 255, .stcSequences = {{.spnStcStart = 6000}, {.spnStcStart = 0}}}};
    EXPECT_EQ(findStart(spec, 30000, 3), 1000U);
    EXPECT_EQ(findStart(spec, 30000, 4), kNotFound) << "the first sequence of an id counts";
    EXPECT_EQ(findEnd(spec, 0, 4), 3000U);
    EXPECT_EQ(findEnd(spec, 0, 5), spec.numberOfSourcePackets);
    EXPECT_EQ(findEnd(spec, 0, 255), 6000U);
    EXPECT_EQ(findEnd(spec, 0, 0), kNotFound) << "ids do not begin anew behind 255";
    EXPECT_EQ(findEnd(spec, 0, 2), kNotFound);
}

TEST(EpMap, SequenceInfoIsBoundedByTheFileAlone)
{
    ClpiSpec spec = threeEntries();
    spec.sequenceInfoLength = UINT32_MAX;
    EXPECT_EQ(findStart(spec, 25600), 1000U);
    spec.sequenceInfoAddress = 0;
    EXPECT_EQ(findStart(spec, 25600), kNotFound);
    spec.sequenceInfoAddress = UINT32_MAX;
    EXPECT_EQ(findStart(spec, 25600), kNotFound);
}

TEST(EpMap, CoarseEntriesOwnTheFineOnesUpToTheNextReference)
{
    // Of nine fine entries, 200 to 1,000 packets in steps of 100: the first coarse entry owns none as the
    // next one's reference is the same, the second 2 to 4, the third none since references go backwards, the
    // last 1 to the count of 7.
    EpStreamSpec stream;
    for (std::uint32_t i = 0; i < 9; ++i) {
        stream.fine.push_back({.pts = i + 1, .spn = 200 + 100 * i});
    }
    stream.coarse = {{2, 2, 0}, {2, 4, 0}, {5, 6, 0}, {1, 8, 0}};
    stream.numberOfEpFineEntries = 7;
    ClpiSpec spec;
    spec.epStreams = {stream};
    const auto at = [](std::uint32_t coarse, std::uint32_t fine) {
        return (coarse << 18U) + ((fine + 1) << 8U);
    };
    EXPECT_EQ(findEnd(spec, 0), 400U);
    EXPECT_EQ(findStart(spec, at(4, 2)), 400U);
    EXPECT_EQ(findStart(spec, at(4, 4)), 600U);
    EXPECT_EQ(findStart(spec, at(6, 8)), 600U);
    EXPECT_EQ(findEnd(spec, at(4, 4)), 300U) << "owned by the last";
    EXPECT_EQ(findStart(spec, UINT32_MAX), 800U) << "entry 6";
}

TEST(EpMap, OverrunFailsTheLookupsThatReachIt)
{
    ClpiSpec spec;
    spec.epStreams = {epStream({{25600, 10}}), epStream({{51200, 20}, {76800, 30}})};
    for (const auto lie : {&EpStreamSpec::numberOfEpCoarseEntries, &EpStreamSpec::numberOfEpFineEntries,
                           &EpStreamSpec::startAddress, &EpStreamSpec::epFineTableStartAddress}) {
        ClpiSpec broken = spec;
        broken.epStreams[1].*lie = 10000;
        EXPECT_EQ(findStart(broken, 30000), 10U) << "the first stream answers";
        EXPECT_EQ(findEnd(broken, 0), 10U);
        EXPECT_EQ(findEnd(broken, 25600), kNotFound);
        EXPECT_EQ(findStart(broken, 25599), kNotFound);
    }
    spec.numberOfEpStreams = 200;  // the headers run into the tables, and at last beyond the file
    EXPECT_EQ(findStart(spec, 30000), 10U);
    EXPECT_EQ(findEnd(spec, 76800), kNotFound);
    spec.cpiAddress = UINT32_MAX;
    EXPECT_EQ(findStart(spec, 30000), kNotFound);
    EXPECT_EQ(findEnd(spec, 0), kNotFound);
}

TEST(EpMap, ClipsWithoutAMap)
{
    ClpiSpec spec = threeEntries();
    for (const bool isAddressMissing : {true, false}) {
        spec.cpiAddress = isAddressMissing ? std::optional(0U) : std::nullopt;
        spec.cpiLength = isAddressMissing ? std::nullopt : std::optional(0U);
        EXPECT_EQ(findStart(spec, 60000), kNotFound);
        EXPECT_EQ(findEnd(spec, 0), 9000U);
    }
    BlurayClip empty;
    EXPECT_EQ(find(empty, 0, false), kNotFound);
}

TEST(EpMap, PlayItemSizes)
{
    const std::uint64_t fileSize = 9000 * 192;
    const BlurayClip clip = clipOf(threeEntries(), fileSize);
    EXPECT_EQ(sizeOf(clip, 25600, 60000), (6000 - 1000) * 192);
    EXPECT_EQ(sizeOf(clip, 51200, 76800), (9000 - 3000) * 192);
    EXPECT_EQ(sizeOf(clip, 30000, 30001), (3000 - 1000) * 192);
    EXPECT_EQ(sizeOf(clip, 60000, 59999), -1);
    EXPECT_EQ(sizeOf(clip, 20000, 60000), -1) << "no entry to start at";

    // What lies beyond the file's end is left out.
    EXPECT_EQ(sizeOf(clipOf(threeEntries(), 4000 * 192), 25600, 60000), 3000 * 192);
    EXPECT_EQ(sizeOf(clipOf(threeEntries(), 500 * 192), 25600, 60000), 0);
    EXPECT_EQ(sizeOf(clipOf(threeEntries(), 0), 25600, 60000), 0);

    // Packets that do not ascend, and more than 32 bits of bytes.
    ClpiSpec spec;
    spec.epStreams = {epStream({{25600, 3000}, {51200, 1000}})};
    EXPECT_EQ(sizeOf(clipOf(spec, fileSize), 25600, 30000), -1);
    spec.epStreams = {epStream({{25600, 0}, {51200, UINT32_MAX}})};
    EXPECT_EQ(sizeOf(clipOf(spec, 1ULL << 40U), 25600, 30000), UINT32_MAX * 192LL);
}

TEST(EpMap, EqualTimesPlayNothing)
{
    const BlurayClip clip = clipOf(threeEntries(), 9000 * 192);
    EXPECT_EQ(sizeOf(clip, 30000, 30000), 0) << "though the entries before and after it differ";
    EXPECT_EQ(sizeOf(clip, 80000, 80000), 0);
    EXPECT_EQ(sizeOf(clip, 25599, 25599), -1) << "no entry to start at";
}

}  // namespace
