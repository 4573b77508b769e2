// Clip information files, BDMV/CLIPINF/*.clpi; all numbers are big-endian:
//
//      0  "HDMV", 4 version                        46  clip stream type, 47 application type
//      8  address of SequenceInfo()                52  TS recording rate, 56 number of source packets
//     12  address of ProgramInfo()
//     16  address of CPI(), see ep_map.h
//
// ProgramInfo():  0 length after this field, 5 number of programs, 6 the programs
//     program:    6 number of streams, 8 the streams: u16 PID, StreamCodingInfo() (a length byte and the
//                 body of stream_attributes.h)
//
// SequenceInfo(): 0 length after this field, 5 number of ATC sequences, 6 the ATC sequences
//     ATC:        0 SPN_ATC_start, 4 number of STC sequences, 5 offset_STC_id, 6 the STC sequences
//     STC:        0 PCR PID, 2 SPN_STC_start, 6 presentation start, 10 presentation end, 45 kHz ticks
#pragma once

#include "bdmeta/bluray_disc.h"

#include <optional>
#include <span>

namespace bdmeta {

// Parses a clip information file without its EP map. Empty if the file is malformed. Of a malformed SequenceInfo() the
// complete STC sequences count. The caller sets the name, the raw data and the stream file's size.
[[nodiscard]] std::optional<BlurayClip> parseClipInfoBytes(std::span<const std::uint8_t> bytes);

}  // namespace bdmeta
