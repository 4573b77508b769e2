// Memory that runs out when it is told to: a program that links failing_allocation.cpp has its operator new.
#pragma once

#include <functional>

namespace testsupport {

// Runs `operation` on this thread with memory for so many allocations; the next one fails, or it and all behind it.
// Whether that was too little. An exception that leaves the operation fails the test. Other threads, such as a test's
// server, have all the memory they want.
bool runsOut(long allocations, bool isForGood, const std::function<void()>& operation);

}  // namespace testsupport
