#include "discio/directory_list.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace discio {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

std::optional<std::vector<std::string>> listDirectory(const std::string& path)
{
    const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir((path + '/').c_str()));
    if (!directory) { return std::nullopt; }

    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) { break; }
        std::string name = entry->d_name;
        if (name != "." && name != "..") { names.push_back(std::move(name)); }
    }
    if (errno != 0) { return std::nullopt; }
    std::ranges::sort(names);
    return names;
}

}  // namespace discio
