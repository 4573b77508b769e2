// Which of the traced file operations are worth a message, and which messages. An open is traced twice: when it
// begins, with the file's name, and when it ends, with its outcome; only the number of its request (IRP) joins the
// two. What ends a file object's use names the object alone. So this remembers both.
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

// Far more than a player has at a time.
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

    // The helper cannot go on, for the reason the sentence gives. Nothing is reported any more.
    void fail(const std::string& sentence);

    // Whether requestEnds or lastHandleCloses could tell anything at present: most events of a system are others'.
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
