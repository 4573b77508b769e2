#include "etw_helper/helper_arguments.h"

#include "base/native/utf16_windows.h"
#include "etw_helper/process_id.h"

#include <array>
#include <string_view>

namespace etw_helper {

namespace {

constexpr std::array<std::wstring_view, 4> kNames = {L"--pipe", L"--root", L"--stop-event", L"--parent-pid"};

}  // namespace

std::optional<HelperArguments> parseHelperArguments(std::span<const wchar_t* const> arguments)
{
    if (arguments.size() != 2 * kNames.size()) { return std::nullopt; }
    std::array<std::wstring_view, kNames.size()> values;
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        values[i] = arguments[2 * i + 1];
        if (arguments[2 * i] != kNames[i] || values[i].empty()) { return std::nullopt; }
    }
    const std::uint32_t parent = processIdOf(values[3]);
    if (parent == 0) { return std::nullopt; }
    return HelperArguments{.pipe = native::utf8Text(values[0]),
                           .root = std::wstring(values[1]),
                           .stopEvent = native::utf8Text(values[2]),
                           .parentProcessId = parent};
}

}  // namespace etw_helper
