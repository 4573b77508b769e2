// The interface of every watch of a disc's files: its events, the failures that end it, start and stop. Standard C++
// only; InotifyWatcher makes the texts.
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
    bool isStillOpen = false;  // Close: another process still has the file open
};

struct WatchFailure {
    enum class Kind {
        CannotWatch,     // the root cannot be watched at all
        EventsLost,      // the system dropped events
        RootGone,        // the root was removed, renamed or unmounted
        TooManyWatches,  // the system's limit is reached
        PipeNotCreated,  // this and the following kinds are those of HelperWatch
        StopEventNotCreated,
        HelperMissing,
        LaunchFailed,
        NotConnected,
        InvalidMessage,  // a message that is too long
        UnknownMessage,  // a message of an unknown kind
        HelperFailed,    // the helper sent its failure, in `text`, which may be empty
        HelperStopped    // the helper ended, but not by stop()
    };

    Kind kind = Kind::CannotWatch;
    std::uint32_t errorNumber = 0;  // the system's; 0 if the kind has none
    std::string text;               // UTF-8
};

// Receives what a watch reports. The watch calls both functions on its own thread, one at a time, and never after
// stop() has returned. Neither may call stop().
struct WatchSink {
    std::function<void(std::vector<AccessEvent>)> onEvents;  // at least one, in order of time
    std::function<void(WatchFailure)> onFailure;             // at most once, and last
};

// One watch of one directory tree. start() may be called once; after stop() the watch cannot be used again.
class AccessWatch {
public:
    AccessWatch() = default;
    virtual ~AccessWatch() = default;  // implementations call stop()
    AccessWatch(const AccessWatch&) = delete;
    AccessWatch& operator=(const AccessWatch&) = delete;

    // Begins to watch `root`, a canonical path to an existing directory. Returns the failure that prevented it, after
    // releasing everything, or nothing on success. Later failures go to the sink.
    [[nodiscard]] virtual std::optional<WatchFailure> start(const std::string& root, WatchSink sink) = 0;

    // Ends the watch and releases everything. Does nothing if none runs. Must not be called from the sink.
    virtual void stop() = 0;
};

}  // namespace monitor
