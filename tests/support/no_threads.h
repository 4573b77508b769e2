// While the object lives, the system makes no thread: each would get a stack larger than there are addresses, which
// the kernel refuses, as it does where memory or the number of threads is exhausted.
#pragma once

#include <pthread.h>

#include <stdexcept>

namespace testsupport {

class NoThreads {
public:
    NoThreads() { setStackSize(std::size_t{1} << 47U); }
    ~NoThreads() { setStackSize(std::size_t{8} << 20U); }  // as by default
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

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

}  // namespace testsupport
