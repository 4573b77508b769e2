#include "bdmeta/ep_table.h"

namespace bdmeta {

EpTable::EpTable(discio::ByteReader map, const EpTableHeader& header)
    : m_fineCount(header.fineCount)
{
    map.seek(header.start);
    const std::uint64_t fineStart = std::uint64_t{header.start} + map.be32();
    m_coarse = map.bytes(header.coarseCount * kCoarseSize);
    if (!map.ok()) { return; }
    map.seek(fineStart);
    if (map.ok()) { m_fine = map.bytes(map.remaining()); }

    std::uint64_t ownedEnd = 0;
    walkCoarse([this, &ownedEnd](const Coarse&, std::size_t begin, std::size_t end) {
        m_entryCount += end - begin;
        ownedEnd = std::max<std::uint64_t>(ownedEnd, end);
    });
    m_isWhole = ownedEnd <= m_fine.size() / kFineSize;
}

}  // namespace bdmeta
