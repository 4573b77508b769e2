// Giving everybody rights to a file or directory, by the system's own means (rights_posix.cpp,
// rights_windows.cpp).
#pragma once

#include <filesystem>

namespace native_test {

[[nodiscard]] bool giveEverybodyRead(const std::filesystem::path& path);
[[nodiscard]] bool giveEverybodyWrite(const std::filesystem::path& path);

}  // namespace native_test
