// A title set's IFO ("VTS_%02u_0.IFO"): a title's chapters, program chain, duration and angle-1 size, and the
// streams that all titles of the set share.
//
//     0x000  "DVDVIDEO-VTS"
//     0x0C4  first sector of the title VOBs
//     0x0C8  sector of the PTT search table    u16 titles, u32 end address at 4, then a u32 offset
//                                              for each title; there 4 bytes for each chapter: u16 PGC,
//                                              u16 program
//     0x0CC  sector of the PGC table           u16 PGCs, then 8 bytes each: u32 category, u32 offset
//                                              of the PGC
//
// Program chain (PGC), 236 bytes and its tables:
//
//     2  programs    3  cells    4  playback time, BCD h m s f; the top two bits of f are the frame rate
//   230  offset of the program map (a byte for each program: its first cell)
//   232  offset of the cell playback table, 24 bytes a cell: byte 0 angle block bits, 4 playback time,
//        8 first sector, 20 last
//
// Sectors are 2,048 bytes; sector numbers, offsets and counts are big-endian.
#pragma once

#include "discio/error_text.h"
#include "dvdmeta/dvd_disc.h"
#include "dvdmeta/ifo_file.h"

#include <array>
#include <cstdint>

namespace dvdmeta {

// Fills the fields of `title` that come from its title set; `title.vtsTtn` must be set. Returns 0, or -1 with a
// message that names the file.
[[nodiscard]] int readTitle(const IfoFile& ifo, DvdTitle& title, const discio::ErrorText& error);

// Appends title set `number` (1 to 99) with its streams to the disc. Returns 0, or -1 with a message.
[[nodiscard]] int readTitleSet(const IfoFile& ifo, std::uint32_t number, DvdDisc& disc,
                               const discio::ErrorText& error);

// Returns a playback time in milliseconds. `time` has BCD hours, minutes, seconds and frames; the frames' top two
// bits are the rate code (1: 25 frames a second; 3: 29.97; any other adds no frames). A digit above 9 has its
// hexadecimal value.
[[nodiscard]] std::uint64_t playbackTimeMs(const std::array<std::uint8_t, 4>& time);

}  // namespace dvdmeta
