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

// The shortest VTS IFO: the attributes and the tables' addresses must fit.
inline constexpr std::uint64_t kVtsIfoMinimum = 984;
inline constexpr std::string_view kVtsMagic = "DVDVIDEO-VTS";

// Whether the file is long enough, can be read that far and begins as a title set's IFO does.
[[nodiscard]] bool isVtsIfo(const IfoFile& ifo);

// The declared streams of a VTS IFO; empty where more than 8 audio or 32 subpicture streams are declared.
[[nodiscard]] std::optional<DvdStreamAttributes> parseStreamAttributes(const IfoFile& ifo);

}  // namespace dvdmeta
