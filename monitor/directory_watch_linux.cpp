#include "base/native/descriptor_posix.h"
#include "base/native/directory_posix.h"
#include "monitor/directory_watch.h"
#include "monitor/disc_file.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iterator>
#include <new>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

namespace monitor {

namespace {

constexpr std::uint32_t kMask =
    IN_OPEN | IN_CLOSE | IN_CREATE | IN_MOVE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;

// Room for about 2,000 events. One event is a header and at most a file name.
constexpr std::size_t kBufferBytes = 64 * 1024;
static_assert(kBufferBytes >= sizeof(inotify_event) + NAME_MAX + 1);

WatchFailure failure(WatchFailure::Kind kind)
{
    return {.kind = kind, .errorNumber = 0, .text = {}};
}

// The entries of a directory that need a watch. Links are skipped.
struct Listing {
    std::vector<std::string> directories;  // also entries of unknown type
    std::vector<std::string> files;        // playlists and streams, by their names
    int errorNumber = 0;                   // why the directory could not be listed completely, else 0
};

Listing listed(const std::string& path)
{
    Listing listing;
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const native::Directory directory(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
    if (!directory) {
        listing.errorNumber = errno;
        if (descriptor >= 0) { ::close(descriptor); }
        return listing;
    }
    listing.errorNumber = native::forEachEntry(directory, [&listing](std::string_view name, int type) {
        if (type == DT_DIR || type == DT_UNKNOWN) { listing.directories.emplace_back(name); }
        if (type != DT_DIR && discFileOf(name) != DiscFile::Other) { listing.files.emplace_back(name); }
    });
    return listing;
}

// The failure that ends the watch if a directory or file below the root cannot be watched. None if the entry is gone,
// has been replaced or may not be read: it is skipped.
std::optional<WatchFailure::Kind> failureOf(int errorNumber)
{
    switch (errorNumber) {
    case 0:
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case EACCES:
        return std::nullopt;
    case ENOSPC:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return WatchFailure::Kind::TooManyWatches;
    default:
        return WatchFailure::Kind::CannotWatch;
    }
}

std::string joined(const std::string& directory, std::string_view name)
{
    return (directory == "/" ? std::string() : directory) + '/' + std::string(name);
}

}  // namespace

// After begin() only the watch's thread uses the tables.
class DirectoryWatch::Native {
public:
    Native(native::Descriptor inotify, native::Descriptor wakeUp, WatchSink sink)
        : m_inotify(std::move(inotify))
        , m_wakeUp(std::move(wakeUp))
        , m_sink(std::move(sink))
    {}

    ~Native()
    {
        m_isStopping = true;
        ::eventfd_write(m_wakeUp.number(), 1);
        if (m_thread.joinable()) { m_thread.join(); }
    }

    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    std::optional<WatchFailure> begin(const std::string& root)
    {
        m_root = ::inotify_add_watch(m_inotify.number(), root.c_str(), kMask);
        if (m_root < 0) { return failure(failureOf(errno).value_or(WatchFailure::Kind::CannotWatch)); }
        m_directories.emplace(m_root, root);
        m_thread = std::thread(&Native::run, this);
        return std::nullopt;
    }

private:
    void run();
    void watchTree();
    void watchDirectory(const std::string& path);
    void watchContents(const std::string& path);
    void watchFile(const std::string& path);
    void countAsClosed(std::unordered_map<std::string, int>::iterator opens);
    void forgetTree(const std::string& path);
    void readEvents();
    void handle(const inotify_event& event, std::string_view name);
    void handleDirectory(std::uint32_t mask, const std::string& path);
    void handleFile(std::uint32_t mask, std::string path);
    void deliver();
    void fail(WatchFailure::Kind kind) { m_failure = m_failure ? m_failure : failure(kind); }
    [[nodiscard]] bool canContinue() const { return !m_failure && !m_isStopping; }

