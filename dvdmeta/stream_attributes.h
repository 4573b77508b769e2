// The stream attributes of a title set, in the VTS IFO's first sector:
//
//     0x200  video attributes, 2 bytes: coding mode (top 2 bits), system (0x30 of byte 0), picture size
//            (0x0C of byte 1)
//     0x203  number of audio streams (low byte), 0x204: 8 entries of 8 bytes
//     0x255  number of subpicture streams (low byte), 0x256: 32 entries of 6 bytes
//
// An audio entry: byte 0 coding mode (top 3 bits) and language type (0x0C), byte 1 sample rate code (bits
// 5-4) and channels minus one (low 3 bits), bytes 2-3 the language. A subpicture entry: byte 0 coding mode
// (top 3 bits) and language type (low 2 bits), bytes 2-3 the language.
#pragma once

#include "dvdmeta/dvd_disc.h"
#include "dvdmeta/ifo_file.h"

#include <optional>

namespace dvdmeta {

// The size of the shortest VTS IFO, which has the attributes and the addresses of the tables.
inline constexpr std::uint64_t kVtsIfoMinimum = 984;
inline constexpr std::string_view kVtsMagic = "DVDVIDEO-VTS";

// Returns true if the first kVtsIfoMinimum bytes can be read and begin with kVtsMagic.
[[nodiscard]] bool isVtsIfo(const IfoFile& ifo);

// Returns the declared streams of a VTS IFO; nothing if it declares more than 8 audio or 32 subpicture streams.
[[nodiscard]] std::optional<DvdStreamAttributes> parseStreamAttributes(const IfoFile& ifo);

}  // namespace dvdmeta
