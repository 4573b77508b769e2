// The lookup of a packet in its plainest form: one walk over a clip information file, bit by bit, entry by
// entry. What the index answers is held against it.
#pragma once

#include "tests/support/bytes.h"

#include <algorithm>
#include <optional>

// Reads big-endian numbers of any width; what lies beyond the end is an overrun, for good.
class BitCursor {
public:
    BitCursor(const testsupport::Bytes& bytes, std::uint64_t byteOffset)
        : m_bytes(bytes)
        , m_bit(byteOffset * 8)
    {}

    std::uint32_t read(unsigned width)
    {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < width; ++i, ++m_bit) {
            if (m_bit / 8 >= m_bytes.size()) {
                m_isOverrun = true;
                return 0;
            }
            const unsigned bit = (unsigned{m_bytes[m_bit / 8]} >> (7 - m_bit % 8)) & 1U;
            value = value << 1U | bit;
        }
        return value;
    }
    void skip(std::uint64_t bits) { m_bit += bits; }
    [[nodiscard]] bool isOverrun() const { return m_isOverrun; }

private:
    const testsupport::Bytes& m_bytes;
    std::uint64_t m_bit;
    bool m_isOverrun = false;
};

class EpWalk {
public:
    EpWalk(const testsupport::Bytes& file, std::uint32_t sourcePacketCount)
        : m_file(file)
        , m_sourcePacketCount(sourcePacketCount)
    {}

    // The packet; empty where the lookup fails.
    [[nodiscard]] std::optional<std::uint32_t> find(std::uint32_t time, bool isStart,
                                                    std::uint8_t stcId) const
    {
        const auto stcStart = findStcStart(stcId);
        if (!stcStart) { return std::nullopt; }
        const std::uint64_t cpi = BitCursor(m_file, 16).read(32);
        BitCursor header(m_file, cpi);
        const bool hasMap = cpi != 0 && header.read(32) != 0;
        if (header.isOverrun()) { return std::nullopt; }
        std::uint32_t streamCount = 0;
        if (hasMap) {
            header.skip(16 + 8);
            streamCount = header.read(8);
            if (header.isOverrun()) { return std::nullopt; }
        }
        for (std::uint32_t i = 0; i < streamCount; ++i) {
            std::optional<Entry> kept;
            if (!walkStream(cpi + 6, header, {time, isStart, *stcStart}, kept)) { return std::nullopt; }
            if (kept) { return kept->packet; }
        }
        if (isStart) { return std::nullopt; }
        return m_sourcePacketCount;
    }

private:
    struct Entry {
        std::uint32_t time;
        std::uint32_t packet;
    };
    struct Question {
        std::uint32_t time;
        bool isStart;
        std::uint32_t stcStart;

        void look(const Entry& entry, std::optional<Entry>& kept) const
        {
            if (entry.packet < stcStart) { return; }
            if (isStart && entry.time <= time && (!kept || entry.time > kept->time)) { kept = entry; }
            if (!isStart && entry.time > time && (!kept || entry.time < kept->time)) { kept = entry; }
        }
    };

    [[nodiscard]] std::optional<std::uint32_t> findStcStart(std::uint8_t stcId) const
    {
        const std::uint32_t address = BitCursor(m_file, 8).read(32);
        if (address == 0) { return std::nullopt; }
        BitCursor cursor(m_file, address + 5ULL);
        const std::uint32_t atcCount = cursor.read(8);
        for (std::uint32_t atc = 0; atc < atcCount; ++atc) {
            cursor.skip(32);
            const std::uint32_t stcCount = cursor.read(8);
            const std::uint32_t offsetStcId = cursor.read(8);
            for (std::uint32_t stc = 0; stc < stcCount; ++stc) {
                cursor.skip(16);
                const std::uint32_t spnStcStart = cursor.read(32);
                cursor.skip(64);
                if (cursor.isOverrun()) { return std::nullopt; }
                if (offsetStcId + stc == stcId) { return spnStcStart; }
            }
        }
        return std::nullopt;
    }

    // Walks the stream whose header is next; false on an overrun.
    bool walkStream(std::uint64_t map, BitCursor& header, const Question& question,
                    std::optional<Entry>& kept) const
    {
        header.skip(16 + 10 + 4);
        const std::uint32_t coarseCount = header.read(16);
        const std::uint32_t fineCount = header.read(18);
        const std::uint64_t tables = map + header.read(32);
        if (coarseCount == 0) { return !header.isOverrun(); }
        BitCursor tablesHeader(m_file, tables);
        const std::uint32_t fineStart = tablesHeader.read(32);
        if (header.isOverrun() || tablesHeader.isOverrun()) { return false; }
        for (std::uint32_t i = 0; i < coarseCount; ++i) {
            BitCursor coarse(m_file, tables + 4 + 8ULL * i);
            const std::uint32_t first = coarse.read(18);
            const std::uint32_t coarsePts = coarse.read(14);
            const std::uint32_t coarseSpn = coarse.read(32);
            const std::uint32_t next = i + 1 < coarseCount ? coarse.read(18) : fineCount;
            if (coarse.isOverrun()) { return false; }
            for (std::uint32_t j = first; j < std::min(next, fineCount); ++j) {
                BitCursor fine(m_file, tables + fineStart + 4ULL * j);
                fine.skip(1 + 3);
                const std::uint32_t finePts = fine.read(11);
                const std::uint32_t fineSpn = fine.read(17);
                if (fine.isOverrun()) { return false; }
                question.look(
                    {((coarsePts & ~1U) << 18U) + (finePts << 8U), (coarseSpn & ~0x1FFFFU) + fineSpn}, kept);
            }
        }
        return true;
    }

    const testsupport::Bytes& m_file;
    std::uint32_t m_sourcePacketCount;
};
