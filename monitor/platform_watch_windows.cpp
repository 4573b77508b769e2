#include "monitor/helper_watch.h"
#include "monitor/platform_watch.h"

namespace monitor {

// Only administrators can trace the file accesses of other processes, so a helper with their rights does.
std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& programDirectory, const std::string& uuid)
{
    return std::make_unique<HelperWatch>(makeHelperChannel(),
                                         programDirectory + "\\PlatterscopeEtwHelper.exe", uuid);
}

}  // namespace monitor
