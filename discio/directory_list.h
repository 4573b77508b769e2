// Listing directories of the host system, by the system's own means (directory_list_posix.cpp,
// directory_list_windows.cpp).
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace discio {

// The names of everything in the directory `path` + "/" (so the empty path is the root), of whatever kind, in
// byte-wise order; "." and ".." are left out. Empty when it is no directory or cannot be listed to its end.
[[nodiscard]] std::optional<std::vector<std::string>> listDirectory(const std::string& path);

}  // namespace discio
