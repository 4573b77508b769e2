// The names that a watch and its helper meet by, and the helper's command line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace monitor {

// Made from one UUID, fresh for every watch.
struct HelperNames {
    std::string pipe;       // "Platterscope-ETW-<uuid>"; the pipe is \\.\pipe\ followed by it
    std::string stopEvent;  // "Local\Platterscope-ETW-Stop-<uuid>"
};

// `uuid` is written without braces.
[[nodiscard]] HelperNames helperNames(std::string_view uuid);

// `argument` in double quotes, such that a program of Windows reads it back unchanged: a backslash is doubled
// where backslashes reach up to a quote or to the end, and a quote gets one before it.
[[nodiscard]] std::string quoteArgument(std::string_view argument);

// --pipe "..." --root "..." --stop-event "..." --parent-pid N
[[nodiscard]] std::string helperParameters(const HelperNames& names, std::string_view root,
                                           std::uint64_t parentProcessId);

}  // namespace monitor
