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
    std::string text = std::string("FAILED ") + kKinds.at(static_cast<std::size_t>(failure->kind));
    if (failure->errorNumber != 0) { text += ' ' + std::to_string(failure->errorNumber); }
    return failure->text.empty() ? text : text + ' ' + failure->text;
}

class Reports {
public:
    [[nodiscard]] monitor::WatchSink sink()
    {
        return {.onEvents =
                    [this](const std::vector<monitor::AccessEvent>& events) {
                        std::unique_lock lock(m_mutex);
                        m_changed.wait(lock, [this] { return !m_isHeld; });
                        if (events.empty()) { m_lines.emplace_back("nothing"); }
                        for (const monitor::AccessEvent& event : events) {
                            const bool isOpen = event.kind == monitor::AccessEvent::Kind::Open;
                            m_lines.push_back((isOpen              ? "OPEN "
                                               : event.isStillOpen ? "close "
                                                                   : "CLOSE ") +
                                              event.path.substr(event.path.rfind('/') + 1));
                        }
                        m_changed.notify_all();
                    },
                .onFailure =
                    [this](const monitor::WatchFailure& failure) {
                        const std::lock_guard lock(m_mutex);
                        m_lines.push_back(textOf(failure));
                        m_changed.notify_all();
                    }};
    }

    // Everything so far, in order: "OPEN name", "CLOSE name" or, if others have the file open, "close name", and failures.
    [[nodiscard]] std::string text()
    {
        const std::lock_guard lock(m_mutex);
        std::string text;
        for (const std::string& line : m_lines) {
            text += (text.empty() ? "" : "; ") + line;
        }
        return text;
    }
    // The same, after `count` reports that begin with `beginning`, or 20 seconds.
    [[nodiscard]] std::string after(const std::string& beginning, std::ptrdiff_t count = 1)
    {
        const auto isCounted = [&](const std::string& line) { return line.starts_with(beginning); };
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait_for(lock, std::chrono::seconds(20), [&] {
                return std::count_if(m_lines.begin(), m_lines.end(), isCounted) >= count;
            });
        }
        return text();
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
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_lines;
    bool m_isHeld = false;
};

}  // namespace testsupport
