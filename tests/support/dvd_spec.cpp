#include "tests/support/dvd_spec.h"

namespace testsupport {

namespace {

constexpr std::size_t kTableHeader = 8;

void putAttributes(Bytes& ifo, const VtsSpec& vts)
{
    putBe(ifo, 0x200, vts.video.codingMode * 0x40U + vts.video.system * 0x10U, 1);
    putBe(ifo, 0x201, vts.video.pictureSize * 4U, 1);
    putBe(ifo, 0x202, vts.audio.size(), 2);
    std::size_t entry = 0x204;
    for (const AudioAttributesSpec& stream : vts.audio) {
        putBe(ifo, entry, stream.codingMode * 0x20U + stream.languageType * 4U, 1);
        putBe(ifo, entry + 1, stream.sampleRate * 16U + stream.channels - 1U, 1);
        putText(ifo, entry + 2, stream.language);
        entry += 8;
    }
    putBe(ifo, 0x254, vts.subpicture.size(), 2);
    entry = 0x256;
    for (const SubpictureAttributesSpec& stream : vts.subpicture) {
        putBe(ifo, entry, stream.codingMode * 0x20U + stream.languageType, 1);
        putText(ifo, entry + 2, stream.language);
        entry += 6;
    }
}

Bytes pttTable(const std::vector<std::vector<PttSpec>>& titles)
{
    Bytes table(kTableHeader + titles.size() * 4);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        putBe(table, kTableHeader + i * 4, table.size(), 4);
        for (const PttSpec& ptt : titles[i]) {
            putBe(table, table.size(), ptt.pgcn, 2);
            putBe(table, table.size(), ptt.pgn, 2);
        }
    }
    putBe(table, 0, titles.size(), 2);
    putBe(table, 4, table.size() - 1, 4);
    return table;
}

Bytes programChain(const PgcSpec& spec)
{
    constexpr std::size_t kHeader = 236;
    Bytes pgc(roundedUp(kHeader + spec.programMap.size(), 2));
    putBe(pgc, 2, spec.programMap.size(), 1);
    putBe(pgc, 3, spec.cells.size(), 1);
    putBytes(pgc, 4, {spec.time.begin(), spec.time.end()});
    putBe(pgc, 230, kHeader, 2);
    putBe(pgc, 232, pgc.size(), 2);
    putBytes(pgc, kHeader, spec.programMap);
    for (const CellSpec& cell : spec.cells) {
        const std::size_t entry = pgc.size();
        putBe(pgc, entry, cell.blockBits, 1);
        putBytes(pgc, entry + 4, {cell.time.begin(), cell.time.end()});
        putBe(pgc, entry + 8, cell.firstSector, 4);
        putBe(pgc, entry + 20, cell.lastSector, 4);
    }
    return pgc;
}

Bytes pgcTable(const std::vector<PgcSpec>& pgcs)
{
    Bytes table(kTableHeader + pgcs.size() * 8);
    for (std::size_t i = 0; i < pgcs.size(); ++i) {
        putBe(table, kTableHeader + i * 8 + 4, table.size(), 4);
        putBytes(table, table.size(), programChain(pgcs[i]));
    }
    putBe(table, 0, pgcs.size(), 2);
    putBe(table, 4, table.size() - 1, 4);
    return table;
}

}  // namespace

Bytes VmgSpec::build() const
{
    Bytes table(kTableHeader);
    for (const VmgTitleSpec& title : titles) {
        putBytes(table, table.size(), {title.playbackType, title.angles});
        putBe(table, table.size(), title.chapters, 2);
        putBytes(table, table.size(), {0, 0, title.vtsn, title.vtsTtn, 0, 0, 0, 0});
    }
    putBe(table, 0, titles.size(), 2);
    putBe(table, 4, table.size() - 1, 4);

    Bytes ifo(kDvdSector + roundedUp(table.size(), kDvdSector));
    putText(ifo, 0, "DVDVIDEO-VMG");
    putText(ifo, 0x40, provider);
    putBe(ifo, 0xC4, 1, 4);
    putBytes(ifo, kDvdSector, table);
    return ifo;
}

Bytes VtsSpec::build() const
{
    Bytes ifo(kDvdSector);
    putText(ifo, 0, "DVDVIDEO-VTS");
    putBe(ifo, 0xC4, titleVobSector, 4);
    putBe(ifo, 0xC8, 1, 4);
    putAttributes(ifo, *this);
    putBytes(ifo, kDvdSector, pttTable(titles));
    growTo(ifo, roundedUp(ifo.size(), kDvdSector));
    putBe(ifo, 0xCC, ifo.size() / kDvdSector, 4);
    putBytes(ifo, ifo.size(), pgcTable(pgcs));
    return ifo;
}

DiscTree DvdSpec::tree() const
{
    DiscTree tree;
    tree.add("VIDEO_TS/VIDEO_TS.IFO", vmg.build());
    for (const auto& [number, titleSet] : titleSets) {
        tree.add((number < 10 ? "VIDEO_TS/VTS_0" : "VIDEO_TS/VTS_") + std::to_string(number) + "_0.IFO",
                 titleSet.build());
    }
    return tree;
}

}  // namespace testsupport
