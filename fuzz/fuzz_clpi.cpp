// One clip information file and its entry points, asked as a PlayItem would.
#include "bdmeta/clpi.h"
#include "bdmeta/ep_map.h"
#include "fuzz/abort_unless.h"

#include <cstddef>
#include <cstdint>
#include <optional>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto clip = bdmeta::parseClipInfoBytes({data, size});
    if (!clip) { return 0; }
    clip->rawData.assign(data, data + size);
    clip->streamFileSize = std::uint64_t{clip->sourcePacketCount} * 192;
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::LookUps, 1U << 20U, "steps");
    bdmeta::EpMap map(*clip, budget);
    constexpr std::uint32_t kTimes[] = {0, 1, 1U << 19U, 45000 * 600U, UINT32_MAX};
    for (std::uint8_t stcId = 0; stcId < 3; ++stcId) {
        for (const std::uint32_t inTime : kTimes) {
            for (const std::uint32_t outTime : kTimes) {
                std::uint64_t sizeBytes = 0;
                if (computePlayItemSize(map, inTime, outTime, stcId, sizeBytes) == 0) {
                    fuzz::abortUnless(sizeBytes <= clip->streamFileSize);
                }
            }
        }
    }
    return 0;
}
