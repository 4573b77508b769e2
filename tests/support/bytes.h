// Bytes that a test builds: numbers and texts put at an offset or appended. The bytes grow with zeros to hold what is
// put into them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace testsupport {

using Bytes = std::vector<std::uint8_t>;

// The low `width` bytes of a number, little-endian or big-endian.
[[nodiscard]] inline Bytes leBytes(std::uint64_t value, std::size_t width)
{
    Bytes bytes(width);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(value);
        value >>= 8U;
    }
    return bytes;
}
[[nodiscard]] inline Bytes beBytes(std::uint64_t value, std::size_t width)
{
    Bytes bytes = leBytes(value, width);
    std::ranges::reverse(bytes);
    return bytes;
}

template <typename Content = Bytes>  // or a text
void append(Bytes& bytes, const Content& content)
{
    bytes.insert(bytes.end(), content.begin(), content.end());
}
// Appends big-endian numbers, each as its value and its width in bytes.
struct Be {
    std::uint64_t value;
    std::size_t width;
};
inline void appendBe(Bytes& bytes, std::initializer_list<Be> numbers)
{
    for (const Be& number : numbers) {
        append(bytes, beBytes(number.value, number.width));
    }
}

template <typename Content = Bytes>
void putBytes(Bytes& bytes, std::size_t offset, const Content& content)
{
    bytes.resize(std::max(bytes.size(), offset + content.size()));
    std::ranges::copy(content, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}
inline void putText(Bytes& bytes, std::size_t offset, std::string_view text)
{
    putBytes(bytes, offset, text);
}
inline void putBe(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    putBytes(bytes, offset, beBytes(value, width));
}
inline void putLe(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    putBytes(bytes, offset, leBytes(value, width));
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
