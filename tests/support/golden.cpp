#include "tests/support/golden.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace testsupport {

std::string goldenDifference(std::string_view text, const std::string& path)
{
    const std::filesystem::path file = std::filesystem::path(PLATTERSCOPE_TESTS_DIR) / path;
    if (std::getenv("PLATTERSCOPE_UPDATE_GOLDEN") != nullptr) {
        std::filesystem::create_directories(file.parent_path());
        return (std::ofstream(file, std::ios::binary) << text) ? "" : "cannot write " + file.string();
    }
    std::ifstream in(file, std::ios::binary);
    const std::string golden{std::istreambuf_iterator<char>(in), {}};
    if (golden == text) { return {}; }

    std::istringstream expectedLines(golden);
    std::istringstream actualLines{std::string(text)};
    std::string expected;
    std::string actual;
    int number = 0;
    do {
        ++number;
        if (!std::getline(expectedLines, expected)) { expected = "(end)"; }
        if (!std::getline(actualLines, actual)) { actual = "(end)"; }
    } while (expected == actual && expectedLines && actualLines);
    return path + ':' + std::to_string(number) + "\n  expected: " + expected + "\n  actual:   " + actual;
}

}  // namespace testsupport
