// One playlist file.
#include "bdmeta/mpls.h"
#include "fuzz/abort_unless.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    discio::ReadBudget budget;
    budget.lower(discio::ReadBudget::Bound::Streams, 100'000, "streams");
    bdmeta::StreamTables tables(budget);
    const auto playlist = bdmeta::parsePlaylistBytes({data, size}, tables);
    if (!playlist) { return 0; }
    std::uint64_t durationMs = 0;
    for (const bdmeta::BlurayPlayItem& item : playlist->playItems) {
        fuzz::abortUnless(!item.angles.empty() && item.angles.front().clipName == item.clipName);
        fuzz::abortUnless(item.streams != nullptr);
        durationMs += item.durationMs;
        for (const bdmeta::BlurayStream& stream : *item.streams) {
            fuzz::abortUnless(stream.codingName != nullptr && stream.videoFormatName != nullptr);
        }
    }
    fuzz::abortUnless(durationMs == playlist->durationMs);
    return 0;
}
