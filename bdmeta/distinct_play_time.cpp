#include "bdmeta/distinct_play_time.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <vector>

namespace bdmeta {

namespace {

constexpr std::uint64_t kTicksPerMs = 45;

struct Stretch {
    std::string_view clip;
    std::uint8_t stcId;  // times of different STC sequences cannot be compared
    std::uint32_t inTime;
    std::uint32_t outTime;
};

}  // namespace

std::uint64_t distinctPlayTimeMs(const BlurayPlaylist& playlist)
{
    std::vector<Stretch> stretches;
    stretches.reserve(playlist.playItems.size());
    for (const BlurayPlayItem& item : playlist.playItems) {
        stretches.push_back({item.clipName.view(), item.stcId, item.inTime, item.outTime});
    }
    std::ranges::sort(stretches, {}, [](const Stretch& stretch) {
        return std::tuple(stretch.clip, stretch.stcId, stretch.inTime);
    });

    std::uint64_t ticks = 0;
    const Stretch* former = nullptr;
    std::uint32_t countedTo = 0;
    for (const Stretch& stretch : stretches) {
        const bool isSameTimeline =
            former != nullptr && former->clip == stretch.clip && former->stcId == stretch.stcId;
        const std::uint32_t begin = isSameTimeline ? std::max(countedTo, stretch.inTime) : stretch.inTime;
        if (stretch.outTime > begin) { ticks += stretch.outTime - begin; }
        countedTo = std::max(begin, stretch.outTime);
        former = &stretch;
    }
    return ticks / kTicksPerMs;
}

}  // namespace bdmeta
