// Lists directories of the host system (directory_list_posix.cpp, directory_list_windows.cpp).
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace discio {

// Returns the names of all entries of the directory `path` + "/" (the empty path is the root) in byte-wise order,
// without "." and "..". Empty if it is not a directory or cannot be listed to its end.
[[nodiscard]] std::optional<std::vector<std::string>> listDirectory(const std::string& path);

}  // namespace discio
