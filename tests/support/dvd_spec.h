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

    [[nodiscard]] Bytes build() const;
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

    [[nodiscard]] Bytes build() const;
};

struct DvdSpec {
    VmgSpec vmg = {};
    std::map<unsigned, VtsSpec> titleSets = {{1, VtsSpec{}}};

    // VIDEO_TS with the IFO files.
    [[nodiscard]] DiscTree tree() const;
};

}  // namespace testsupport
