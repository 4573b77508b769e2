// Turns traced file operations into messages. An open makes two events: its begin has the file's name, its end has the
// status, and both have the number of the request (IRP). A close has only the file object. So this class remembers the
// begun opens by request and the open files by file object.
#pragma once

#include "etw_helper/watched_root.h"
#include "monitor/helper_message.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace etw_helper {

// The limit of begun opens and of open files; far more than a player needs.
inline constexpr std::size_t kMaximumFiles = 65'536;

class AccessReport {
public:
    using Sink = std::function<void(monitor::MessageKind, const std::string& payload)>;

    AccessReport(WatchedRoot root, Sink sink);

    // An open of `devicePath` begins.
    void openBegins(std::uint64_t request, std::uint64_t fileObject, std::wstring_view devicePath);

    // Any request has ended, with the system's status code.
    void requestEnds(std::uint64_t request, std::uint32_t status);

    // The last handle to the file object was closed.
    void lastHandleCloses(std::uint64_t fileObject);

    // Sends `sentence` as the helper's failure. Nothing is sent after it.
    void fail(const std::string& sentence);

    // Whether requestEnds() or lastHandleCloses() can have an effect now. Most events belong to other files; this
    // saves reading their properties.
    [[nodiscard]] bool awaitsRequests() const { return !m_begun.empty(); }
    [[nodiscard]] bool awaitsCloses() const { return !m_open.empty(); }

private:
    struct BegunOpen {
        std::uint64_t fileObject = 0;
        std::string path;  // the DOS form, UTF-8
    };

    void send(monitor::MessageKind kind, const std::string& payload);

    WatchedRoot m_root;
    Sink m_sink;
    bool m_hasFailed = false;
    std::map<std::uint64_t, BegunOpen> m_begun;   // by request
    std::map<std::uint64_t, std::string> m_open;  // path by file object
};

}  // namespace etw_helper
