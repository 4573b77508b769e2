#include "bdmeta/ep_map.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace bdmeta {

using discio::ByteReader;
using discio::ReadBudget;

namespace {

constexpr std::size_t kSequenceInfoAddressOffset = 8;
constexpr std::size_t kCpiAddressOffset = 16;

// A header of 4 bytes and a transport packet of 188 bytes.
constexpr std::uint64_t kSourcePacketSize = 192;

std::uint32_t be32At(ByteReader file, std::size_t offset)
{
    file.seek(offset);
    return file.be32();
}

EpTableHeader parseTableHeader(ByteReader& reader)
{
    reader.skip(2);
    const std::uint32_t high = reader.be16();
    const std::uint32_t low = reader.be32();
    EpTableHeader header;
    header.coarseCount = (high & 0x3U) << 14U | low >> 18U;
    header.fineCount = low & 0x3FFFFU;
    header.start = reader.be32();
    return header;
}

}  // namespace

EpMap::EpMap(const BlurayClip& clip, ReadBudget& budget)
    : m_clip(&clip)
    , m_budget(&budget)
{
    parseStcSequences();
    if (!m_sequences.empty()) { parseTables(); }
}

// Deliberate: the section's length is ignored; the file's end is the bound.
void EpMap::parseStcSequences()
{
    ByteReader reader(m_clip->rawData);
    const std::uint32_t address = be32At(reader, kSequenceInfoAddressOffset);
    if (address == 0) { return; }
    reader.seek(address);
    reader.skip(5);
    const unsigned atcCount = reader.u8();
    for (unsigned atc = 0; atc < atcCount && reader.ok(); ++atc) {
        reader.skip(4);
        const unsigned stcCount = reader.u8();
        const unsigned firstId = reader.u8();
        for (unsigned id = firstId; id < firstId + stcCount; ++id) {
            reader.skip(2);
            const std::uint32_t packet = reader.be32();
            if (!reader.ok()) { return; }
            reader.skip(8);
            const auto place = std::ranges::lower_bound(m_sequences, id, {}, &StcSequence::stcId);
            const bool isKnown = place != m_sequences.end() && place->stcId == id;
            if (id > UINT8_MAX || isKnown) { continue; }  // the first sequence of an id counts
            m_sequences.insert(place, {static_cast<std::uint8_t>(id), packet, std::nullopt});
        }
    }
}

void EpMap::parseTables()
{
    ByteReader reader(m_clip->rawData);
    const std::uint32_t address = be32At(reader, kCpiAddressOffset);
    if (address == 0) { return; }
    reader.seek(address);
    const std::uint32_t length = reader.be32();
    if (reader.ok() && length == 0) { return; }
    reader.skip(2);
    const ByteReader map = reader.slice(reader.position(), reader.remaining());
    reader.skip(1);
    const unsigned streamCount = reader.u8();

    std::vector<EpTableHeader> seenHeaders;
    m_isCutShort = !reader.ok();
    for (unsigned i = 0; i < streamCount && !m_isCutShort; ++i) {
        const EpTableHeader header = parseTableHeader(reader);
        // An EP stream without coarse entries has no entry points, so the place of its tables does not matter. Tables
        // that an earlier EP stream has too cannot change an answer.
        const bool isNeedless =
            header.coarseCount == 0 || std::ranges::find(seenHeaders, header) != seenHeaders.end();
        if (reader.ok() && isNeedless) { continue; }
        seenHeaders.push_back(header);
        if (!spend(header.coarseCount)) { return; }
        const EpTable table(map, header);
        m_isCutShort = !reader.ok() || !table.isWhole();
        if (!m_isCutShort) { m_tables.push_back(table); }
    }
}

// Returns false if the budget is spent.
bool EpMap::buildIndexes(StcSequence& sequence)
{
    std::vector<EpIndex>& indexes = sequence.indexes.emplace();
    for (const EpTable& table : m_tables) {
        if (!spend(table.coarseCount() + table.entryCount())) { return false; }
        EpIndex index;
        index.reserve(static_cast<std::size_t>(table.entryCount()));
        table.walk([&index, &sequence](const EpEntry& entry) {
            if (entry.packet >= sequence.firstPacket) { index.push_back(entry); }
        });
        if (!std::ranges::is_sorted(index, {}, &EpEntry::time)) {
            std::ranges::stable_sort(index, {}, &EpEntry::time);
        }
        if (!index.empty()) { indexes.push_back(std::move(index)); }
    }
    return true;
}

bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId, std::uint32_t& packet)
{
    const auto sequence = std::ranges::lower_bound(map.m_sequences, stcId, {}, &EpMap::StcSequence::stcId);
    if (sequence == map.m_sequences.end() || sequence->stcId != stcId) { return false; }
    if (!sequence->indexes && !map.buildIndexes(*sequence)) { return false; }
    for (const EpMap::EpIndex& index : *sequence->indexes) {
        if (!map.spend(1)) { return false; }
        auto found = std::ranges::upper_bound(index, time, {}, &EpEntry::time);
        if (found == (isStart ? index.begin() : index.end())) { continue; }
        if (isStart) {  // the first of those with the latest time
            found = std::ranges::lower_bound(index, std::prev(found)->time, {}, &EpEntry::time);
        }
        packet = found->packet;
        return true;
    }
    if (map.m_isCutShort || isStart) { return false; }
    packet = map.clip().sourcePacketCount;
    return true;
}

int computePlayItemSize(EpMap& map, std::uint32_t inTime, std::uint32_t outTime, std::uint8_t stcId,
                        std::uint64_t& size)
{
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    if (outTime < inTime || !findEntryPacket(map, inTime, true, stcId, start)) { return -1; }
    if (outTime == inTime) {
        size = 0;
        return 0;
    }
    if (!findEntryPacket(map, outTime, false, stcId, end) || end < start) { return -1; }
    const std::uint64_t fileSize = map.clip().streamFileSize;
    size = std::min(end * kSourcePacketSize, fileSize) - std::min(start * kSourcePacketSize, fileSize);
    return 0;
}

}  // namespace bdmeta
