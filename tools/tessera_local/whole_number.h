#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace tessera_local {

// All of `text` as a decimal number. Returns nothing if it is not one or does not fit.
template <typename Number>
std::optional<Number> wholeNumber(std::string_view text)
{
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

}  // namespace tessera_local
