#include "dvdmeta/title_set.h"

#include "dvdmeta/stream_attributes.h"

#include <algorithm>
#include <optional>

namespace dvdmeta {

using discio::ByteReader;
using discio::ErrorText;

namespace {

constexpr std::uint64_t kTitleVobSectorOffset = 0xC4;
constexpr std::uint64_t kTableHeaderSize = 8;
constexpr std::uint64_t kPttOffsetSize = 4;
constexpr std::uint64_t kPttSize = 4;
constexpr std::uint64_t kPgcEntrySize = 8;
constexpr std::uint64_t kPgcHeaderSize = 236;
constexpr std::uint64_t kCellPlaybackSize = 24;

// The addresses in the IFO's first sector, in bytes from the file's start.
struct TableAddresses {
    std::uint64_t titleVobSector = 0;
    std::uint64_t ptt = 0;
    std::uint64_t pgc = 0;
};

// A title's first chapter: which program of which program chain it starts in.
struct FirstPtt {
    std::uint16_t pgcNumber = 0;
    std::uint16_t programNumber = 0;
};

struct ProgramChain {
    std::uint64_t start = 0;  // of its header in the file
    std::uint8_t programCount = 0;
    std::uint8_t cellCount = 0;
    std::array<std::uint8_t, 4> playbackTime = {};
    std::uint16_t programMapOffset = 0;
    std::uint16_t cellPlaybackOffset = 0;
};

std::uint64_t fromBcd(std::uint8_t value)
{
    return (value >> 4U) * 10ULL + (value & 0x0FU);
}

std::optional<TableAddresses> parseTableAddresses(const IfoFile& ifo)
{
    ByteReader reader = ifo.at(kTitleVobSectorOffset, 12);
    TableAddresses tables;
    tables.titleVobSector = reader.be32();
    tables.ptt = reader.be32() * kSectorSize;
    tables.pgc = reader.be32() * kSectorSize;
    for (const std::uint64_t table : {tables.ptt, tables.pgc}) {
        if (table == 0 || ifo.sizeBehind(table) < kTableHeaderSize) { return std::nullopt; }
    }
    return tables;
}

// Finds the title's list of chapters and counts them.
int readPttTable(const IfoFile& ifo, std::uint64_t table, DvdTitle& title, std::uint64_t& listStart,
                 const ErrorText& error)
{
    const char* name = ifo.name().c_str();
    ByteReader header = ifo.at(table, kTableHeaderSize);
    const std::uint64_t titleCount = header.be16();
    header.skip(2);
    std::uint64_t endAddress = header.be32();
    // Deliberate: an end of 0 means the end of the offsets, so that the last title has no chapters.
    if (endAddress == 0) { endAddress = titleCount * kPttOffsetSize + 7; }

    const std::uint64_t entry = table + kTableHeaderSize + kPttOffsetSize * (title.vtsTtn - 1ULL);
    ByteReader own = ifo.at(entry, kPttOffsetSize);
    if (!header.ok() || title.vtsTtn == 0 || title.vtsTtn > titleCount ||
        endAddress + 1 > ifo.sizeBehind(table) || !own.ok()) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has invalid title PTT data"), {name});
    }
    const std::uint64_t begin = own.be32();
    std::uint64_t end = endAddress + 1;
    if (title.vtsTtn < titleCount) {
        ByteReader next = ifo.at(entry + kPttOffsetSize, kPttOffsetSize);
        end = next.be32();
        if (!next.ok()) {
            return error.fail(MESSAGE_NOOP("Messages", "cannot read PTT table in %1"), {name});
        }
    }
    if (begin > end || end > endAddress + 1 || (end - begin) % kPttSize != 0) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has malformed PTT offsets"), {name});
    }
    title.chapterCount = static_cast<std::uint32_t>((end - begin) / kPttSize);
    listStart = table + begin;
    return 0;
}

int readProgramChain(const IfoFile& ifo, std::uint64_t table, std::uint16_t pgcNumber, ProgramChain& pgc,
                     const ErrorText& error)
{
    ByteReader header = ifo.at(table, 2);
    const std::uint16_t pgcCount = header.be16();
    ByteReader entry = ifo.at(table + kTableHeaderSize + kPgcEntrySize * (pgcNumber - 1ULL), kPgcEntrySize);
    entry.skip(4);
    const std::uint64_t offset = entry.be32();
    if (!header.ok() || pgcNumber == 0 || pgcNumber > pgcCount || !entry.ok()) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has invalid PGC data"), {ifo.name()});
    }

    pgc.start = table + offset;
    ByteReader reader = ifo.at(pgc.start, kPgcHeaderSize);
    reader.skip(2);
    pgc.programCount = reader.u8();
    pgc.cellCount = reader.u8();
    std::ranges::copy(reader.bytes(pgc.playbackTime.size()), pgc.playbackTime.begin());
    reader.seek(230);
    pgc.programMapOffset = reader.be16();
    pgc.cellPlaybackOffset = reader.be16();
    if (!reader.ok()) {
        return error.fail(MESSAGE_NOOP("Messages", "cannot read title PGC in %1"), {ifo.name()});
    }
    return 0;
}

