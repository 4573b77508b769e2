// Golden files: expected texts kept as data, tests/<folder>/golden/<name>. tools/golden.sh writes them anew.
#pragma once

#include <string>
#include <string_view>

namespace testsupport {

// Compares `text` with the golden file `path`, relative to tests/ ("report/golden/bluray.json"). Returns "" if they are
// equal, else the first line that differs, as expected and as it is. If PLATTERSCOPE_UPDATE_GOLDEN is set, writes the
// text to the file and returns "".
[[nodiscard]] std::string goldenDifference(std::string_view text, const std::string& path);

}  // namespace testsupport
