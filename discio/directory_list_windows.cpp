#include "discio/directory_list.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace discio {

namespace {

struct FindCloser {
    using pointer = HANDLE;
    void operator()(HANDLE find) const { ::FindClose(find); }
};

}  // namespace

std::optional<std::vector<std::string>> listDirectory(const std::string& path)
{
    WIN32_FIND_DATAA entry = {};
    const HANDLE handle = ::FindFirstFileA((path + "/*").c_str(), &entry);
    if (handle == INVALID_HANDLE_VALUE) {
        // An empty drive root has no entries, not even "." and "..".
        if (::GetLastError() == ERROR_FILE_NOT_FOUND) { return std::vector<std::string>(); }
        return std::nullopt;
    }
    const std::unique_ptr<HANDLE, FindCloser> find(handle);

    std::vector<std::string> names;
    do {
        std::string name = entry.cFileName;
        if (name != "." && name != "..") { names.push_back(std::move(name)); }
    } while (::FindNextFileA(find.get(), &entry) != FALSE);
    if (::GetLastError() != ERROR_NO_MORE_FILES) { return std::nullopt; }
    std::ranges::sort(names);
    return names;
}

}  // namespace discio
