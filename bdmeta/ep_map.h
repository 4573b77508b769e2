// The entry points of a clip (EP_map() in the CPI() of its .clpi). They map presentation times to source packets of the
// stream file, and so give the number of bytes that a PlayItem plays.
//
// CPI(), at the address in bytes 16-19 of the file; a length of 0 means that there is no map:
//
//      0  length after this field        4  CPI type (low 4 bits of 2 bytes)       6  EP_map()
//
// EP_map(): 1 number of EP streams, 2 the EP streams, 12 bytes each: u16 PID, 10 reserved bits, 4 bits EP
// stream type, 16 bits number of coarse entries, 18 bits number of fine entries, u32 start of the tables of
// ep_table.h, counted from the start of EP_map().
#pragma once

#include "bdmeta/bluray_disc.h"
#include "bdmeta/ep_table.h"
#include "discio/read_budget.h"

#include <optional>
#include <vector>

namespace bdmeta {

// What decoding one entry of a table, or searching one table, takes from the budget's LookUps. Coarse entries can share
// fine entries, so a small file can claim thousands of millions of entry points; the cost bounds time and memory.
inline constexpr std::uint64_t kEpStepCost = 200;

// The entry points of one clip. The tables are located once; the entry points are decoded and sorted for each STC
// sequence when it is first used. Missing bytes fail only the look-ups that need them.
class EpMap {
public:
    // The clip and the budget must outlive the map.
    EpMap(const BlurayClip& clip, discio::ReadBudget& budget);

    [[nodiscard]] const BlurayClip& clip() const { return *m_clip; }

private:
    friend bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId,
                                std::uint32_t& packet);

    // The entry points of one table from an STC sequence's first packet on, in ascending time; equal times in stored
    // order.
    using EpIndex = std::vector<EpEntry>;

    struct StcSequence {
        std::uint8_t stcId = 0;
        std::uint32_t firstPacket = 0;
        std::optional<std::vector<EpIndex>> indexes;  // not empty ones; absent before the first use
    };

    void parseStcSequences();
    void parseTables();
    bool buildIndexes(StcSequence& sequence);
    bool spend(std::uint64_t entryCount)
    {
        return m_budget->spend(discio::ReadBudget::Bound::LookUps, entryCount * kEpStepCost);
    }

    const BlurayClip* m_clip;
    discio::ReadBudget* m_budget;
    std::vector<StcSequence> m_sequences;  // in ascending id
    std::vector<EpTable> m_tables;         // of the EP streams before the first that is not whole
    bool m_isCutShort = false;             // an EP stream is not whole
};

// Finds the source packet at which to enter the clip for a presentation time (45 kHz ticks) of the STC sequence
// `stcId`. A start takes the latest entry point that is not after the time, an end the earliest one after it, or the
// clip's end if there is none. Entry points before the STC sequence's first packet do not count; of equal times the
// first in stored order counts; the first EP stream that has such an entry point decides. Returns false if there is no
// such STC sequence, no entry point to start at, the file ends too early, or the budget is spent.
[[nodiscard]] bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId,
                                   std::uint32_t& packet);

// Computes the bytes of the clip's stream file between the entry points of two times; 0 for equal times. Positions
// after the file's end count as its end. Returns 0, or -1 if the OUT time is before the IN time, a packet cannot be
// found, or the packets are in the opposite order.
[[nodiscard]] int computePlayItemSize(EpMap& map, std::uint32_t inTime, std::uint32_t outTime,
                                      std::uint8_t stcId, std::uint64_t& size);

}  // namespace bdmeta
