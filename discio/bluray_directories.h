// How the Blu-ray source finds its way through the directories of a disc. Each is read when it is first asked
// for and kept with the source, and so is the knowledge that one is not there.
#pragma once

#include "discio/bluray_source.h"
#include "discio/disc_directory.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

// The components of a path; empty ones vanish.
[[nodiscard]] std::vector<std::string_view> splitPath(std::string_view path);

// The path of these components.
[[nodiscard]] std::string joinPath(std::span<const std::string_view> components);

// The directory with this path, which for no components is the disc root; null where there is none.
[[nodiscard]] const DiscDirectory* directoryAt(const BlurayDiscSource& source,
                                               std::span<const std::string_view> components);

// What a path of at least one component ends at.
struct FoundEntry {
    const DiscDirectory* directory = nullptr;
    const DiscEntry* entry = nullptr;  // null where nothing is there
};

[[nodiscard]] FoundEntry entryAt(const BlurayDiscSource& source,
                                 std::span<const std::string_view> components);

}  // namespace discio
