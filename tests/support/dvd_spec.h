// The navigation files of a DVD-Video, built by field: VIDEO_TS.IFO and the title sets' VTS_nn_0.IFO. Counts, offsets
// and end addresses follow from the fields; a test that wants a wrong one patches the built bytes.
#pragma once

#include "tests/support/disc_tree.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

inline constexpr std::size_t kDvdSector = 2048;

// Appends a table: the number of entries, the address of the last byte, the entries' offsets and the entries, each as
// `bytesOf` gives it. The offsets end fields of `pointerSize` bytes each; 0: there are none.
template <typename Entry>
void appendTable(Bytes& ifo, std::size_t pointerSize, const std::vector<Entry>& entries, auto bytesOf)
{
    Bytes table(8 + pointerSize * entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (pointerSize > 0) { putBe(table, 4 + pointerSize * (i + 1), table.size(), 4); }
        append(table, bytesOf(entries[i]));
    }
    append(ifo, patched(table, {{0, 2, entries.size()}, {4, 4, table.size() - 1}}));
}

// An entry of the title table (TT_SRPT).
struct VmgTitleSpec {
    std::uint8_t playbackType = 0x3C;  // 0x40: several or random PGCs
    std::uint8_t angles = 1;
    std::uint16_t chapters = 1;
    std::uint8_t vtsn = 1;
    std::uint8_t vtsTtn = 1;
};

// VIDEO_TS.IFO, in whole sectors: the header, then the title table.
struct VmgSpec {
    std::string provider = {};  // padded with zeros to 32 bytes
    std::vector<VmgTitleSpec> titles = {VmgTitleSpec{}};

    [[nodiscard]] Bytes build() const
    {
        Bytes ifo(kDvdSector);
        putText(ifo, 0, "DVDVIDEO-VMG");
        putText(ifo, 0x40, provider);
        putBe(ifo, 0xC4, 1, 4);
        appendTable(ifo, 0, titles, [](const VmgTitleSpec& title) {
            const auto [type, angles, chapters, vtsn, vtsTtn] = title;
            return patched(Bytes(12),
                           {{0, 1, type}, {1, 1, angles}, {2, 2, chapters}, {6, 1, vtsn}, {7, 1, vtsTtn}});
        });
        ifo.resize(roundedUp(ifo.size(), kDvdSector));
        return ifo;
    }
};

struct VideoAttributesSpec {
    std::uint8_t codingMode = 1;   // 0 MPEG-1, 1 MPEG-2
    std::uint8_t system = 1;       // 0 NTSC, 1 PAL
    std::uint8_t pictureSize = 0;  // 0 720, 1 704, 2 352 wide, 3 352 wide and of half height
};
struct AudioAttributesSpec {
    std::uint8_t codingMode = 0;    // 0 AC-3, 2 MPEG-1, 3 MPEG-2 ext, 4 LPCM, 5 SDDS, 6 DTS
    std::uint8_t languageType = 1;  // 1: the language is given
    std::uint8_t sampleRate = 0;
    std::uint8_t channels = 2;
    std::string language = "en";
};
struct SubpictureAttributesSpec {
    std::uint8_t codingMode = 0;
    std::uint8_t languageType = 1;
    std::string language = "en";
};

// A chapter: the program of a program chain that it starts with.
struct PttSpec {
    std::uint16_t pgcn = 1;
    std::uint16_t pgn = 1;
};

struct CellSpec {
    std::uint32_t firstSector = 0;
    std::uint32_t lastSector = 0;
    // Top two bits: 1 first, 2 middle, 3 last cell of a block; 0x10: the block is one of angles.
    std::uint8_t blockBits = 0;
    std::array<std::uint8_t, 4> time = {};  // as that of a program chain
};

struct PgcSpec {
    // BCD hours, minutes, seconds and frames; the frames' top bits are the rate: 0x40 PAL, 0xC0 NTSC.
    std::array<std::uint8_t, 4> time = {0, 0x01, 0, 0x40};
    Bytes programMap = {1};  // each program's first cell, from 1
    std::vector<CellSpec> cells = {CellSpec{0, 99}};

