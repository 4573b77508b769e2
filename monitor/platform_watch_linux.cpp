#include "monitor/directory_watch.h"
#include "monitor/platform_watch.h"

namespace monitor {

// The kernel tells every user: no helper is needed.
std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& /*programDirectory*/,
                                               const std::string& /*uuid*/)
{
    return std::make_unique<DirectoryWatch>();
}

}  // namespace monitor
