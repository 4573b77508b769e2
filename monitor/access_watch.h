// What every way of watching a disc's files has in common: the events it reports, the failures that end it, and
// how it is started and stopped. Standard C++ only; the texts are InotifyWatcher's.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace monitor {

struct AccessEvent {
    enum class Kind { Open, Close };

    Kind kind = Kind::Open;
    std::string path;          // absolute, in the system's encoding of file names (UTF-8 on Windows)
    bool isStillOpen = false;  // Close: others have the file open as well
};

struct WatchFailure {
    enum class Kind {
        CannotWatch,     // the root cannot be watched at all
        EventsLost,      // the system dropped events
        RootGone,        // the root was removed, renamed or unmounted
        TooManyWatches,  // the system's limit is reached
        PipeNotCreated,  // the following ones are the helper's; with errorNumber
        StopEventNotCreated,
        HelperMissing,  // without errorNumber
        LaunchFailed,
        NotConnected,    // the last one with errorNumber
        InvalidMessage,  // a frame that is too long
        UnknownMessage,  // a frame of an unknown kind
        HelperFailed,    // the helper says so, with `text`, which may be empty
        HelperStopped    // the helper ended without being asked to
    };

    Kind kind = Kind::CannotWatch;
    std::uint32_t errorNumber = 0;  // the system's
    std::string text;               // UTF-8
};

// Where a watch delivers. Both are called on the watch's own thread, one at a time, and never after stop() has
// returned; neither may call stop().
struct WatchSink {
    std::function<void(std::vector<AccessEvent>)> onEvents;  // in the order they happened, at least one
    std::function<void(WatchFailure)> onFailure;             // at most once; nothing follows it
};

// One watch of one directory tree. start() is called once; a watch is not used again after stop().
class AccessWatch {
public:
    AccessWatch() = default;
    virtual ~AccessWatch() = default;  // implementations stop
    AccessWatch(const AccessWatch&) = delete;
    AccessWatch& operator=(const AccessWatch&) = delete;

    // Begins to watch `root`, a canonical path to an existing directory. The failure that prevented it, with
    // everything made so far released, or nothing; later failures go to the sink.
    [[nodiscard]] virtual std::optional<WatchFailure> start(const std::string& root, WatchSink sink) = 0;

    // Ends the watch and releases everything. Does nothing when none runs. Not from the sink.
    virtual void stop() = 0;
};

}  // namespace monitor
