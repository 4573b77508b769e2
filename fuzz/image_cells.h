// A disc image in few bytes, so that the fuzzer changes what matters: nearly all of one is zeros, and the first thing
// of UDF stands 512 KiB in.
//
//     0  size of the image in cells of 512 bytes, 2 bytes, little-endian; then, up to the end:
//     0  number of a cell, 2 bytes     2  what is in it, 512 bytes or what is left
#pragma once

#include "fuzz/scratch_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

inline constexpr std::size_t kCellSize = 512;

inline std::size_t le16At(std::span<const std::uint8_t> bytes, std::size_t offset)
{
    return bytes[offset] + std::size_t{256} * bytes[offset + 1];
}

inline void writeImage(std::span<const std::uint8_t> cells, const std::string& path)
{
    const ScratchFile image(path);
    const std::size_t count = cells.size() < 2 ? 0 : le16At(cells, 0);
    for (std::size_t at = 2; at + 2 < cells.size(); at += 2 + kCellSize) {
        const std::size_t cell = le16At(cells, at);
        if (cell >= count) { continue; }
        const auto content = cells.subspan(at + 2).first(std::min(kCellSize, cells.size() - at - 2));
        image.write(cell * kCellSize, content);
    }
    image.resize(count * kCellSize);
}

inline std::vector<std::uint8_t> cellsOf(std::span<const std::uint8_t> image)
{
    std::vector<std::uint8_t> cells;
    const auto put = [&cells](std::size_t number) {
        cells.push_back(static_cast<std::uint8_t>(number));
        cells.push_back(static_cast<std::uint8_t>(number / 256));
    };
    put(image.size() / kCellSize);
    for (std::size_t offset = 0; offset + kCellSize <= image.size(); offset += kCellSize) {
        const auto content = image.subspan(offset, kCellSize);
        if (std::ranges::all_of(content, [](std::uint8_t byte) { return byte == 0; })) { continue; }
        put(offset / kCellSize);
        cells.insert(cells.end(), content.begin(), content.end());
    }
    return cells;
}

}  // namespace fuzz
