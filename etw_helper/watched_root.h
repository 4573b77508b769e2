// The watched directory in both forms of its path. Traced events have paths in the device form:
//
//   DOS form      C:\Discs\Film
//   device form   \Device\HarddiskVolume3\Discs\Film
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace etw_helper {

class WatchedRoot {
public:
    // Trailing separators are ignored.
    WatchedRoot(std::wstring_view dosForm, std::wstring_view deviceForm);

    // Converts the device form of a file below the root to its DOS form, ignoring letter case. Returns nothing for the
    // root itself and for any other path.
    [[nodiscard]] std::optional<std::wstring> dosPath(std::wstring_view devicePath) const;

private:
    std::wstring m_dosForm;
    std::wstring m_deviceForm;
};

// The device form of an existing directory, with links resolved. On failure returns nothing and sets `errorNumber` to
// the system's error number.
[[nodiscard]] std::optional<std::wstring> deviceForm(const std::wstring& directory, DWORD& errorNumber);

}  // namespace etw_helper
