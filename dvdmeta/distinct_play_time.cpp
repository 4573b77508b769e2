#include "dvdmeta/distinct_play_time.h"

#include <set>
#include <utility>

namespace dvdmeta {

std::uint64_t distinctPlayTimeMs(std::span<const DvdCell> cells)
{
    std::uint64_t durationMs = 0;
    std::set<std::pair<std::uint32_t, std::uint32_t>> counted;
    for (const DvdCell& cell : cells) {
        if (counted.emplace(cell.firstSector, cell.lastSector).second) { durationMs += cell.durationMs; }
    }
    return durationMs;
}

}  // namespace dvdmeta
