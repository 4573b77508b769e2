// What a helper's pipe has brought so far, taken apart: the reading side of helper_message.h.
#pragma once

#include "monitor/access_watch.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace monitor {

struct ReceivedMessages {
    std::size_t bytes = 0;  // taken from the beginning
    std::vector<AccessEvent> events;
    std::optional<WatchFailure> failure;  // what follows it is of no interest
};

// The whole messages that `bytes` begin with. A message is judged by its length as soon as its header is there, and by
// its kind when it is whole; the first that is wrong, or that says that the helper failed, ends them.
[[nodiscard]] ReceivedMessages takeMessages(std::span<const std::uint8_t> bytes);

}  // namespace monitor
