#include "base/native/directory_posix.h"
#include "discio/directory_list.h"

#include <algorithm>

namespace discio {

std::optional<std::vector<std::string>> listDirectory(const std::string& path)
{
    const native::Directory directory(::opendir((path + '/').c_str()));
    if (!directory) { return std::nullopt; }
    std::vector<std::string> names;
    const auto add = [&names](std::string_view name, int /*type*/) { names.emplace_back(name); };
    if (native::forEachEntry(directory, add) != 0) { return std::nullopt; }
    std::ranges::sort(names);
    return names;
}

}  // namespace discio
