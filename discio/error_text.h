// The caller's buffer for one failure message. The readers report a failure by -1 and a printf-style text. Nothing is
// written if the buffer is null or its capacity 0.
#pragma once

#include <cstddef>

namespace discio {

class ErrorText {
public:
    // Wraps the buffer and empties it: a failure without a message leaves it empty.
    ErrorText(char* text, std::size_t capacity);

    // Writes the message, cut to the capacity, and returns -1.
    [[gnu::format(printf, 2, 3)]] int fail(const char* format, ...) const;

    // The buffer, for another entry point.
    [[nodiscard]] char* data() const { return m_text; }
    [[nodiscard]] std::size_t capacity() const { return m_capacity; }

private:
    char* m_text;
    std::size_t m_capacity;
};

// Returns the C library's text for an error number.
[[nodiscard]] const char* systemErrorText(int errorNumber);

}  // namespace discio
