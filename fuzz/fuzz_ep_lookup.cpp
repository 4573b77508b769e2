// A clip information file and its entry points: the index against the plainest walk over the same file, which must agree
// on every question; and the size of a PlayItem between the times of each two questions.
//
// Four questions of 6 bytes each (time, little-endian; which end; STC sequence), then the file.
#include "bdmeta/clpi.h"
#include "bdmeta/ep_map.h"
#include "fuzz/target.h"
#include "tests/bdmeta/ep_walk.h"

void fuzz::target(Input input)
{
    constexpr std::size_t kQuestionsSize = std::size_t{4} * 6;
    if (input.size() < kQuestionsSize) { return; }
    const Input file = input.subspan(kQuestionsSize);
    bdmeta::BlurayClip clip = bdmeta::parseClipInfoBytes(file).value_or(bdmeta::BlurayClip());
    clip.rawData.assign(file.begin(), file.end());
    clip.sourcePacketCount = 123456;
    clip.streamFileSize = std::uint64_t{123456} * 192;
    const EpWalk walk{clip.rawData, clip.sourcePacketCount};
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    std::uint32_t formerTime = 0;
    for (std::size_t at = 0; at < kQuestionsSize; at += 6) {
        const Input question = input.subspan(at, 6);
        const std::uint32_t time =
            question[0] | question[1] * 0x100U | question[2] * 0x10000U | question[3] * 0x1000000U;
        const bool isStart = question[4] % 2 == 0;
        std::uint32_t packet = 0;
        const bool isFound = findEntryPacket(map, time, isStart, question[5], packet);
        std::uint64_t sizeBytes = 0;
        const bool hasSize = computePlayItemSize(map, formerTime, time, question[5], sizeBytes) == 0;
        require(!hasSize || sizeBytes <= clip.streamFileSize);
        formerTime = time;
        if (budget.reached() != nullptr) { return; }
        const auto expected = walk.find(time, isStart, question[5]);
        require(isFound == expected.has_value() && (!isFound || packet == *expected));
    }
}
