#include "monitor/directory_watch.h"
#include "monitor/platform_watch.h"

namespace monitor {

// inotify needs no rights, so there is no helper.
std::unique_ptr<AccessWatch> makePlatformWatch(const std::string& /*programDirectory*/,
                                               const std::string& /*uuid*/)
{
    return std::make_unique<DirectoryWatch>();
}

}  // namespace monitor
