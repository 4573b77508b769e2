// The entry points of one elementary stream in a clip's EP map: coarse entries, each with a run of fine entries that
// complete its time and its packet number.
//
//      0  offset of the fine entries, counted from here
//      4  coarse entries, 8 bytes: number of the first fine entry (18 bits), PTS_EP_coarse (14 bits),
//         SPN_EP_coarse (32 bits)
//         fine entries, 4 bytes: angle change point (1 bit), I picture end (3 bits), PTS_EP_fine (11 bits),
//         SPN_EP_fine (17 bits)
//
// A coarse entry owns the fine entries from its first to the next coarse entry's first, the last one up to
// their count. If the next first entry is not larger, a coarse entry owns none; so a fine entry can have several
// owners.
#pragma once

#include "discio/byte_reader.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace bdmeta {

struct EpEntry {
    std::uint32_t time = 0;    // 45 kHz ticks
    std::uint32_t packet = 0;  // source packet number
};

// The place of an EP stream's tables, and their declared sizes.
struct EpTableHeader {
    std::uint32_t start = 0;  // in the EP map
    std::uint32_t coarseCount = 0;
    std::uint32_t fineCount = 0;

    friend bool operator==(const EpTableHeader&, const EpTableHeader&) = default;
};

class EpTable {
public:
    // `map` reads from the start of the EP map to the file's end, which alone bounds the tables. Its bytes must outlive
    // the table.
    EpTable(discio::ByteReader map, const EpTableHeader& header);

    // Returns whether the file holds all coarse entries and all fine entries that they own.
    [[nodiscard]] bool isWhole() const { return m_isWhole; }

    // The number of coarse entries, and of the entry points that a walk visits. A fine entry counts once for each
    // coarse entry that owns it.
    [[nodiscard]] std::uint64_t coarseCount() const { return m_coarse.size() / kCoarseSize; }
    [[nodiscard]] std::uint64_t entryCount() const { return m_entryCount; }

    // Calls `visit` for every entry, in stored order. The table must be whole.
    template <typename Visitor>
    void walk(Visitor visit) const
    {
        walkCoarse([this, visit](const Coarse& coarse, std::size_t begin, std::size_t end) {
            discio::ByteReader fine(m_fine.subspan(begin * kFineSize, (end - begin) * kFineSize));
            while (fine.remaining() > 0) {
                const std::uint32_t bits = fine.be32();
                visit(EpEntry{coarse.time + (((bits >> 17U) & 0x7FFU) << 8U),
                              coarse.packet + (bits & kLowPacketBits)});
            }
        });
    }

private:
    static constexpr std::size_t kCoarseSize = 8;
    static constexpr std::size_t kFineSize = 4;
    static constexpr std::uint32_t kLowPacketBits = 0x1FFFF;

    struct Coarse {
        std::uint32_t firstFine = 0;
        std::uint32_t time = 0;    // without the part in the fine entries
        std::uint32_t packet = 0;  // likewise
    };

    static Coarse parseCoarse(discio::ByteReader& reader)
    {
        const std::uint32_t bits = reader.be32();
        // The lowest bit of the coarse time is repeated in the fine one.
        return {bits >> 14U, (bits & 0x3FFEU) << 18U, reader.be32() & ~kLowPacketBits};
    }

    // Calls `visit` with each coarse entry that owns fine entries and with the first and the end of these.
    template <typename Visitor>
    void walkCoarse(Visitor visit) const
    {
        discio::ByteReader reader(m_coarse);
        Coarse next = parseCoarse(reader);
        for (std::size_t left = m_coarse.size() / kCoarseSize; left > 0; --left) {
            const Coarse coarse = next;
            std::uint32_t end = m_fineCount;
            if (left > 1) {
                next = parseCoarse(reader);
                end = std::min(next.firstFine, m_fineCount);
            }
            if (coarse.firstFine < end) { visit(coarse, coarse.firstFine, end); }
        }
    }

    std::span<const std::uint8_t> m_coarse;
    std::span<const std::uint8_t> m_fine;  // from the first fine entry to the file's end
    std::uint32_t m_fineCount;
    std::uint64_t m_entryCount = 0;
    bool m_isWhole = false;
};

}  // namespace bdmeta
