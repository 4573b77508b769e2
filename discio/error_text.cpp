#include "discio/error_text.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace discio {

ErrorText::ErrorText(char* text, std::size_t capacity, Message* message)
    : m_text(capacity > 0 ? text : nullptr)
    , m_capacity(capacity)
    , m_message(message)
{
    if (m_text != nullptr) { m_text[0] = '\0'; }
}

int ErrorText::fail(const char* sentence, std::initializer_list<std::string_view> arguments) const noexcept
{
    std::size_t size = 0;
    const auto append = [&size, this](std::string_view part) {
        size += part.copy(m_text + size, m_capacity - 1 - size);
        m_text[size] = '\0';
    };
    std::string_view rest = m_text == nullptr ? "" : sentence;
    while (!rest.empty()) {
        const std::size_t place = std::min(rest.find('%'), rest.size());
        append(rest.substr(0, place));
        if (place == rest.size()) { break; }
        append(arguments.begin()[rest[place + 1] - '1']);
        rest.remove_prefix(place + 2);
    }
    if (m_message != nullptr) {
        try {
            *m_message = {sentence, {arguments.begin(), arguments.end()}};
        } catch (const std::bad_alloc&) {
            *m_message = {};
        }
    }
    return -1;
}

const char* systemErrorText(int errorNumber)
{
    return std::strerror(errorNumber);
}

}  // namespace discio
