// What became of the faults that the tests try: the rows of the table in docs/RELIABILITY.md. A run of the tests with
// a file's name in PLATTERSCOPE_FAULT_TABLE appends a line for each case; tools/reliability.sh counts them.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
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
    // A test that has become another user for its fault becomes for the moment who started it: the file is theirs.
    const uid_t user = ::geteuid();
    const bool isOwner = ::seteuid(::getuid()) == 0;
    std::ofstream table(path, std::ios::app);
    table << line << std::flush;
    if (!isOwner || !table || ::seteuid(user) != 0) { throw std::runtime_error("cannot record a fault"); }
}

}  // namespace testsupport
