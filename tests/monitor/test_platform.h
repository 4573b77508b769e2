// What these tests ask the system for (test_platform_posix.cpp, test_platform_windows.cpp).
#pragma once

#include "monitor/helper_command_line.h"

#include <cstdint>
#include <string>
#include <vector>

namespace testsupport {

// The system's number for a pipe whose other side is gone.
extern const std::uint32_t kBrokenPipe;

// The arguments behind the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> argumentsInUtf8(int argc, char** argv);

// Ends this process at once, as if from outside.
[[noreturn]] void killThisProcess();

// What this process holds, as a text to compare a former one with, and whether the names are in use.
[[nodiscard]] std::string heldResources(const monitor::HelperNames& names);

}  // namespace testsupport
