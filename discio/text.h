// Texts of fixed fields and names of directories on a disc.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace discio {

// Returns the text of a fixed field: up to its first NUL, without blanks at the end.
[[nodiscard]] std::string fixedFieldText(std::span<const std::uint8_t> field);

// Returns the name with its 26 ASCII letters in lower case, in any locale.
[[nodiscard]] std::string caseFolded(std::string_view name);

// Returns whether two names are equal except for the case of the 26 ASCII letters.
[[nodiscard]] bool equalIgnoringCase(std::string_view left, std::string_view right);

}  // namespace discio
