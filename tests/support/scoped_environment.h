// An environment variable that holds another value while the object lives.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace testsupport {

class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::string& value)
        : m_name(std::move(name))
    {
        if (const char* const former = std::getenv(m_name.c_str())) { m_former = former; }
        ::setenv(m_name.c_str(), value.c_str(), 1);
    }
    ~ScopedEnvironment()
    {
        m_former ? ::setenv(m_name.c_str(), m_former->c_str(), 1) : ::unsetenv(m_name.c_str());
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_former;
};

}  // namespace testsupport
