// The way to standard output for results that must arrive whole or be known to have not.
#pragma once

#include <string_view>

namespace report {

// Writes all bytes as they are. Returns 0, or the errno of the failure: no space, a descriptor that was closed before
// the program began. A reader that closes its end early ("| head -n 1") is no failure: the rest is dropped.
[[nodiscard]] int writeStandardOutput(std::string_view bytes);

// Call this first in main. If the caller has closed standard input, output or error, the first file or socket that the
// program opens would take its number and receive its text; this function takes those numbers, so that writing fails.
// It also makes a write to a pipe without a reader fail instead of ending the program.
void prepareStandardStreams();

}  // namespace report
