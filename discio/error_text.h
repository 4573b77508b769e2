// The failure message of a reader, in two forms: an English text in the caller's buffer, and its parts for a translation.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Marks a sentence for the translations, like QT_TRANSLATE_NOOP, which the readers do not have.
#define MESSAGE_NOOP(context, sentence) sentence

namespace discio {

struct Message {
    const char* sentence = nullptr;  // English; %1 and %2 are the places of the arguments; null: no message
    std::vector<std::string> arguments;  // in the system's 8-bit encoding

    bool operator==(const Message&) const = default;
};

class ErrorText {
public:
    // Wraps the buffer and empties it. The buffer, its capacity and `message` may be missing.
    ErrorText(char* text, std::size_t capacity, Message* message = nullptr);

    // Writes the English sentence, cut to the buffer's capacity, and its parts. Returns -1. If memory runs out, the parts
    // are missing.
    int fail(const char* sentence, std::initializer_list<std::string_view> arguments = {}) const noexcept;

private:
    char* m_text;
    std::size_t m_capacity;
    Message* m_message;
};

// Returns the C library's text for an error number.
[[nodiscard]] const char* systemErrorText(int errorNumber);

}  // namespace discio
