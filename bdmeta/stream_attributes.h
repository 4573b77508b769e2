// The attributes of an elementary stream in a PlayItem's stream table (stream_attributes) and in clip information
// (StreamCodingInfo). The body, after its length byte:
//
//     0  stream_coding_type
//     1  video: format (high 4 bits), frame rate (low 4 bits)      HEVC: 2-3 dynamic range and colour space
//        audio: channel layout (high), sample rate (low)           2-4 language
//        graphics: 1-3 language
//        text subtitle: character code                             2-4 language
#pragma once

#include "bdmeta/bluray_disc.h"

#include <span>

namespace bdmeta {

// Fills `stream` from the body of its attributes. A body that is too short for its kind sets only the PID, the coding
// type and its name; an empty body only the PID. Clip information (`fromClipInfo`) has another layout for HEVC.
void decodeStreamAttributes(BlurayStream& stream, std::uint16_t pid, std::span<const std::uint8_t> attributes,
                            bool fromClipInfo);

}  // namespace bdmeta
