// The names of the pipe and the stop event, and the helper's command line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace monitor {

// The names of one watch.
struct HelperNames {
    std::string pipe;       // "Platterscope-ETW-<uuid>"; the pipe is \\.\pipe\ followed by it
    std::string stopEvent;  // "Local\Platterscope-ETW-Stop-<uuid>"
};

// `uuid` has no braces and must be new for every watch.
[[nodiscard]] HelperNames helperNames(std::string_view uuid);

// Quotes one argument by the rules of Windows: adds double quotes around it, doubles the backslashes directly before a
// quote or the end, and puts a backslash before each quote.
[[nodiscard]] std::string quoteArgument(std::string_view argument);

// --pipe "..." --root "..." --stop-event "..." --parent-pid N
[[nodiscard]] std::string helperParameters(const HelperNames& names, std::string_view root,
                                           std::uint64_t parentProcessId);

}  // namespace monitor
