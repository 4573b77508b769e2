// The kind of a disc's file, by its name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace monitor {

enum class DiscFile { Other, Playlist, Stream };

// By the suffix, ".mpls" or ".m2ts", in any letter case.
[[nodiscard]] inline DiscFile discFileOf(std::string_view path)
{
    const auto endsWith = [path](std::string_view suffix) {
        const auto isSame = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
        return path.size() >= suffix.size() &&
               std::equal(suffix.begin(), suffix.end(),
                          path.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                          [&](char wanted, char found) { return isSame(found, wanted); });
    };
    if (endsWith(".mpls")) { return DiscFile::Playlist; }
    return endsWith(".m2ts") ? DiscFile::Stream : DiscFile::Other;
}

}  // namespace monitor
