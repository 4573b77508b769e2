// The answers of the index against those of a plain walk over the file, for random maps.
#include "bdmeta/ep_map.h"
#include "tests/bdmeta/ep_walk.h"
#include "tests/support/clpi_spec.h"

#include <gtest/gtest.h>

#include <random>

using namespace testsupport;

namespace {

// Few different values, so that times are equal, packets fall on both sides of a start, and references go back; at a
// larger scale more of them.
class RandomMaps {
public:
    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(m_engine() % limit); }
    std::uint32_t time(std::uint32_t scale)
    {
        return (below(5) << 19U) + (below(6 * scale) << 8U) + below(3) - 1;
    }

    Bytes next(std::uint32_t scale)
    {
        ClpiSpec spec;
        spec.atcSequences.resize(1 + below(2));
        for (AtcSequenceSpec& atc : spec.atcSequences) {
            atc.offsetStcId = static_cast<std::uint8_t>(below(3));
            atc.stcSequences.resize(below(3));
            for (StcSequenceSpec& stc : atc.stcSequences) {
                stc.spnStcStart = chance(30) ? 0 : packet();
            }
        }
        const bool areReferencesAscending = chance(50);
        spec.epStreams.resize(below(4));
        for (EpStreamSpec& stream : spec.epStreams) {
            stream.fine.resize(below(24 * scale));
            for (EpFineSpec& fine : stream.fine) {
                fine = {.pts = below(5 * scale), .spn = below(6 * scale), .high = below(16)};
            }
            stream.coarse.resize(chance(15) ? 40 : below(6));  // 40 own more than the file holds
            std::uint32_t reference = 0;
            for (EpCoarseSpec& coarse : stream.coarse) {
                reference = areReferencesAscending ? reference + below(6) : below(26 * scale);
                coarse = {.refToEpFineId = reference, .pts = below(10), .spn = packet() + below(1U << 17U)};
            }
        }
        Bytes bytes = spec.build();
        for (std::uint32_t lies = below(4); lies > 0; --lies) {
            putBe(bytes, 8 + below(bytes.size() - 12), below(200), 1 + below(4));
        }
        if (chance(25)) { bytes.resize(below(bytes.size())); }
        return bytes;
    }

private:
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    std::uint32_t packet() { return (below(3) << 17U) + below(6); }

    std::mt19937 m_engine{20240611};
};

TEST(EpMapProperty, AnswersAreThoseOfTheWalk)
{
    RandomMaps random;
    bdmeta::BlurayClip clip;
    clip.sourcePacketCount = 123456;
    int found = 0;
    int clipEnds = 0;
    int failures = 0;
    for (int round = 0; round < 12'000; ++round) {
        const std::uint32_t scale = round % 200 == 0 ? 10 : 1;
        clip.rawData = random.next(scale);
        const EpWalk walk{clip.rawData, clip.sourcePacketCount};
        discio::ReadBudget budget;
        bdmeta::EpMap map(clip, budget);
        for (int i = 0; i < 24; ++i) {
            const bool isStart = i % 2 == 0;
            const std::uint32_t time = random.time(scale);
            const auto stcId = static_cast<std::uint8_t>(random.below(4));
            const auto expected = walk.find(time, isStart, stcId);
            std::uint32_t packet = 0;
            const bool isFound = findEntryPacket(map, time, isStart, stcId, packet);
            ASSERT_TRUE(isFound ? packet == expected : !expected)
                << round << ": " << packet << ' ' << time << ' ' << isStart << ' ' << +stcId;
            ++(!isFound ? failures : packet == clip.sourcePacketCount ? clipEnds : found);
        }
    }
    EXPECT_TRUE(found > 10'000 && clipEnds > 1'000 && failures > 10'000);  // no outcome is untested
}

}  // namespace
