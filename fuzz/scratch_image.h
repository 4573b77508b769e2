// Disc images in few bytes, so that the fuzzer changes what matters.
#pragma once

#include "fuzz/target.h"
#include "tests/support/sparse_image.h"
#include "tests/support/temporary_folder.h"

namespace fuzz {

inline constexpr std::size_t kCellSize = 512;

inline std::size_t le16(Input bytes, std::size_t offset)
{
    return bytes[offset] + std::size_t{256} * bytes[offset + 1];
}

// Writes a disc image; nearly all of one is zeros. Its input: 2 bytes for its size in cells, little-endian; then, for
// one cell after the other, 2 bytes for its number, and its 512 bytes or what is left. Returns the image's path.
inline const char* writeImage(Input input)
{
    static const testsupport::TemporaryFolder folder;
    static const std::string path = folder / "image";
    const std::size_t count = input.size() < 2 ? 0 : le16(input, 0);
    testsupport::SparseImage image;
    for (std::size_t at = 2; at + 2 < input.size(); at += 2 + kCellSize) {
        const std::size_t cell = le16(input, at);
        const Input bytes = input.subspan(at + 2, std::min(kCellSize, input.size() - at - 2));
        if (cell < count) { image.put(cell * kCellSize, {bytes.begin(), bytes.end()}); }
    }
    image.writeTo(path, count * kCellSize);
    return path.c_str();
}

}  // namespace fuzz
