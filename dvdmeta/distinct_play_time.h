// How much a title plays when nothing counts twice: a program chain may list one cell many times.
#pragma once

#include "dvdmeta/dvd_disc.h"

#include <cstdint>
#include <span>

namespace dvdmeta {

// Returns the play time of the cells in milliseconds. Cells of one range of sectors count once.
[[nodiscard]] std::uint64_t distinctPlayTimeMs(std::span<const DvdCell> cells);

}  // namespace dvdmeta
