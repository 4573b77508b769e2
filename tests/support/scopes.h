// Objects that change the process during their lifetime and restore it afterwards.
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

class Scope {
public:
    Scope() = default;
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
};

// The system makes no thread: each would get a stack that is larger than the address space, which the kernel refuses,
// as it does if memory or the number of threads is exhausted.
class NoThreads : Scope {
public:
    NoThreads() { setStackSize(std::size_t{1} << 47U); }
    ~NoThreads() { setStackSize(std::size_t{8} << 20U); }  // the default

private:
    static void setStackSize(std::size_t bytes)
    {
        pthread_attr_t attributes;
        ::pthread_attr_init(&attributes);
        ::pthread_attr_setstacksize(&attributes, bytes);
        if (::pthread_setattr_default_np(&attributes) != 0) { throw std::runtime_error("no size of stacks"); }
        ::pthread_attr_destroy(&attributes);
    }
};

// A test that runs as root runs as another user, because root ignores permission bits.
class UnprivilegedUser : Scope {
public:
    UnprivilegedUser()
    {
        if (m_wasRoot && ::seteuid(kNobody) != 0) { throw std::runtime_error("cannot become another user"); }
    }
    ~UnprivilegedUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0) { ::_exit(1); }  // the other tests need root
    }

private:
    static constexpr uid_t kNobody = 65534;
    bool m_wasRoot = ::geteuid() == 0;
};

// An environment variable has another value.
class ScopedEnvironment : Scope {
public:
    ScopedEnvironment(const char* name, const std::string& value)
        : m_name(name)
    {
        if (const char* const former = std::getenv(name)) { m_former = former; }
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() { m_former ? ::setenv(m_name, m_former->c_str(), 1) : ::unsetenv(m_name); }

private:
    const char* m_name;
    std::optional<std::string> m_former;
};

// A file receives what the process writes to standard error: the program's log.
class CapturedLog : Scope {
public:
    CapturedLog()
    {
        std::FILE* const file = std::tmpfile();
        if (file == nullptr || ::dup2(::fileno(file), STDERR_FILENO) < 0) {
            throw std::runtime_error("cannot capture standard error");
        }
        std::fclose(file);
    }
    ~CapturedLog()
    {
        ::dup2(m_former, STDERR_FILENO);
        ::close(m_former);
    }

    [[nodiscard]] static std::vector<std::string> lines()
    {
        std::ifstream file("/proc/self/fd/2");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

private:
    int m_former = ::dup(STDERR_FILENO);
};

}  // namespace testsupport
