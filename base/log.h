// The one writer of diagnostic lines. Each line goes to standard error as "component: level: message\n" with
// a single formatted write and a flush, so lines of several threads do not mix and none is lost in a crash.
// Messages carry names from discs and texts from the service, none of which may steer a terminal or begin a line that
// looks like one of the program's own.
#pragma once

#include <QString>

namespace logging {

// Components.
inline constexpr char kPlatterscope[] = "platterscope";  // shell, scanning flow, busy-task errors
inline constexpr char kBdmeta[] = "bdmeta";              // Blu-ray metadata
inline constexpr char kDvdmeta[] = "dvdmeta";            // DVD metadata
inline constexpr char kTessera[] = "tessera";            // service client

// Levels.
inline constexpr char kInfo[] = "info";
inline constexpr char kWarning[] = "warning";
inline constexpr char kError[] = "error";

// Writes one line if the calling thread's switch is on, with the message as terminaltext::line() rewrites it. If memory
// does not suffice for the message, a fixed text replaces it.
void log(const char* component, const char* level, const QString& message) noexcept;

// Like log(), for a text of the service, which may have several lines: see terminaltext::lines().
void logLines(const char* component, const char* level, const QString& text) noexcept;

// Writes "platterscope: info: started" regardless of the switch. Called first in main().
void logStarted();

// The calling thread's switch, on at first in every thread.
bool isEnabled();

// Sets the calling thread's switch for the object's lifetime and restores the former value on every way out.
class ScopedSwitch {
public:
    explicit ScopedSwitch(bool enabled);
    ~ScopedSwitch();
    ScopedSwitch(const ScopedSwitch&) = delete;
    ScopedSwitch& operator=(const ScopedSwitch&) = delete;

private:
    bool m_saved;
};

}  // namespace logging
