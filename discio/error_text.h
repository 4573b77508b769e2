// The caller's buffer for one failure message. The readers report failure by -1 and a printf-style text;
// either the buffer or its capacity may be missing, in which case nothing is written.
#pragma once

#include <cstddef>

namespace discio {

class ErrorText {
public:
    // Wraps the buffer and empties it, so that a failure without a message of its own leaves it empty.
    ErrorText(char* text, std::size_t capacity);

    // Writes the message, cut to the capacity, and returns -1.
    [[gnu::format(printf, 2, 3)]] int fail(const char* format, ...) const;

    // For passing the same buffer on to another entry point.
    [[nodiscard]] char* data() const { return m_text; }
    [[nodiscard]] std::size_t capacity() const { return m_capacity; }

private:
    char* m_text;
    std::size_t m_capacity;
};

// The system's own words for an error number of the C library.
[[nodiscard]] const char* systemErrorText(int errorNumber);

}  // namespace discio
