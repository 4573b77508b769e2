// While the object lives, the system makes no thread: each would get a stack larger than there are addresses, which
// the kernel refuses, as it does where memory or the number of threads is exhausted.
#pragma once

#include <pthread.h>

#include <stdexcept>

namespace testsupport {

class NoThreads {
public:
    NoThreads()
    {
        pthread_attr_t attributes;
        if (::pthread_getattr_default_np(&m_former) != 0 || ::pthread_getattr_default_np(&attributes) != 0 ||
            ::pthread_attr_setstacksize(&attributes, kImpossibleBytes) != 0 ||
            ::pthread_setattr_default_np(&attributes) != 0) {
            throw std::runtime_error("cannot set the size of stacks");
        }
        ::pthread_attr_destroy(&attributes);
    }
    ~NoThreads()
    {
        ::pthread_setattr_default_np(&m_former);
        ::pthread_attr_destroy(&m_former);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    static constexpr std::size_t kImpossibleBytes = std::size_t{1} << 47U;
    pthread_attr_t m_former{};
};

}  // namespace testsupport
