// Watches a directory tree through inotify, which needs no rights (directory_watch_linux.cpp). All directories below
// the root are watched, also those that appear later. Symbolic links are not followed. Only playlists (.mpls) and
// streams (.m2ts) are reported, in any letter case.
#pragma once

#include "monitor/access_watch.h"

#include <memory>

namespace monitor {

class DirectoryWatch final : public AccessWatch {
public:
    DirectoryWatch();
    ~DirectoryWatch() override;

    // Returns when the root is watched. The watch's thread then adds the directories below the root.
    [[nodiscard]] std::optional<WatchFailure> start(const std::string& root, WatchSink sink) override;
    void stop() override;

private:
    class Native;
    std::unique_ptr<Native> m_native;
};

}  // namespace monitor
