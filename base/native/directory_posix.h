// Lists a directory by opendir() and readdir().
#pragma once

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace native {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

// Calls `visit(name, type)` with each entry but "." and "..", in the system's order; `type` is a DT_ constant. Returns
// the error number that ended the listing, 0 if it is complete.
template <typename Visitor>
[[nodiscard]] int forEachEntry(const Directory& directory, Visitor visit)
{
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) { return errno; }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") { visit(name, entry->d_type); }
    }
}

}  // namespace native