    [[nodiscard]] Bytes build() const
    {
        const std::size_t cellTable = roundedUp(236 + programMap.size(), 2);
        Bytes pgc =
            patched(Bytes(cellTable),
                    {{2, 1, programMap.size()}, {3, 1, cells.size()}, {230, 2, 236}, {232, 2, cellTable}});
        putBytes(pgc, 4, time);
        putBytes(pgc, 236, programMap);
        for (const CellSpec& cell : cells) {
            appendBe(pgc, {{cell.blockBits, 1}, {0, 3}});
            append(pgc, cell.time);
            appendBe(pgc, {{cell.firstSector, 4}, {0, 8}, {cell.lastSector, 4}});
        }
        return pgc;
    }
};

// VTS_nn_0.IFO: the header, the PTT search table and the PGC table, each from a sector's start. The file ends with the
// PGC table's last byte.
struct VtsSpec {
    std::uint32_t titleVobSector = 0;
    VideoAttributesSpec video = {};
    std::vector<AudioAttributesSpec> audio = {};
    std::vector<SubpictureAttributesSpec> subpicture = {};
    std::vector<std::vector<PttSpec>> titles = {{PttSpec{}}};  // each title's chapters
    std::vector<PgcSpec> pgcs = {PgcSpec{}};

    [[nodiscard]] Bytes build() const
    {
        Bytes ifo(kDvdSector);
        putText(ifo, 0, "DVDVIDEO-VTS");
        putBe(ifo, 0xC4, titleVobSector, 4);
        putBe(ifo, 0xC8, 1, 4);
        putAttributes(ifo);
        appendTable(ifo, 4, titles, [](const std::vector<PttSpec>& title) {
            Bytes chapters;
            for (const PttSpec& ptt : title) {
                appendBe(chapters, {{ptt.pgcn, 2}, {ptt.pgn, 2}});
            }
            return chapters;
        });
        ifo.resize(roundedUp(ifo.size(), kDvdSector));
        putBe(ifo, 0xCC, ifo.size() / kDvdSector, 4);
        appendTable(ifo, 8, pgcs, [](const PgcSpec& pgc) { return pgc.build(); });
        return ifo;
    }

private:
    void putAttributes(Bytes& ifo) const
    {
        putBe(ifo, 0x200, video.codingMode * 0x40U + video.system * 0x10U, 1);
        putBe(ifo, 0x201, video.pictureSize * 4U, 1);
        putBe(ifo, 0x202, audio.size(), 2);
        for (std::size_t i = 0; i < audio.size(); ++i) {
            putBe(ifo, 0x204 + 8 * i, audio[i].codingMode * 0x20U + audio[i].languageType * 4U, 1);
            putBe(ifo, 0x205 + 8 * i, audio[i].sampleRate * 16U + audio[i].channels - 1U, 1);
            putText(ifo, 0x206 + 8 * i, audio[i].language);
        }
        putBe(ifo, 0x254, subpicture.size(), 2);
        for (std::size_t i = 0; i < subpicture.size(); ++i) {
            putBe(ifo, 0x256 + 6 * i, subpicture[i].codingMode * 0x20U + subpicture[i].languageType, 1);
            putText(ifo, 0x258 + 6 * i, subpicture[i].language);
        }
    }
};

struct DvdSpec {
    VmgSpec vmg = {};
    std::map<unsigned, VtsSpec> titleSets = {{1, VtsSpec{}}};

    // VIDEO_TS with the IFO files.
    [[nodiscard]] DiscTree tree() const
    {
        DiscTree tree;
        tree.add("VIDEO_TS/VIDEO_TS.IFO", vmg.build());
        for (const auto& [number, titleSet] : titleSets) {
            tree.add((number < 10 ? "VIDEO_TS/VTS_0" : "VIDEO_TS/VTS_") + std::to_string(number) + "_0.IFO",
                     titleSet.build());
        }
        return tree;
    }
};

}  // namespace testsupport
