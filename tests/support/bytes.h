// Bytes that a test builds: numbers and texts written at given offsets, the bytes growing with zeros to hold
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace testsupport {

using Bytes = std::vector<std::uint8_t>;

inline void growTo(Bytes& bytes, std::size_t size)
{
    if (bytes.size() < size) { bytes.resize(size); }
}

inline void putBytes(Bytes& bytes, std::size_t offset, const Bytes& content)
{
    growTo(bytes, offset + content.size());
    for (std::size_t i = 0; i < content.size(); ++i) {
        bytes[offset + i] = content[i];
    }
}

inline void putText(Bytes& bytes, std::size_t offset, std::string_view text)
{
    putBytes(bytes, offset, Bytes(text.begin(), text.end()));
}

inline void putBe(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    growTo(bytes, offset + width);
    for (std::size_t i = 0; i < width; ++i) {
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * (width - 1 - i)));
    }
}

inline void putLe(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    growTo(bytes, offset + width);
    for (std::size_t i = 0; i < width; ++i) {
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

inline void putU8(Bytes& bytes, std::size_t offset, std::uint8_t value)
{
    putBe(bytes, offset, value, 1);
}

inline void putBe16(Bytes& bytes, std::size_t offset, std::uint16_t value)
{
    putBe(bytes, offset, value, 2);
}

inline void putBe32(Bytes& bytes, std::size_t offset, std::uint32_t value)
{
    putBe(bytes, offset, value, 4);
}

// The next multiple of `unit`.
[[nodiscard]] constexpr std::size_t roundedUp(std::size_t size, std::size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

// A change of built bytes: a big-endian number in `width` bytes at `offset`, at their end or behind it too.
struct Patch {
    std::size_t offset = 0;
    std::size_t width = 0;
    std::uint64_t value = 0;
};

[[nodiscard]] inline Bytes patched(Bytes bytes, const std::vector<Patch>& patches)
{
    for (const Patch& patch : patches) {
        putBe(bytes, patch.offset, patch.value, patch.width);
    }
    return bytes;
}

}  // namespace testsupport
