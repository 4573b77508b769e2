// Texts in fixed fields of the navigation files.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "discio/byte_reader.h"

#include <algorithm>

namespace bdmeta {

// Takes the next `Capacity` bytes as a text, which ends at its first NUL; empty if fewer remain.
template <std::size_t Capacity>
[[nodiscard]] FixedText<Capacity> readText(discio::ByteReader& reader)
{
    std::array<char, Capacity> text = {};
    std::ranges::transform(reader.bytes(Capacity), text.begin(),
                           [](std::uint8_t byte) { return static_cast<char>(byte); });
    return FixedText<Capacity>(std::string_view(text.data(), text.size()));
}

}  // namespace bdmeta
