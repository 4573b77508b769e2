// By the system's means (rights_posix.cpp, rights_windows.cpp).
#pragma once

#include <filesystem>

// Lets everybody read the file or directory, and write it if `canWrite`.
[[nodiscard]] bool giveEverybody(const std::filesystem::path& path, bool canWrite);
