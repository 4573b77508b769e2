// The directories of a Blu-ray source. Each is read when it is first needed and then kept with the source, also as
// missing.
#pragma once

#include "discio/bluray_source.h"
#include "discio/disc_directory.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

// Returns the components of a path without empty ones. They refer to the path.
[[nodiscard]] std::vector<std::string_view> splitPath(std::string_view path);

// Returns the components joined by "/".
[[nodiscard]] std::string joinPath(std::span<const std::string_view> components);

// Returns the directory with this path; the disc root for no components; null if it is missing or unreadable.
[[nodiscard]] const DiscDirectory* directoryAt(const BlurayDiscSource& source,
                                               std::span<const std::string_view> components);

// The last component of a path.
struct FoundEntry {
    const DiscDirectory* directory = nullptr;  // the one that holds it; null if missing or unreadable
    const DiscEntry* entry = nullptr;          // null if the directory has no such entry
};

// Finds the entry of a path with at least one component.
[[nodiscard]] FoundEntry entryAt(const BlurayDiscSource& source,
                                 std::span<const std::string_view> components);

}  // namespace discio
