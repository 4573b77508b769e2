// The entry points of a clip (EP_map() in the CPI() of its .clpi), which tie presentation times to source
// packets of its stream file, and what follows from them: how many bytes a PlayItem plays.
//
// CPI(), at the address in bytes 16-19 of the file; a length of 0 means that there is no map:
//
//      0  length behind this field       4  CPI type (low 4 bits of 2 bytes)       6  EP_map()
//
// EP_map(): 1 number of EP streams, 2 the EP streams, 12 bytes each: u16 PID, 10 reserved bits, 4 bits EP
// stream type, 16 bits number of coarse entries, 18 bits number of fine entries, u32 start of the tables of
// ep_table.h, counted from the start of EP_map().
#pragma once

#include "bdmeta/bluray_disc.h"
#include "bdmeta/ep_index.h"
#include "discio/read_budget.h"

namespace bdmeta {

// What a lookup in an index takes from the budget; decoding a table takes its coarse entries.
inline constexpr std::uint64_t kIndexLookupCost = 64;

// Entry points are indexed as far as a file can hold them: each fine entry owned once. What coarse entries own in
// excess of that, on a disc made to exhaust its reader, is not indexed, since it can be thousands of times the file's
// size, but walked at each lookup, which takes no memory and gives the same answers. The budget bounds the time: once
// it is spent, lookups fail and the derivation's sizes are worthless.
//
// A clip's entry points, decoded once. Answers exactly as a walk over the file for each lookup would: bytes
// that are missing fail the lookups that get to them, and no others.
class EpMap {
public:
    // The clip and the budget must outlive the map.
    EpMap(const BlurayClip& clip, discio::ReadBudget& budget);

    [[nodiscard]] const BlurayClip& clip() const { return *m_clip; }

private:
    friend bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId,
                                std::uint32_t& packet);

    struct Stream {
        EpTable table;
        std::optional<EpIndex> index;
    };
    struct StcStart {
        std::uint8_t stcId = 0;
        std::uint32_t packet = 0;
    };

    void parseStcStarts();
    void parseStreams();
    void addStream(const EpTable& table, std::uint64_t& indexableEntries);

    const BlurayClip* m_clip;
    discio::ReadBudget* m_budget;
    std::vector<StcStart> m_stcStarts;  // in ascending id
    std::vector<Stream> m_streams;      // up to the first that is not whole, without those that cannot answer
    bool m_isCutShort = false;          // bytes are missing behind these
};

// Finds the source packet at which to enter the clip for a presentation time (45 kHz ticks) of the STC
// sequence `stcId`: for a start the latest entry point that is not after the time, otherwise the earliest one
// after it, or the clip's end where none is. Entry points before the STC sequence's first packet do not
// count, those of equal times count in stored order, and the first EP stream that has one decides. False
// where there is no such STC sequence, no entry point to start at, or the file ends too early.
[[nodiscard]] bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId,
                                   std::uint32_t& packet);

// The bytes of the clip's stream file between the entry points of two times, none between equal times; what
// would lie beyond the file's end is left out. 0, or -1 where one of the packets cannot be found or their
// order is not that of the times.
[[nodiscard]] int computePlayItemSize(EpMap& map, std::uint32_t inTime, std::uint32_t outTime,
                                      std::uint8_t stcId, std::uint64_t& size);

}  // namespace bdmeta
