#include "bdmeta/ep_index.h"

#include <bit>

namespace bdmeta {

namespace {

// A tree over blocks instead of entries takes little memory; a block is searched by looking at its entries.
constexpr std::size_t kBlockSize = 16;

std::vector<EpEntry> sortedByTime(std::vector<EpEntry> entries)
{
    if (!std::ranges::is_sorted(entries, {}, &EpEntry::time)) {
        std::ranges::stable_sort(entries, {}, &EpEntry::time);
    }
    return entries;
}

std::vector<std::uint32_t> blockMaxima(const std::vector<EpEntry>& entries)
{
    std::vector<std::uint32_t> maxima((entries.size() + kBlockSize - 1) / kBlockSize);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        maxima[i / kBlockSize] = std::max(maxima[i / kBlockSize], entries[i].packet);
    }
    return maxima;
}

}  // namespace

MaximaTree::MaximaTree(const std::vector<std::uint32_t>& values)
    : m_valueCount(values.size())
    , m_leafCount(std::bit_ceil(values.size()))
    , m_nodes(2 * m_leafCount)
{
    std::ranges::copy(values, m_nodes.begin() + static_cast<std::ptrdiff_t>(m_leafCount));
    for (std::size_t node = m_leafCount - 1; node > 0; --node) {
        m_nodes[node] = std::max(m_nodes[2 * node], m_nodes[2 * node + 1]);
    }
}

// Both searches go up from their leaf, from subtree to neighbouring subtree, until one holds a value that is
// large enough, and then down in it. A way up along the tree's edge ends at the root without a neighbour.

std::optional<std::size_t> MaximaTree::firstFrom(std::size_t begin, std::uint32_t lowest) const
{
    if (begin >= m_valueCount) { return std::nullopt; }
    std::size_t node = m_leafCount + begin;
    while (m_nodes[node] < lowest) {
        while (node % 2 == 1) {
            node /= 2;
        }
        if (node == 0) { return std::nullopt; }
        ++node;
    }
    while (node < m_leafCount) {
        node *= 2;
        if (m_nodes[node] < lowest) { ++node; }
    }
    return node - m_leafCount;
}

std::optional<std::size_t> MaximaTree::lastBefore(std::size_t end, std::uint32_t lowest) const
{
    if (end == 0) { return std::nullopt; }
    std::size_t node = m_leafCount + end - 1;
    while (m_nodes[node] < lowest) {
        while (node % 2 == 0) {
            node /= 2;
        }
        if (node == 1) { return std::nullopt; }
        --node;
    }
    while (node < m_leafCount) {
        node = 2 * node + 1;
        if (m_nodes[node] < lowest) { --node; }
    }
    return node - m_leafCount;
}

EpIndex::EpIndex(std::vector<EpEntry> entries)
    : m_entries(sortedByTime(std::move(entries)))
    , m_blockMaxima(blockMaxima(m_entries))
{}

std::optional<std::uint32_t> EpIndex::latestUpTo(std::uint32_t time, std::uint32_t lowestPacket) const
{
    const auto last = lastBefore(positionAfter(time), lowestPacket);
    if (!last) { return std::nullopt; }
    const auto equalTimes = std::ranges::lower_bound(m_entries, m_entries[*last].time, {}, &EpEntry::time);
    const auto first = firstFrom(static_cast<std::size_t>(equalTimes - m_entries.begin()), lowestPacket);
    return m_entries[first.value_or(*last)].packet;
}

std::optional<std::uint32_t> EpIndex::earliestAfter(std::uint32_t time, std::uint32_t lowestPacket) const
{
    const auto first = firstFrom(positionAfter(time), lowestPacket);
    if (!first) { return std::nullopt; }
    return m_entries[*first].packet;
}

std::size_t EpIndex::positionAfter(std::uint32_t time) const
{
    const auto after = std::ranges::upper_bound(m_entries, time, {}, &EpEntry::time);
    return static_cast<std::size_t>(after - m_entries.begin());
}

// At the edge of a block both go on to the next block that holds such an entry.

std::optional<std::size_t> EpIndex::firstFrom(std::size_t begin, std::uint32_t lowestPacket) const
{
    for (std::size_t i = begin; i < m_entries.size(); ++i) {
        if (i % kBlockSize == 0) {
            const auto block = m_blockMaxima.firstFrom(i / kBlockSize, lowestPacket);
            if (!block) { return std::nullopt; }
            i = *block * kBlockSize;
        }
        if (m_entries[i].packet >= lowestPacket) { return i; }
    }
    return std::nullopt;
}

std::optional<std::size_t> EpIndex::lastBefore(std::size_t end, std::uint32_t lowestPacket) const
{
    for (std::size_t i = end; i > 0; --i) {
        if (i % kBlockSize == 0) {
            const auto block = m_blockMaxima.lastBefore(i / kBlockSize, lowestPacket);
            if (!block) { return std::nullopt; }
            i = std::min((*block + 1) * kBlockSize, m_entries.size());
        }
        if (m_entries[i - 1].packet >= lowestPacket) { return i - 1; }
    }
    return std::nullopt;
}

}  // namespace bdmeta
