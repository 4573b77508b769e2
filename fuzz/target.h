// A fuzz target: the function that fuzz_NAME.cpp defines. It is called for each input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace fuzz {

using Input = std::span<const std::uint8_t>;

void target(Input input);

// A broken promise is a finding, as a crash is.
inline void require(bool isTrue)
{
    if (!isTrue) { std::abort(); }
}

}  // namespace fuzz