    const native::Descriptor m_inotify;
    const native::Descriptor m_wakeUp;  // an eventfd; writing to it ends the wait
    const WatchSink m_sink;
    int m_root = -1;
    std::unordered_map<int, std::string> m_directories;  // by watch descriptor
    std::unordered_map<std::string, int> m_opens;        // open count by path
    std::vector<std::string> m_unwatched;                // directories without a watch yet
    std::vector<AccessEvent> m_events;                   // read, but not delivered yet
    std::optional<WatchFailure> m_failure;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};

void DirectoryWatch::Native::run()
{
    try {
        // Listing is slow, so it is done here and not in begin(), which the window calls.
        watchContents(m_directories.at(m_root));
        while (canContinue()) {
            watchTree();
            deliver();
            std::array<pollfd, 2> polled{{{m_inotify.number(), POLLIN, 0}, {m_wakeUp.number(), POLLIN, 0}}};
            if (canContinue() && ::poll(polled.data(), polled.size(), -1) > 0) { readEvents(); }
        }
        deliver();
    } catch (const std::bad_alloc&) {
        fail(WatchFailure::Kind::EventsLost);
    }
    if (m_failure && !m_isStopping) { m_sink.onFailure(*m_failure); }
}

// Listing a directory causes events. They are read after each directory, because those of a large tree would overflow
// the kernel's queue.
void DirectoryWatch::Native::watchTree()
{
    while (canContinue() && !m_unwatched.empty()) {
        const std::string path = std::move(m_unwatched.back());
        m_unwatched.pop_back();
        watchDirectory(path);
        readEvents();
    }
}

void DirectoryWatch::Native::watchDirectory(const std::string& path)
{
    const int watch = ::inotify_add_watch(m_inotify.number(), path.c_str(), kMask);
    if (watch < 0) {
        if (const auto kind = failureOf(errno)) { fail(*kind); }
        return;
    }
    // A known descriptor is the same directory under another name: its contents are watched already.
    if (m_directories.emplace(watch, path).second) { watchContents(path); }
}

void DirectoryWatch::Native::watchContents(const std::string& path)
{
    const Listing listing = listed(path);
    if (const auto kind = failureOf(listing.errorNumber)) { fail(*kind); }
    for (const std::string& name : listing.directories) {
        m_unwatched.push_back(joined(path, name));
    }
    for (const std::string& name : listing.files) {
        if (!canContinue()) { return; }
        watchFile(joined(path, name));
    }
}

// inotify merges identical consecutive events still in its queue. A second watch on the file itself puts a different
// event between two directory events, so no close is lost. handle() ignores those extra events.
void DirectoryWatch::Native::watchFile(const std::string& path)
{
    if (::inotify_add_watch(m_inotify.number(), path.c_str(), IN_OPEN | IN_CLOSE | IN_DONT_FOLLOW) >= 0) {
        return;
    }
    if (const auto kind = failureOf(errno)) { fail(*kind); }
}

// Drops the watches below a directory that was moved out, and counts its open files as closed.
void DirectoryWatch::Native::forgetTree(const std::string& path)
{
    const std::string below = path + '/';
    std::erase_if(m_directories, [&](const auto& directory) {
        const bool isBelow = directory.second == path || directory.second.starts_with(below);
        if (isBelow) { ::inotify_rm_watch(m_inotify.number(), directory.first); }
        return isBelow;
    });
    for (auto opens = m_opens.begin(); opens != m_opens.end();) {
        const auto next = std::next(opens);
        if (opens->first.starts_with(below)) { countAsClosed(opens); }
        opens = next;
    }
}

// Reports a close: the path no longer exists.
void DirectoryWatch::Native::countAsClosed(std::unordered_map<std::string, int>::iterator opens)
{
    m_events.push_back({AccessEvent::Kind::Close, opens->first, false});
    m_opens.erase(opens);
}

void DirectoryWatch::Native::readEvents()
{
    alignas(inotify_event) std::array<char, kBufferBytes> buffer;
    const ssize_t size = ::read(m_inotify.number(), buffer.data(), buffer.size());  // does not block
    ssize_t position = 0;
    while (position < size) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + position, sizeof event);
        const char* name = buffer.data() + position + sizeof event;  // padded with NULs
        handle(event, std::string_view(name, ::strnlen(name, event.len)));
        position += static_cast<ssize_t>(sizeof event + event.len);
    }
}

void DirectoryWatch::Native::handle(const inotify_event& event, std::string_view name)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) { return fail(WatchFailure::Kind::EventsLost); }
    const auto directory = m_directories.find(event.wd);
    if (directory == m_directories.end()) { return; }
    if ((event.mask & (IN_IGNORED | IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) != 0) {
        if (event.wd == m_root) { fail(WatchFailure::Kind::RootGone); }
        if ((event.mask & IN_IGNORED) != 0) { m_directories.erase(directory); }
        return;
    }
    if (name.empty()) { return; }  // the directory itself
    const std::string path = joined(directory->second, name);
    if ((event.mask & IN_ISDIR) != 0) {
        handleDirectory(event.mask, path);
    } else {
        handleFile(event.mask, path);
    }
}

void DirectoryWatch::Native::handleDirectory(std::uint32_t mask, const std::string& path)
{
    if ((mask & IN_MOVED_FROM) != 0) { forgetTree(path); }
    if ((mask & (IN_CREATE | IN_MOVED_TO)) != 0) { m_unwatched.push_back(path); }
}

void DirectoryWatch::Native::handleFile(std::uint32_t mask, std::string path)
{
    if (discFileOf(path) == DiscFile::Other) { return; }
    const auto opens = m_opens.find(path);
    if ((mask & IN_OPEN) != 0) {
        ++m_opens[path];
        m_events.push_back({AccessEvent::Kind::Open, std::move(path), false});
    } else if ((mask & IN_CLOSE) != 0) {
        // A path without an entry was opened before the watch began.
        const bool isStillOpen = opens != m_opens.end() && --opens->second > 0;
        if (opens != m_opens.end() && !isStillOpen) { m_opens.erase(opens); }
        m_events.push_back({AccessEvent::Kind::Close, std::move(path), isStillOpen});
    } else if ((mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
        watchFile(path);
    } else if ((mask & IN_MOVED_FROM) != 0 && opens != m_opens.end()) {
        countAsClosed(opens);
    }
}

void DirectoryWatch::Native::deliver()
{
    if (!m_events.empty() && !m_isStopping) { m_sink.onEvents(std::exchange(m_events, {})); }
}

DirectoryWatch::DirectoryWatch() = default;

DirectoryWatch::~DirectoryWatch() = default;

std::optional<WatchFailure> DirectoryWatch::start(const std::string& root, WatchSink sink)
{
    native::Descriptor inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify.isOpen()) { return failure(failureOf(errno).value_or(WatchFailure::Kind::CannotWatch)); }
    native::Descriptor wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wakeUp.isOpen()) { return failure(WatchFailure::Kind::CannotWatch); }
    try {
        auto watch = std::make_unique<Native>(std::move(inotify), std::move(wakeUp), std::move(sink));
        std::optional<WatchFailure> problem = watch->begin(root);
        if (!problem) { m_native = std::move(watch); }
        return problem;
    } catch (const std::exception&) {  // no thread, or no memory
        return failure(WatchFailure::Kind::CannotWatch);
    }
}

void DirectoryWatch::stop()
{
    m_native.reset();
}

}  // namespace monitor
