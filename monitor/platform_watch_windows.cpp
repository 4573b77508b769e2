#include "monitor/helper_watch.h"
#include "monitor/platform_watch.h"

namespace monitor {

// The system tells administrators alone.
std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& programDirectory, const std::string& uuid)
{
    return std::make_unique<HelperWatch>(programDirectory + "\\PlatterscopeEtwHelper.exe", uuid);
}

}  // namespace monitor