// Finds the first cell of the start program, counted from 1.
int readStartCell(const IfoFile& ifo, const ProgramChain& pgc, std::uint16_t startProgram,
                  std::uint8_t& startCell, const ErrorText& error)
{
    const std::uint64_t cellTable = pgc.start + pgc.cellPlaybackOffset;
    if (pgc.programMapOffset == 0 || pgc.cellPlaybackOffset == 0 ||
        ifo.sizeBehind(pgc.start + pgc.programMapOffset) == 0 || startProgram == 0 ||
        startProgram > pgc.programCount || ifo.sizeBehind(cellTable) < pgc.cellCount * kCellPlaybackSize) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has invalid cell playback data"), {ifo.name()});
    }
    ByteReader entry = ifo.at(pgc.start + pgc.programMapOffset + startProgram - 1ULL, 1);
    startCell = entry.u8();
    if (!entry.ok() || startCell == 0 || startCell > pgc.cellCount) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has an invalid title start program"), {ifo.name()});
    }
    return 0;
}

// Lists the cells of angle 1 from `startCell` to the last cell and adds up their sectors.
int readCells(const IfoFile& ifo, const ProgramChain& pgc, std::uint8_t startCell,
              std::uint64_t titleVobSector, DvdTitle& title, const ErrorText& error)
{
    std::uint64_t sectorCount = 0;
    std::uint64_t lowest = UINT32_MAX;
    std::uint64_t highest = 0;
    for (std::uint64_t cell = startCell; cell <= pgc.cellCount; ++cell) {
        ByteReader reader =
            ifo.at(pgc.start + pgc.cellPlaybackOffset + (cell - 1) * kCellPlaybackSize, kCellPlaybackSize);
        const std::uint8_t block = reader.u8();
        reader.seek(4);
        std::array<std::uint8_t, 4> time = {};
        std::ranges::copy(reader.bytes(time.size()), time.begin());
        const std::uint32_t first = reader.be32();
        reader.seek(20);
        const std::uint32_t last = reader.be32();
        if (!reader.ok()) {
            return error.fail(MESSAGE_NOOP("Messages", "cannot read cell playback data in %1"), {ifo.name()});
        }

        const bool inAngleBlock = (block & 0x30U) == 0x10;
        const bool isFirstOfBlock = block >> 6U == 1;
        if (inAngleBlock && !isFirstOfBlock) {
            title.complexAngle = 1;
        } else if (first <= last) {
            title.cells.push_back({playbackTimeMs(time), first, last});
            sectorCount += last - first + 1ULL;
            lowest = std::min<std::uint64_t>(lowest, first);
            highest = std::max<std::uint64_t>(highest, last);
        }
    }
    if (sectorCount > 0) {
        title.playbackSizeBytes = sectorCount * kSectorSize;
        title.firstSector = lowest + titleVobSector;
        title.lastSector = highest + titleVobSector;
    }
    return 0;
}

}  // namespace

std::uint64_t playbackTimeMs(const std::array<std::uint8_t, 4>& time)
{
    const std::uint64_t seconds = (fromBcd(time[0]) * 60 + fromBcd(time[1])) * 60 + fromBcd(time[2]);
    const std::uint64_t frames = fromBcd(time[3] & 0x3FU);
    switch (time[3] >> 6U) {
    case 1:
        return seconds * 1000 + frames * 40;
    case 3:
        return seconds * 1000 + frames * 100100 / 3000;
    default:
        return seconds * 1000;
    }
}

int readTitle(const IfoFile& ifo, DvdTitle& title, const ErrorText& error)
{
    const char* name = ifo.name().c_str();
    if (!isVtsIfo(ifo)) { return error.fail(MESSAGE_NOOP("Messages", "%1 is not a valid VTS IFO"), {name}); }
    const auto tables = parseTableAddresses(ifo);
    if (!tables) { return error.fail(MESSAGE_NOOP("Messages", "%1 has missing title tables"), {name}); }
    std::uint64_t pttList = 0;
    if (readPttTable(ifo, tables->ptt, title, pttList, error) != 0) { return -1; }
    auto streams = parseStreamAttributes(ifo);
    if (!streams) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has an invalid declared stream count"), {name});
    }
    title.streams = std::move(*streams);

    ByteReader ptt = ifo.at(pttList, kPttSize);
    FirstPtt first;
    first.pgcNumber = ptt.be16();
    first.programNumber = ptt.be16();
    if (!ptt.ok()) { return error.fail(MESSAGE_NOOP("Messages", "cannot read first PTT in %1"), {name}); }
    ProgramChain pgc;
    if (readProgramChain(ifo, tables->pgc, first.pgcNumber, pgc, error) != 0) { return -1; }

    title.programCount = pgc.programCount;
    title.cellCount = pgc.cellCount;
    title.durationMs = playbackTimeMs(pgc.playbackTime);
    if (pgc.cellCount == 0) { return 0; }
    std::uint8_t startCell = 0;
    if (readStartCell(ifo, pgc, first.programNumber, startCell, error) != 0) { return -1; }
    return readCells(ifo, pgc, startCell, tables->titleVobSector, title, error);
}

int readTitleSet(const IfoFile& ifo, std::uint32_t number, DvdDisc& disc, const ErrorText& error)
{
    if (disc.titleSets.size() >= kMaxTitleSets || number < 1 || number > kMaxTitleSets) {
        return error.fail(MESSAGE_NOOP("Messages", "DVD has invalid VTS metadata"));
    }
    if (!isVtsIfo(ifo)) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 is not a valid VTS IFO"), {ifo.name()});
    }
    auto streams = parseStreamAttributes(ifo);
    if (!streams) {
        return error.fail(MESSAGE_NOOP("Messages", "%1 has an invalid declared stream count"), {ifo.name()});
    }
    disc.titleSets.push_back({number, std::move(*streams)});
    return 0;
}

}  // namespace dvdmeta
