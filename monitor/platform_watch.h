// The way of watching that this system has (platform_watch_linux.cpp, platform_watch_windows.cpp).
#pragma once

#include "monitor/access_watch.h"

#include <memory>
#include <string>

namespace monitor {

// `programDirectory` is where a helper would be installed; `uuid` is new for every watch.
[[nodiscard]] std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& programDirectory,
                                                             const std::string& uuid);

}  // namespace monitor
