// What both ends of the pipe share on Windows: handles, conversions to UTF-16 and back, and the pipe's path.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace monitor {

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// Owns the result of CreateFileW or CreateNamedPipeW; null on failure.
[[nodiscard]] inline Handle handleOrNull(HANDLE handle)
{
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// GetLastError(), but never 0.
[[nodiscard]] inline std::uint32_t lastError()
{
    const DWORD error = ::GetLastError();
    return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

// Conversions between UTF-8 and UTF-16. Invalid input gets replacement characters.
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

[[nodiscard]] inline std::wstring pipePath(std::string_view name)
{
    return L"\\\\.\\pipe\\" + wideText(name);
}

}  // namespace monitor
