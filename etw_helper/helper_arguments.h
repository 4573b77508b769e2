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
    std::wstring root;      // in its DOS form: C:\Discs\Film
    std::string stopEvent;  // UTF-8
    std::uint32_t parentProcessId = 0;
};

// `arguments` without the program's name. All four in this order, none of them empty, and nothing else; or nothing.
[[nodiscard]] std::optional<HelperArguments> parseHelperArguments(std::span<const wchar_t* const> arguments);

}  // namespace etw_helper
