// What a target holds its results to: a broken promise is a finding like a crash.
#pragma once

#include <cstdlib>

namespace fuzz {

inline void abortUnless(bool isTrue)
{
    if (!isTrue) { std::abort(); }
}

}  // namespace fuzz
