// The attributes of an elementary stream, as a PlayItem's stream table (stream_attributes) and clip
// information (StreamCodingInfo) give them. The body, behind its length byte:
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

// Fills `stream` from the body of its attributes. A body too short for its kind gives the PID, the coding
// type and its name only; an empty one the PID alone. Clip information (`fromClipInfo`) lays HEVC out
// differently.
void decodeStreamAttributes(BlurayStream& stream, std::uint16_t pid, std::span<const std::uint8_t> attributes,
                            bool fromClipInfo);

}  // namespace bdmeta
