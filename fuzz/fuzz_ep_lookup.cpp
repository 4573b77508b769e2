// The index over entry points against the plainest walk over the same file: they must agree on every question.
//
// Four questions of 6 bytes each (time, little-endian; which end; STC sequence), then the file.
#include "bdmeta/ep_map.h"
#include "fuzz/target.h"
#include "tests/bdmeta/ep_walk.h"

void fuzz::target(Input input)
{
    constexpr std::size_t kQuestionsSize = std::size_t{4} * 6;
    if (input.size() < kQuestionsSize) { return; }
    bdmeta::BlurayClip clip;
    clip.rawData.assign(input.begin() + kQuestionsSize, input.end());
    clip.sourcePacketCount = 123456;
    const EpWalk walk(clip.rawData, clip.sourcePacketCount);
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    for (std::size_t at = 0; at < kQuestionsSize; at += 6) {
        const Input question = input.subspan(at, 6);
        const std::uint32_t time =
            question[0] | question[1] * 0x100U | question[2] * 0x10000U | question[3] * 0x1000000U;
        const bool isStart = question[4] % 2 == 0;
        std::uint32_t packet = 0;
        const bool isFound = findEntryPacket(map, time, isStart, question[5], packet);
        if (budget.reached() != nullptr) { return; }
        const auto expected = walk.find(time, isStart, question[5]);
        require(isFound == expected.has_value() && (!isFound || packet == *expected));
    }
}
