// What became of the faults that the tests try: the rows of the table in docs/RELIABILITY.md. A run of the tests with
// a file's name in PLATTERSCOPE_FAULT_TABLE appends a line for each case; tools/reliability.sh counts them.
#pragma once

#include <cstdlib>
#include <fstream>
#include <string>

namespace testsupport {

// Some cases of a class of faults that the program answered alike. Both texts are for a reader, without tabs: what was
// tried ("Image: a directory that claims 4 GiB") and what happened ("not found, within a second"). To be called behind
// the test's own checks of exactly that.
inline void recordFault(const std::string& faultClass, const std::string& answer, std::size_t cases = 1)
{
    const char* const path = std::getenv("PLATTERSCOPE_FAULT_TABLE");
    if (path == nullptr) { return; }
    const std::string line = faultClass + '\t' + answer + '\t' + std::to_string(cases) + '\n';
    std::ofstream(path, std::ios::app) << line << std::flush;
}

}  // namespace testsupport
