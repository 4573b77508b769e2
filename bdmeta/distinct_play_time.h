// The play time of a playlist without repetitions: a menu's loop plays one short clip hundreds of times and can be
// longer than the film.
#pragma once

#include "bdmeta/bluray_disc.h"

#include <cstdint>

namespace bdmeta {

// Returns the play time in milliseconds with each stretch of a clip counted once: the union of the PlayItems' IN to OUT
// ranges, per clip and STC sequence of angle 1. A PlayItem whose OUT is not after its IN counts nothing.
[[nodiscard]] std::uint64_t distinctPlayTimeMs(const BlurayPlaylist& playlist);

}  // namespace bdmeta
