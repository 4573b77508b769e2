// The answers of the index against those of a plain walk over the file, for random maps.
#include "bdmeta/ep_map.h"
#include "tests/bdmeta/ep_walk.h"
#include "tests/support/clpi_spec.h"

#include <gtest/gtest.h>

#include <random>

using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::EpStreamSpec;
using testsupport::putBe;

namespace {

// Few different values, so that times are equal, packets fall on both sides of a start, and references go
// back.
class RandomMaps {
public:
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(m_engine() % limit); }
    bool chance(std::uint32_t percent) { return below(100) < percent; }

    Bytes next()
    {
        ClpiSpec spec;
        spec.atcSequences.assign(1 + below(2), {});
        for (testsupport::AtcSequenceSpec& atc : spec.atcSequences) {
            atc.offsetStcId = static_cast<std::uint8_t>(below(3));
            atc.stcSequences.assign(below(3), {});
            for (testsupport::StcSequenceSpec& stc : atc.stcSequences) {
                stc.spnStcStart = chance(30) ? 0 : randomPacket();
            }
        }
        const bool areReferencesAscending = chance(50);
        spec.epStreams.resize(below(4));
        for (EpStreamSpec& stream : spec.epStreams) {
            stream = randomStream(areReferencesAscending);
        }
        Bytes bytes = spec.build();
        addLies(bytes, spec.epStreams);
        return bytes;
    }

    std::uint32_t randomTime() { return (below(5) << 19U) + (below(6) << 8U) + below(3) - 1; }

private:
    std::uint32_t randomPacket() { return (below(3) << 17U) + below(6); }

    void addLies(Bytes& bytes, const std::vector<EpStreamSpec>& streams)
    {
        const std::size_t cpi = bytes[18] * std::size_t{256} + bytes[19];
        for (std::size_t i = 0; i < streams.size(); ++i) {
            const std::size_t header = cpi + 8 + 12 * i;
            const std::size_t tables = cpi + 6 + bytes[header + 10] * std::size_t{256} + bytes[header + 11];
            const std::size_t coarseCount = chance(5) ? below(8) : streams[i].coarse.size();
            const std::size_t fineCount = chance(10) ? below(30) : streams[i].fine.size();
            putBe(bytes, header + 4, coarseCount << 18U | fineCount, 4);
            if (chance(5)) { putBe(bytes, tables, below(200), 4); }       // start of the fine entries
            if (chance(10)) { putBe(bytes, header + 8, below(200), 4); }  // start of the tables
        }
        if (chance(10)) { putBe(bytes, cpi, 0, 4); }               // length of CPI()
        if (chance(10)) { putBe(bytes, cpi + 7, below(256), 1); }  // number of EP streams
        if (chance(5)) { putBe(bytes, 8, 0, 4); }                  // address of SequenceInfo()
        if (chance(25)) { bytes.resize(below(static_cast<std::uint32_t>(bytes.size()))); }
    }

    EpStreamSpec randomStream(bool areReferencesAscending)
    {
        EpStreamSpec stream;
        stream.fine.resize(below(24));
        for (testsupport::EpFineSpec& fine : stream.fine) {
            fine = {.pts = below(5), .spn = below(6), .high = below(16)};
        }
        stream.coarse.resize(chance(15) ? 40 : below(6));  // 40 own more than the file holds
        std::uint32_t reference = 0;
        for (testsupport::EpCoarseSpec& coarse : stream.coarse) {
            reference = areReferencesAscending ? reference + below(6) : below(26);
            coarse = {.refToEpFineId = reference, .pts = below(10), .spn = randomPacket() + below(1U << 17U)};
        }
        return stream;
    }

    std::mt19937 m_engine{20240611};
};

bdmeta::BlurayClip clipOfBytes(const Bytes& bytes)
{
    bdmeta::BlurayClip clip;
    clip.rawData = bytes;
    clip.sourcePacketCount = 123456;
    return clip;
}

// What became of the lookups, to see that none of the outcomes went untested.
struct Tally {
    int found = 0;
    int clipEnds = 0;
    int failures = 0;
};

void compare(bdmeta::EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId, Tally& tally)
{
    const bdmeta::BlurayClip& clip = map.clip();
    const auto expected = EpWalk(clip.rawData, clip.sourcePacketCount).find(time, isStart, stcId);
    std::uint32_t packet = 0;
    const bool isFound = findEntryPacket(map, time, isStart, stcId, packet);
    ASSERT_EQ(isFound, expected.has_value()) << time << ' ' << isStart << ' ' << int{stcId};
    ASSERT_TRUE(!isFound || packet == *expected)
        << packet << ' ' << time << ' ' << isStart << ' ' << int{stcId};
    ++(!isFound ? tally.failures : packet == clip.sourcePacketCount ? tally.clipEnds : tally.found);
}

TEST(EpMapProperty, AnswersAreThoseOfTheWalk)
{
    RandomMaps maps;
    Tally tally;
    for (int round = 0; round < 12000 && !HasFatalFailure(); ++round) {
        SCOPED_TRACE(round);
        const bdmeta::BlurayClip clip = clipOfBytes(maps.next());
        discio::ReadBudget budget;
        bdmeta::EpMap map(clip, budget);
        for (int i = 0; i < 24 && !HasFatalFailure(); ++i) {
            compare(map, maps.randomTime(), i % 2 == 0, static_cast<std::uint8_t>(maps.below(4)), tally);
        }
    }
    EXPECT_GT(tally.found, 10000);
    EXPECT_GT(tally.clipEnds, 1000);
    EXPECT_GT(tally.failures, 10000);
}

// Many entries without any order.
TEST(EpMapProperty, LargeMapsWithoutOrder)
{
    RandomMaps random;
    Tally tally;
    for (const std::uint32_t fineCount : {1U, 15U, 16U, 17U, 255U, 256U, 257U, 1000U}) {
        ClpiSpec spec;
        EpStreamSpec stream;
        for (std::uint32_t i = 0; i < fineCount; ++i) {
            if (i % 7 == 0) { stream.coarse.push_back({i, 2 * random.below(8), random.below(64) << 17U}); }
            stream.fine.push_back({.pts = random.below(0x800), .spn = random.below(0x20000)});
        }
        spec.epStreams = {stream};
        spec.atcSequences[0].stcSequences.resize(8);
        for (testsupport::StcSequenceSpec& stc : spec.atcSequences[0].stcSequences) {
            stc.spnStcStart = random.below(65U << 17U);
        }
        const bdmeta::BlurayClip clip = clipOfBytes(spec.build());
        discio::ReadBudget budget;
        bdmeta::EpMap map(clip, budget);
        for (int i = 0; i < 400 && !HasFatalFailure(); ++i) {
            compare(map, random.below(9U << 19U), i % 2 == 0, static_cast<std::uint8_t>(random.below(8)),
                    tally);
        }
    }
    EXPECT_GT(tally.found, 1000);
}

}  // namespace
