// Entry points ordered by time, so that a time is looked up in logarithmic time, whichever packet a search
// may begin at.
#pragma once

#include "bdmeta/ep_table.h"

#include <optional>
#include <vector>

namespace bdmeta {

// Numbers, and the searches for the next one in either direction that is at least so large.
class MaximaTree {
public:
    explicit MaximaTree(const std::vector<std::uint32_t>& values);

    // The position of the first value of `lowest` or more from `begin` on, of the last before `end`.
    [[nodiscard]] std::optional<std::size_t> firstFrom(std::size_t begin, std::uint32_t lowest) const;
    [[nodiscard]] std::optional<std::size_t> lastBefore(std::size_t end, std::uint32_t lowest) const;

private:
    std::size_t m_valueCount;
    std::size_t m_leafCount;  // a power of two
    // The root at 1, the children of i at 2i and 2i + 1, each the larger of its two. The leaves, from
    // m_leafCount on, are the values, with zeros behind the last.
    std::vector<std::uint32_t> m_nodes;
};

class EpIndex {
public:
    // `entries` in stored order. Takes some 9 bytes for each.
    explicit EpIndex(std::vector<EpEntry> entries);

    // Among the entries whose packet is `lowestPacket` or above: the packet of the one with the latest time
    // that is not after `time`, or with the earliest that is after it. Of equal times the first in stored
    // order counts.
    [[nodiscard]] std::optional<std::uint32_t> latestUpTo(std::uint32_t time,
                                                          std::uint32_t lowestPacket) const;
    [[nodiscard]] std::optional<std::uint32_t> earliestAfter(std::uint32_t time,
                                                             std::uint32_t lowestPacket) const;

private:
    // The position of the first such entry from `begin` on, of the last before `end`.
    [[nodiscard]] std::optional<std::size_t> firstFrom(std::size_t begin, std::uint32_t lowestPacket) const;
    [[nodiscard]] std::optional<std::size_t> lastBefore(std::size_t end, std::uint32_t lowestPacket) const;

    // Where the times after `time` begin.
    [[nodiscard]] std::size_t positionAfter(std::uint32_t time) const;

    std::vector<EpEntry> m_entries;  // in ascending time; equal times in stored order
    MaximaTree m_blockMaxima;        // the largest packet of each block of entries
};

}  // namespace bdmeta
