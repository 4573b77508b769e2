// The watch of this system (platform_watch_linux.cpp, platform_watch_windows.cpp).
#pragma once

#include "monitor/access_watch.h"

#include <memory>
#include <string>

namespace monitor {

// `programDirectory` is the directory of a helper program. `uuid` must be new for every watch. Linux uses neither.
[[nodiscard]] std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& programDirectory,
                                                             const std::string& uuid);

}  // namespace monitor
