// One playlist file.
#include "bdmeta/mpls.h"
#include "fuzz/target.h"

void fuzz::target(Input input)
{
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::Streams, 100'000, "streams");
    bdmeta::StreamTables tables(budget);
    const auto playlist = bdmeta::parsePlaylistBytes(input, tables);
    if (!playlist) { return; }
    std::uint64_t durationMs = 0;
    for (const bdmeta::BlurayPlayItem& item : playlist->playItems) {
        require(!item.angles.empty() && item.angles.front().clipName == item.clipName);
        require(item.streams != nullptr);
        durationMs += item.durationMs;
        for (const bdmeta::BlurayStream& stream : *item.streams) {
            require(stream.codingName != nullptr && stream.videoFormatName != nullptr);
        }
    }
    require(durationMs == playlist->durationMs);
}
