#include "tests/support/ifo_spec.h"

namespace testsupport {

namespace {

constexpr std::size_t kTableHeader = 8;
constexpr std::size_t kTitleEntry = 12;
constexpr std::size_t kPgcEntry = 8;
constexpr std::size_t kPgcHeader = 236;
constexpr std::size_t kCellEntry = 24;

std::uint8_t toBcd(unsigned value)
{
    return static_cast<std::uint8_t>(value / 10 << 4U | value % 10);
}

Bytes buildPgc(const PgcSpec& pgc)
{
    const std::size_t mapOffset = kPgcHeader;
    const std::size_t cellOffset = roundedUp(mapOffset + pgc.programMap.size(), 2);
    Bytes bytes(cellOffset + pgc.cells.size() * kCellEntry);
    putU8(bytes, 2, pgc.programCount.value_or(static_cast<std::uint8_t>(pgc.programMap.size())));
    putU8(bytes, 3, pgc.cellCount.value_or(static_cast<std::uint8_t>(pgc.cells.size())));
    putBytes(bytes, 4, Bytes(pgc.time.begin(), pgc.time.end()));
    putBe16(bytes, 230, pgc.programMapOffset.value_or(static_cast<std::uint16_t>(mapOffset)));
    putBe16(bytes, 232, pgc.cellPlaybackOffset.value_or(static_cast<std::uint16_t>(cellOffset)));
    putBytes(bytes, mapOffset, pgc.programMap);
    for (std::size_t i = 0; i < pgc.cells.size(); ++i) {
        const std::size_t entry = cellOffset + i * kCellEntry;
        putU8(bytes, entry, pgc.cells[i].blockBits);
        putBytes(bytes, entry + 4, Bytes(pgc.cells[i].time.begin(), pgc.cells[i].time.end()));
        putBe32(bytes, entry + 8, pgc.cells[i].firstSector);
        putBe32(bytes, entry + 20, pgc.cells[i].lastSector);
    }
    return bytes;
}

}  // namespace

PlaybackTime playbackTime(unsigned hours, unsigned minutes, unsigned seconds, unsigned frames, FrameRate rate)
{
    const auto rateBits = static_cast<std::uint8_t>(static_cast<unsigned>(rate) << 6U);
    return {toBcd(hours), toBcd(minutes), toBcd(seconds),
            static_cast<std::uint8_t>(rateBits | toBcd(frames))};
}

Bytes VmgSpec::build() const
{
    Bytes ifo(kDvdSector);
    putText(ifo, 0, magic);
    putText(ifo, 0x40, provider.substr(0, 32));
    putBe32(ifo, 0xC4, titleTableSector.value_or(1));

    const std::size_t tableSize = kTableHeader + titles.size() * kTitleEntry;
    putBe16(ifo, kDvdSector, declaredTitleCount.value_or(static_cast<std::uint16_t>(titles.size())));
    putBe32(ifo, kDvdSector + 4, endAddress.value_or(static_cast<std::uint32_t>(tableSize - 1)));
    std::size_t entry = kDvdSector + kTableHeader;
    for (const VmgTitleSpec& title : titles) {
        putU8(ifo, entry, title.playbackType);
        putU8(ifo, entry + 1, title.angles);
        putBe16(ifo, entry + 2, title.chapters);
        putU8(ifo, entry + 6, title.vtsn);
        putU8(ifo, entry + 7, title.vtsTtn);
        entry += kTitleEntry;
    }
    growTo(ifo, roundedUp(kDvdSector + tableSize, kDvdSector));
    return ifo;
}

Bytes VtsSpec::pttTable() const
{
    Bytes table;
    std::size_t list = kTableHeader + titles.size() * 4;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        putBe32(table, kTableHeader + i * 4, titles[i].pttOffset.value_or(static_cast<std::uint32_t>(list)));
        for (const PttSpec& ptt : titles[i].ptts) {
            putBe16(table, list, ptt.pgcn);
            putBe16(table, list + 2, ptt.pgn);
            list += 4;
        }
    }
    putBe16(table, 0, declaredTitleCount.value_or(static_cast<std::uint16_t>(titles.size())));
    putBe32(table, 4, pttEndAddress.value_or(static_cast<std::uint32_t>(list - 1)));
    return table;
}

std::size_t VtsSpec::pgcTableStart() const
{
    return kDvdSector + roundedUp(pttTable().size(), kDvdSector);
}

std::size_t VtsSpec::pgcStart(std::size_t pgcn) const
{
    std::size_t start = pgcTableStart() + kTableHeader + pgcs.size() * kPgcEntry;
    for (std::size_t i = 0; i + 1 < pgcn; ++i) {
        start += buildPgc(pgcs[i]).size();
    }
    return start;
}

Bytes VtsSpec::pgcTable() const
{
    Bytes table(kTableHeader + pgcs.size() * kPgcEntry);
    putBe16(table, 0, declaredPgcCount.value_or(static_cast<std::uint16_t>(pgcs.size())));
    for (std::size_t i = 0; i < pgcs.size(); ++i) {
        putBe32(table, kTableHeader + i * kPgcEntry + 4,
                pgcs[i].offset.value_or(static_cast<std::uint32_t>(table.size())));
        putBytes(table, table.size(), buildPgc(pgcs[i]));
    }
    putBe32(table, 4, static_cast<std::uint32_t>(table.size() - 1));
    return table;
}

void VtsSpec::putAttributes(Bytes& ifo) const
{
    putU8(ifo, 0x200, static_cast<std::uint8_t>(video.codingMode << 6U | video.system << 4U));
    putU8(ifo, 0x201, static_cast<std::uint8_t>(video.pictureSize << 2U));
    putBe16(ifo, 0x202, audioCount.value_or(static_cast<std::uint8_t>(audio.size())));
    for (std::size_t i = 0; i < audio.size(); ++i) {
        const AudioAttributesSpec& stream = audio[i];
        const std::size_t entry = 0x204 + i * 8;
        putU8(ifo, entry, static_cast<std::uint8_t>(stream.codingMode << 5U | stream.languageType << 2U));
        putU8(ifo, entry + 1, static_cast<std::uint8_t>(stream.sampleRate * 16U + stream.channels - 1U));
        putText(ifo, entry + 2, stream.language);
    }
    putBe16(ifo, 0x254, subpictureCount.value_or(static_cast<std::uint8_t>(subpicture.size())));
    for (std::size_t i = 0; i < subpicture.size(); ++i) {
        const SubpictureAttributesSpec& stream = subpicture[i];
        const std::size_t entry = 0x256 + i * 6;
        putU8(ifo, entry, static_cast<std::uint8_t>(stream.codingMode << 5U | stream.languageType));
        putText(ifo, entry + 2, stream.language);
    }
}

Bytes VtsSpec::build() const
{
    Bytes ifo(kDvdSector);
    putText(ifo, 0, magic);
    const std::size_t pgcTableOffset = pgcTableStart();
    putBe32(ifo, 0xC4, titleVobSector);
    putBe32(ifo, 0xC8, pttTableSector.value_or(1));
    putBe32(ifo, 0xCC, pgcTableSector.value_or(static_cast<std::uint32_t>(pgcTableOffset / kDvdSector)));
    putAttributes(ifo);
    putBytes(ifo, kDvdSector, pttTable());
    putBytes(ifo, pgcTableOffset, pgcTable());
    return ifo;
}

}  // namespace testsupport
