// Texts and names as they stand in fixed fields and directories of a disc.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace discio {

// The text of a fixed field: up to its first NUL, with the blanks that pad it removed from the end.
[[nodiscard]] std::string fixedFieldText(std::span<const std::uint8_t> field);

// The name with its 26 ASCII letters in lower case, whatever the locale: names that are equal ignoring case have the
// same.
[[nodiscard]] std::string caseFolded(std::string_view name);

// Whether two names are the same but for the case of the 26 ASCII letters.
[[nodiscard]] bool equalIgnoringCase(std::string_view left, std::string_view right);

}  // namespace discio
