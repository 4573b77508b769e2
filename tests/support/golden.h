// Golden files: expected texts kept as data, tests/<folder>/golden/<name>. tools/golden.sh writes them anew.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace testsupport {

// Compares `text` with the golden file `path`, relative to tests/ ("report/golden/bluray.json"). Returns "" if they are
// equal, else the first line that differs, as expected and as it is. If PLATTERSCOPE_UPDATE_GOLDEN is set, writes the
// text to the file and returns "".
[[nodiscard]] inline std::string goldenDifference(const std::string& text, const std::string& path)
{
    const std::filesystem::path file = std::filesystem::path(PLATTERSCOPE_TESTS_DIR) / path;
    if (std::getenv("PLATTERSCOPE_UPDATE_GOLDEN") != nullptr) {
        std::filesystem::create_directories(file.parent_path());
        return (std::ofstream(file, std::ios::binary) << text) ? "" : "cannot write " + file.string();
    }
    std::ifstream in(file, std::ios::binary);
    const std::string golden{std::istreambuf_iterator<char>(in), {}};
    if (golden == text) { return {}; }
    const auto differs = std::ranges::mismatch(golden, text).in2;
    const auto number = 1 + std::count(text.begin(), differs, '\n');
    const std::size_t begin = std::string(text.begin(), differs).rfind('\n') + 1;
    const auto line = [begin](const std::string& whole) {
        return whole.substr(begin, whole.find('\n', begin) - begin);
    };
    return path + ':' + std::to_string(number) + "\n  expected: " + line(golden) +
           "\n  actual:   " + line(text);
}

}  // namespace testsupport
