#include "tests/scan/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

thread_local long allowedAllocations = -1;  // below 0: any number
thread_local bool endsForGood = false;      // else only one allocation fails
thread_local bool hasEnded = false;

bool isRefused()
{
    if (hasEnded && endsForGood && allowedAllocations == 0) { return true; }
    if (allowedAllocations < 0 || allowedAllocations-- > 0) { return false; }
    hasEnded = true;
    if (endsForGood) { allowedAllocations = 0; }
    return true;
}

void* allocate(std::size_t size)
{
    void* const memory = isRefused() ? nullptr : std::malloc(size > 0 ? size : 1);
    if (memory == nullptr) { throw std::bad_alloc(); }
    return memory;
}

}  // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return isRefused() ? nullptr : std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

bool testsupport::runsOut(long allocations, bool isForGood, const std::function<void()>& operation)
{
    hasEnded = false;
    endsForGood = isForGood;
    allowedAllocations = allocations;
    try {
        operation();
        allowedAllocations = -1;
    } catch (...) {
        allowedAllocations = -1;
        ADD_FAILURE() << "an exception after " << allocations << " allocations";
    }
    return hasEnded;
}
