// Blu-ray discs to measure on: many playlists over few clips, as discs that hide their film among decoys
// have.
#pragma once

#include "tests/support/disc_tree.h"

#include <cstdint>

namespace bench {

struct DiscShape {
    std::uint32_t playlistCount = 0;
    std::uint32_t playItemsPerPlaylist = 0;
    std::uint32_t clipCount = 0;
    std::uint32_t entryPointsPerClip = 0;
};

inline constexpr DiscShape kDecoyDisc = {1500, 100, 500, 5000};
inline constexpr DiscShape kOrdinaryDisc = {60, 10, 40, 5000};

// The disc's files. PlayItems carry 1 video, 4 audio and 8 subtitle streams; stream files hold one byte.
[[nodiscard]] testsupport::DiscTree buildDisc(const DiscShape& shape);

// The bytes of its playlists and clip information files.
[[nodiscard]] std::uint64_t navigationBytes(const std::string& directory);

}  // namespace bench
