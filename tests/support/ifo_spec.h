// The navigation files of a DVD-Video, built by field: VIDEO_TS.IFO and a title set's VTS_nn_0.IFO. Lengths,
// offsets and end addresses follow from what a specification holds; an optional field, where set, stands in
// the file in place of the right value, so that a test shows only the lie it tells.
#pragma once

#include "tests/support/bytes.h"

#include <array>
#include <optional>
#include <string>

namespace testsupport {

inline constexpr std::size_t kDvdSector = 2048;

// --- VIDEO_TS.IFO

// An entry of the title table (TT_SRPT).
struct VmgTitleSpec {
    std::uint8_t playbackType = 0x3C;  // 0x40: several or random PGCs
    std::uint8_t angles = 1;
    std::uint16_t chapters = 1;
    std::uint8_t vtsn = 1;
    std::uint8_t vtsTtn = 1;
};

struct VmgSpec {
    std::string magic = "DVDVIDEO-VMG";
    std::string provider = {};  // padded with zeros to 32 bytes
    std::vector<VmgTitleSpec> titles = {VmgTitleSpec{}};

    std::optional<std::uint16_t> declaredTitleCount = std::nullopt;
    std::optional<std::uint32_t> endAddress = std::nullopt;
    std::optional<std::uint32_t> titleTableSector = std::nullopt;

    // Whole sectors: the header, then the title table.
    [[nodiscard]] Bytes build() const;
};

// --- VTS_nn_0.IFO

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

// A chapter: where in which program chain it starts.
struct PttSpec {
    std::uint16_t pgcn = 1;
    std::uint16_t pgn = 1;
};

struct VtsTitleSpec {
    std::vector<PttSpec> ptts = {PttSpec{}};
    std::optional<std::uint32_t> pttOffset = std::nullopt;
};

using PlaybackTime = std::array<std::uint8_t, 4>;

struct CellSpec {
    std::uint32_t firstSector = 0;
    std::uint32_t lastSector = 0;
    // Top two bits: 1 first, 2 middle, 3 last cell of a block; 0x10: the block is one of angles.
    std::uint8_t blockBits = 0;
    PlaybackTime time = {};
};

enum class FrameRate : std::uint8_t { None = 0, Pal = 1, Ntsc = 3 };

// BCD hours, minutes, seconds and frames, the frame rate in the last byte's top bits.
[[nodiscard]] PlaybackTime playbackTime(unsigned hours, unsigned minutes, unsigned seconds,
                                        unsigned frames = 0, FrameRate rate = FrameRate::Pal);

struct PgcSpec {
    PlaybackTime time = playbackTime(0, 1, 0);
    std::vector<std::uint8_t> programMap = {1};  // each program's first cell, from 1
    std::vector<CellSpec> cells = {CellSpec{0, 99}};

    std::optional<std::uint8_t> programCount = std::nullopt;
    std::optional<std::uint8_t> cellCount = std::nullopt;
    std::optional<std::uint16_t> programMapOffset = std::nullopt;
    std::optional<std::uint16_t> cellPlaybackOffset = std::nullopt;
    std::optional<std::uint32_t> offset = std::nullopt;  // in the PGC table
};

struct VtsSpec {
    std::string magic = "DVDVIDEO-VTS";
    std::uint32_t titleVobSector = 0;
    VideoAttributesSpec video = {};
    std::vector<AudioAttributesSpec> audio = {};
    std::vector<SubpictureAttributesSpec> subpicture = {};
    std::vector<VtsTitleSpec> titles = {VtsTitleSpec{}};
    std::vector<PgcSpec> pgcs = {PgcSpec{}};

    std::optional<std::uint8_t> audioCount = std::nullopt;
    std::optional<std::uint8_t> subpictureCount = std::nullopt;
    std::optional<std::uint32_t> pttTableSector = std::nullopt;
    std::optional<std::uint32_t> pgcTableSector = std::nullopt;
    std::optional<std::uint16_t> declaredTitleCount = std::nullopt;
    std::optional<std::uint32_t> pttEndAddress = std::nullopt;
    std::optional<std::uint16_t> declaredPgcCount = std::nullopt;

    // The header, the PTT search table and the PGC table, each from a sector's start. The file ends with the
    // last byte of the PGC table.
    [[nodiscard]] Bytes build() const;

    // Where the PGC table begins, and in it a program chain (from 1); for tests that cut or patch the file.
    [[nodiscard]] std::size_t pgcTableStart() const;
    [[nodiscard]] std::size_t pgcStart(std::size_t pgcn) const;

private:
    [[nodiscard]] Bytes pttTable() const;
    [[nodiscard]] Bytes pgcTable() const;
    void putAttributes(Bytes& ifo) const;
};

}  // namespace testsupport
