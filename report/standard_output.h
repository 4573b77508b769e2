// Writes to standard output, and reports when not all of it arrives.
#pragma once

#include <string_view>

namespace report {

// Writes all bytes unchanged. Returns 0, or the errno of the failure, such as ENOSPC, or EBADF if standard output was
// closed before the program started. If the reader closes its end early ("| head -n 1"), drops the rest and returns 0.
[[nodiscard]] int writeStandardOutput(std::string_view bytes);

// Call this first in main(). If standard input, output or error is closed, the next file or socket that the program
// opens would get its descriptor, and with it texts that are meant for the user; this function occupies such
// descriptors, so that writing to them fails. It also makes a write to a pipe without a reader fail instead of ending
// the program.
void prepareStandardStreams();

}  // namespace report
