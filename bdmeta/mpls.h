// Playlist files, BDMV/PLAYLIST/*.mpls; all numbers are big-endian:
//
//      0  "MPLS", 4 version                        40  AppInfoPlayList(): u32 length, 45 playback type,
//      8  address of PlayList()                        56 flags
//     12  address of PlayListMark()
//
// PlayList():     6 number of PlayItems, 8 number of SubPaths, 10 the PlayItems
// PlayListMark(): 4 number of marks, 6 the marks, 14 bytes each: 1 type, 2 PlayItem, 4 time stamp,
//                 8 entry PID, 10 duration
//
// PlayItem():
//      0  length after this field                  14  IN time, 18 OUT time, 45 kHz ticks
//      2  clip name, 7 codec identifier            30  bit 7: random access
//     12  bit 4: several angles; low 4 bits:       31  still mode, 32 still time
//         connection condition                     34  several angles only: their number, 36 the further ones
//     13  STC identifier                               (name, codec identifier, STC identifier:
//                                                      10 bytes each)
//         then the stream table of stn_table.h
#pragma once

#include "bdmeta/bluray_disc.h"
#include "bdmeta/stn_table.h"

#include <optional>
#include <span>

namespace bdmeta {

// Parses a playlist file. Empty if it is malformed, or the disc's `tables` exceed their budget. The caller sets the
// name and the raw data.
[[nodiscard]] std::optional<BlurayPlaylist> parsePlaylistBytes(std::span<const std::uint8_t> bytes,
                                                               StreamTables& tables);

}  // namespace bdmeta
