#include "etw_helper/watched_root.h"

#include "base/native/handle_windows.h"

namespace etw_helper {

namespace {

constexpr DWORD kMaximumPathUnits = 32'768;

std::wstring_view withoutTrailingSeparators(std::wstring_view path)
{
    return path.substr(0, path.find_last_not_of(L'\\') + 1);
}

bool isEqualIgnoringCase(std::wstring_view left, std::wstring_view right)
{
    return ::CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                  static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace

WatchedRoot::WatchedRoot(std::wstring_view dosForm, std::wstring_view deviceForm)
    : m_dosForm(withoutTrailingSeparators(dosForm))
    , m_deviceForm(withoutTrailingSeparators(deviceForm))
{}

std::optional<std::wstring> WatchedRoot::dosPath(std::wstring_view devicePath) const
{
    const std::size_t rootSize = m_deviceForm.size();
    if (devicePath.size() <= rootSize + 1 || devicePath[rootSize] != L'\\') { return std::nullopt; }
    if (!isEqualIgnoringCase(devicePath.substr(0, rootSize), m_deviceForm)) { return std::nullopt; }
    return m_dosForm + std::wstring(devicePath.substr(rootSize));
}

std::optional<std::wstring> deviceForm(const std::wstring& directory, DWORD& errorNumber)
{
    const native::Handle handle = native::handleOrNull(
        ::CreateFileW(directory.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::wstring path(kMaximumPathUnits, L'\0');
    const DWORD size =
        handle ? ::GetFinalPathNameByHandleW(handle.get(), path.data(), kMaximumPathUnits, VOLUME_NAME_NT)
               : 0;
    if (size == 0 || size >= kMaximumPathUnits) {
        errorNumber = native::lastError();
        return std::nullopt;
    }
    path.resize(size);
    return path;
}

}  // namespace etw_helper
