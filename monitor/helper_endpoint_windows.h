// The path of the pipe between a watch and its helper on Windows.
#pragma once

#include "base/native/utf16_windows.h"

#include <string>
#include <string_view>

namespace monitor {

[[nodiscard]] inline std::wstring pipePath(std::string_view name)
{
    return L"\\\\.\\pipe\\" + native::wideText(name);
}

}  // namespace monitor
