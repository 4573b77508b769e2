// Watching a directory tree by the kernel's own notifications, without extra rights (directory_watch_linux.cpp).
// Every directory below the root is watched, also one that appears later; symbolic links are not followed. The
// watch itself opens directories alone, which it does not report.
//
// Reported are playlists (.mpls) and streams (.m2ts) alone, with upper-case suffixes as well.
#pragma once

#include "monitor/access_watch.h"

#include <memory>

namespace monitor {

class DirectoryWatch final : public AccessWatch {
public:
    DirectoryWatch();
    ~DirectoryWatch() override;

    // Returns when the root is watched; the directories below follow at once on the watch's thread.
    [[nodiscard]] std::optional<WatchFailure> start(const std::string& root, WatchSink sink) override;
    void stop() override;

private:
    class Native;
    std::unique_ptr<Native> m_native;
};

}  // namespace monitor
