// Conversions between UTF-8 and UTF-16. Invalid input gets replacement characters.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace native {

[[nodiscard]] inline std::wstring wideText(std::string_view text)
{
    std::wstring wide(text.size(), L'\0');  // never more units than bytes
    const int size = static_cast<int>(text.size());
    wide.resize(
        static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
    return wide;
}

[[nodiscard]] inline std::string utf8Text(std::wstring_view wide)
{
    constexpr std::size_t kMaximumBytesPerUnit = 3;
    std::string text(wide.size() * kMaximumBytesPerUnit, '\0');
    const int size = static_cast<int>(wide.size());
    text.resize(static_cast<std::size_t>(::WideCharToMultiByte(
        CP_UTF8, 0, wide.data(), size, text.data(), static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

}  // namespace native
