// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace native {

class Descriptor {
public:
    // Takes the result of open() or of a similar call; a negative number owns nothing.
    explicit Descriptor(int number)
        : m_number(number)
    {}
    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (isOpen()) { ::close(m_number); }
    }

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

}  // namespace native
