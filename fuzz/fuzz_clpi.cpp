// One clip information file and its entry points, asked as a PlayItem would.
#include "bdmeta/clpi.h"
#include "bdmeta/ep_map.h"
#include "fuzz/target.h"

void fuzz::target(Input input)
{
    auto clip = bdmeta::parseClipInfoBytes(input);
    if (!clip) { return; }
    clip->rawData.assign(input.begin(), input.end());
    clip->streamFileSize = std::uint64_t{clip->sourcePacketCount} * 192;
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::LookUps, 1U << 20U, "steps");
    bdmeta::EpMap map(*clip, budget);
    constexpr std::uint32_t kTimes[] = {0, 1, 1U << 19U, 45000 * 600U, UINT32_MAX};
    for (std::uint8_t stcId = 0; stcId < 3; ++stcId) {
        for (const std::uint32_t inTime : kTimes) {
            for (const std::uint32_t outTime : kTimes) {
                std::uint64_t sizeBytes = 0;
                const bool isFound = computePlayItemSize(map, inTime, outTime, stcId, sizeBytes) == 0;
                require(!isFound || sizeBytes <= clip->streamFileSize);
            }
        }
    }
}
