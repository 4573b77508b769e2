// Sectors, tags and fields of UDF descriptors.
#pragma once

#include "discio/byte_reader.h"
#include "discio/disc_image.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace discio {

inline constexpr std::size_t kUdfSectorSize = 2048;

// The most partition descriptors, and the most partition maps, that are read of a volume.
inline constexpr std::size_t kUdfPartitionLimit = 16;

using UdfSector = std::array<std::uint8_t, kUdfSectorSize>;

// Returns the little-endian field of `width` bytes, at most 4; 0 if the bytes end before its end.
[[nodiscard]] inline std::uint32_t udfField(std::span<const std::uint8_t> bytes, std::size_t offset,
                                            std::size_t width)
{
    const auto field = ByteReader(bytes).slice(offset, width).bytes(width);
    std::uint32_t value = 0;
    for (std::size_t i = field.size(); i > 0; --i) {
        value = (value << 8U) | field[i - 1];
    }
    return value;
}

// Returns whether the descriptor's tag has this identifier.
[[nodiscard]] inline bool hasUdfTag(std::span<const std::uint8_t> descriptor, std::uint16_t identifier)
{
    return udfField(descriptor, 0, 2) == identifier;
}

// Reads the sector at a byte offset. Returns false if the image does not hold all of it.
[[nodiscard]] inline bool readUdfSector(const DiscImage& image, std::uint64_t offset, UdfSector& sector)
{
    return readImage(image, offset, sector) == sector.size();
}

}  // namespace discio
