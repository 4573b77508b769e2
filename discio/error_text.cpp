#include "discio/error_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace discio {

ErrorText::ErrorText(char* text, std::size_t capacity)
    : m_text(capacity > 0 ? text : nullptr)
    , m_capacity(capacity)
{
    if (m_text != nullptr) { m_text[0] = '\0'; }
}

int ErrorText::fail(const char* format, ...) const
{
    if (m_text != nullptr) {
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(m_text, m_capacity, format, arguments);
        va_end(arguments);
    }
    return -1;
}

const char* systemErrorText(int errorNumber)
{
    return std::strerror(errorNumber);
}

}  // namespace discio
