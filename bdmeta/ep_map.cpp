#include "bdmeta/ep_map.h"

#include <algorithm>

namespace bdmeta {

using discio::ByteReader;
using discio::ReadBudget;

namespace {

constexpr std::size_t kSequenceInfoAddressOffset = 8;
constexpr std::size_t kCpiAddressOffset = 16;
constexpr std::size_t kFineEntrySize = 4;

// A header, and behind it a transport packet of 188 bytes.
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

// The choice among a table's entries, by looking at each of them.
std::optional<std::uint32_t> walkFor(const EpTable& table, std::uint32_t time, bool isStart,
                                     std::uint32_t lowestPacket)
{
    std::optional<EpEntry> best;
    table.walk([&best, time, isStart, lowestPacket](const EpEntry& entry) {
        const bool isCandidate = entry.packet >= lowestPacket && (entry.time > time) != isStart;
        const bool isBetter = !best || (isStart ? entry.time > best->time : entry.time < best->time);
        if (isCandidate && isBetter) { best = entry; }
    });
    if (!best) { return std::nullopt; }
    return best->packet;
}

}  // namespace

EpMap::EpMap(const BlurayClip& clip, ReadBudget& budget)
    : m_clip(&clip)
    , m_budget(&budget)
{
    parseStcStarts();
    if (!m_stcStarts.empty()) { parseStreams(); }
}

// Deliberate: the section's length is not looked at here; the file's end is the bound.
void EpMap::parseStcStarts()
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
            const auto place = std::ranges::lower_bound(m_stcStarts, id, {}, &StcStart::stcId);
            const bool isKnown = place != m_stcStarts.end() && place->stcId == id;
            if (id > UINT8_MAX || isKnown) { continue; }  // the first sequence of an id counts
            m_stcStarts.insert(place, {static_cast<std::uint8_t>(id), packet});
        }
    }
}

void EpMap::parseStreams()
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

    std::vector<EpTableHeader> met;
    std::uint64_t indexableEntries = m_clip->rawData.size() / kFineEntrySize;
    m_isCutShort = !reader.ok();
    for (unsigned i = 0; i < streamCount && !m_isCutShort; ++i) {
        const EpTableHeader header = parseTableHeader(reader);
        // A stream without coarse entries has no entry points, so the place of its tables does not matter. The same
        // tables again answer nothing that they did not answer before.
        const bool isEmpty = header.coarseCount == 0;
        if (reader.ok() && (isEmpty || std::ranges::find(met, header) != met.end())) { continue; }
        met.push_back(header);
        if (!m_budget->spend(ReadBudget::Bound::LookUps, header.coarseCount)) { return; }
        const EpTable table(map, header);
        m_isCutShort = !reader.ok() || !table.isWhole();
        if (!m_isCutShort && table.entryCount() > 0) { addStream(table, indexableEntries); }
    }
}

void EpMap::addStream(const EpTable& table, std::uint64_t& indexableEntries)
{
    Stream& stream = m_streams.emplace_back(Stream{table, std::nullopt});
    if (table.entryCount() > indexableEntries) { return; }
    indexableEntries -= table.entryCount();
    std::vector<EpEntry> entries;
    entries.reserve(table.entryCount());
    table.walk([&entries](const EpEntry& entry) { entries.push_back(entry); });
    stream.index.emplace(std::move(entries));
}

bool findEntryPacket(EpMap& map, std::uint32_t time, bool isStart, std::uint8_t stcId, std::uint32_t& packet)
{
    const auto stc = std::ranges::lower_bound(map.m_stcStarts, stcId, {}, &EpMap::StcStart::stcId);
    if (stc == map.m_stcStarts.end() || stc->stcId != stcId) { return false; }
    for (const EpMap::Stream& stream : map.m_streams) {
        const std::uint64_t cost = stream.index ? kIndexLookupCost : stream.table.walkLength();
        if (!map.m_budget->spend(ReadBudget::Bound::LookUps, cost)) { return false; }
        const auto found = !stream.index ? walkFor(stream.table, time, isStart, stc->packet)
                           : isStart     ? stream.index->latestUpTo(time, stc->packet)
                                         : stream.index->earliestAfter(time, stc->packet);
        if (found) {
            packet = *found;
            return true;
        }
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
