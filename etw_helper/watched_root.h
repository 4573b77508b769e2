// The watched directory under its two names. Traced events name files as the kernel does, by device:
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
    // Separators at the end do not count.
    WatchedRoot(std::wstring_view dosForm, std::wstring_view deviceForm);

    // The DOS form of a file below the root, whose device form is given; nothing for any other file and for the
    // root itself. Letter case does not count.
    [[nodiscard]] std::optional<std::wstring> dosPath(std::wstring_view devicePath) const;

private:
    std::wstring m_dosForm;
    std::wstring m_deviceForm;
};

// The device form of an existing directory, links resolved; nothing on failure, with the system's error number.
[[nodiscard]] std::optional<std::wstring> deviceForm(const std::wstring& directory, DWORD& errorNumber);

}  // namespace etw_helper
