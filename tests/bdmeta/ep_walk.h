// The lookup of a packet in its plainest form: one walk over a clip information file, entry by entry. What the index
// answers is held against it.
#pragma once

#include "tests/support/bytes.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

struct EpWalk {
    const testsupport::Bytes& file;
    std::uint32_t sourcePacketCount;

    // The packet; empty if the lookup fails, as it does if it needs a byte after the file's end.
    [[nodiscard]] std::optional<std::uint64_t> find(std::uint32_t time, bool isStart,
                                                    std::uint8_t stcId) const
    try {
        const auto stcStart = findStcStart(stcId);
        if (!stcStart) { return std::nullopt; }
        const std::uint64_t cpi = number(16, 4);
        const std::uint64_t streamCount = cpi != 0 && number(cpi, 4) != 0 ? number(cpi + 7, 1) : 0;
        for (std::uint64_t i = 0; i < streamCount; ++i) {
            std::optional<Entry> kept;
            for (const Entry& entry : entriesOf(cpi + 6, cpi + 8 + 12 * i)) {
                const bool isCandidate = entry.packet >= *stcStart && (entry.time <= time) == isStart;
                const bool isBetter = !kept || (isStart ? entry.time > kept->time : entry.time < kept->time);
                if (isCandidate && isBetter) { kept = entry; }
            }
            if (kept) { return kept->packet; }
        }
        return isStart ? std::nullopt : std::optional<std::uint64_t>(sourcePacketCount);
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }

private:
    struct Entry {
        std::uint64_t time;
        std::uint64_t packet;
    };

    // A big-endian number.
    [[nodiscard]] std::uint64_t number(std::uint64_t offset, std::uint64_t width) const
    {
        std::uint64_t value = 0;
        for (std::uint64_t i = offset; i < offset + width; ++i) {
            value = value << 8U | file.at(i);
        }
        return value;
    }

    [[nodiscard]] std::optional<std::uint64_t> findStcStart(std::uint8_t stcId) const
    {
        const std::uint64_t address = number(8, 4);
        if (address == 0) { return std::nullopt; }
        std::uint64_t at = address + 6;
        for (std::uint64_t atc = number(address + 5, 1); atc > 0; --atc) {
            const std::uint64_t firstId = number(at + 5, 1);
            const std::uint64_t endId = firstId + number(at + 4, 1);
            at += 6;
            for (std::uint64_t id = firstId; id < endId; ++id, at += 14) {
                const std::uint64_t spnStcStart = number(at + 2, 4);
                if (id == stcId) { return spnStcStart; }
            }
        }
        return std::nullopt;
    }

    // The entries of the stream that has this header.
    [[nodiscard]] std::vector<Entry> entriesOf(std::uint64_t map, std::uint64_t header) const
    {
        std::vector<Entry> entries;
        const std::uint64_t counts = number(header + 2, 6);
        const std::uint64_t coarseCount = counts >> 18U & 0xFFFFU;
        const std::uint64_t fineCount = counts & 0x3FFFFU;
        const std::uint64_t tables = map + number(header + 8, 4);
        for (std::uint64_t i = 0; i < coarseCount; ++i) {
            const std::uint64_t fineTable = tables + number(tables, 4);
            const std::uint64_t coarse = number(tables + 4 + 8 * i, 4);
            const std::uint64_t packet = number(tables + 8 + 8 * i, 4) & ~0x1FFFFULL;
            const std::uint64_t next =
                i + 1 < coarseCount ? number(tables + 12 + 8 * i, 4) >> 14U : fineCount;
            for (std::uint64_t j = coarse >> 14U; j < std::min(next, fineCount); ++j) {
                const std::uint64_t fine = number(fineTable + 4 * j, 4);
                entries.push_back({((coarse & 0x3FFEU) << 18U) + ((fine >> 17U & 0x7FFU) << 8U),
                                   packet + (fine & 0x1FFFFU)});
            }
        }
        return entries;
    }
};
