// The way to standard output for results that must arrive whole or be known to have not.
#pragma once

#include <string_view>

namespace report {

// Writes all bytes as they are. 0, or the errno of the failure: no space, a reader that has gone, a descriptor that
// was closed before the program began. A reader that has gone does not end the process, not even later.
[[nodiscard]] int writeStandardOutput(std::string_view bytes);

// To be called before anything is opened. Where the caller has closed standard input, output or error, the first file or
// socket of the program's own would take its number, and be written to; with this, writing fails as it should.
void keepStandardNumbers();

}  // namespace report
