// An environment variable that holds another value while the object lives. For tests that link Qt.
#pragma once

#include <QByteArray>

#include <string>

namespace testsupport {

class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value)
        : m_name(name)
    {
        qputenv(m_name, value.c_str());
    }
    ~ScopedEnvironment() { m_former.isNull() ? qunsetenv(m_name) : qputenv(m_name, m_former); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* m_name;
    QByteArray m_former = qgetenv(m_name);
};

}  // namespace testsupport
