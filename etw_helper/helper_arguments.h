// The helper's command line:
//
//   --pipe NAME --root DIRECTORY --stop-event NAME --parent-pid NUMBER
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace etw_helper {

struct HelperArguments {
    std::string pipe;       // UTF-8, without \\.\pipe\ before it
    std::wstring root;      // with a drive letter: C:\Discs\Film
    std::string stopEvent;  // UTF-8
    std::uint32_t parentProcessId = 0;
};

// Parses the arguments after the program's name. Returns nothing unless they are exactly these four, in this order,
// with values that are not empty.
[[nodiscard]] std::optional<HelperArguments> parseHelperArguments(std::span<const wchar_t* const> arguments);

}  // namespace etw_helper
