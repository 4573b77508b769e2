// One playlist file.
#include "bdmeta/mpls.h"
#include "fuzz/target.h"

void fuzz::target(Input input)
{
    constexpr std::size_t kMaxStreams = 100'000;
    bdmeta::StreamTables tables(kMaxStreams);
    const auto playlist = bdmeta::parsePlaylistBytes(input, tables);
    require(tables.streamCount() <= kMaxStreams);
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
