// Records what a watch delivers, as text, and waits for it.
#pragma once

#include "monitor/access_watch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace testsupport {

// "FAILED" and the failure's kind, number and text; "" if there is none.
[[nodiscard]] inline std::string textOf(const std::optional<monitor::WatchFailure>& failure)
{
    if (!failure) { return {}; }
    constexpr std::array kKinds = {
        "CannotWatch",         "EventsLost",    "RootGone",     "TooManyWatches", "PipeNotCreated",
        "StopEventNotCreated", "HelperMissing", "LaunchFailed", "NotConnected",   "InvalidMessage",
        "UnknownMessage",      "HelperFailed",  "HelperStopped"};
    const std::string kind = std::string("FAILED ") + kKinds.at(static_cast<std::size_t>(failure->kind));
    const std::string number = failure->errorNumber != 0 ? ' ' + std::to_string(failure->errorNumber) : "";
    return kind + number + (failure->text.empty() ? "" : ' ' + failure->text);
}

// "OPEN name", "CLOSE name" or, if others have the file open, "close name".
[[nodiscard]] inline std::string textOf(const monitor::AccessEvent& event)
{
    const bool isOpen = event.kind == monitor::AccessEvent::Kind::Open;
    return (isOpen              ? "OPEN "
            : event.isStillOpen ? "close "
                                : "CLOSE ") +
           event.path.substr(event.path.rfind('/') + 1);
}

class Reports {
public:
    [[nodiscard]] monitor::WatchSink sink()
    {
        const auto addEvents = [this](const std::vector<monitor::AccessEvent>& events) {
            if (events.empty()) { add("nothing"); }
            for (const monitor::AccessEvent& event : events) {
                add(textOf(event));
            }
        };
        return {addEvents, [this](const monitor::WatchFailure& failure) { add(textOf(failure)); }};
    }

    // Everything so far, in order.
    [[nodiscard]] std::string text() { return after({}, 0); }
    // The same, after `count` reports that begin with `beginning`, or 20 seconds.
    [[nodiscard]] std::string after(const std::string& beginning, std::ptrdiff_t count = 1)
    {
        const auto isCounted = [&](const std::string& line) { return line.starts_with(beginning); };
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::seconds(20),
                           [&] { return std::count_if(m_lines.begin(), m_lines.end(), isCounted) >= count; });
        std::string text;
        for (const std::string& line : m_lines) {
            text += (text.empty() ? "" : "; ") + line;
        }
        return text;
    }

    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
    }
    // Blocks the watch's thread in its next delivery, or releases it.
    void hold(bool isHeld)
    {
        const std::lock_guard lock(m_mutex);
        m_isHeld = isHeld;
        m_changed.notify_all();
    }

private:
    void add(const std::string& line)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_isHeld; });
        m_lines.push_back(line);
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_lines;
    bool m_isHeld = false;
};

}  // namespace testsupport
