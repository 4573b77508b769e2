// Parsing of process ids.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

namespace etw_helper {

// Parses decimal digits. Returns 0 (never a valid id) on any other text.
[[nodiscard]] constexpr std::uint32_t processIdOf(std::wstring_view text)
{
    std::uint64_t value = 0;
    for (const wchar_t digit : text) {
        if (digit < L'0' || digit > L'9') { return 0; }
        value = value * 10 + static_cast<std::uint64_t>(digit - L'0');
        if (value > std::numeric_limits<std::uint32_t>::max()) { return 0; }
    }
    return static_cast<std::uint32_t>(value);
}

}  // namespace etw_helper
