// Parses the messages of helper_message.h from bytes that were read from the pipe.
#pragma once

#include "monitor/access_watch.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace monitor {

struct ReceivedMessages {
    std::size_t bytes = 0;  // bytes parsed, from the beginning
    std::vector<AccessEvent> events;
    std::optional<WatchFailure> failure;  // parsing ended here
};

// Parses the complete messages at the beginning of `bytes`, up to the first failure: a message that is too long or of
// an unknown kind, or a Failed message. A length is checked as soon as its header is complete, a kind only when its
// message is complete.
[[nodiscard]] ReceivedMessages takeMessages(std::span<const std::uint8_t> bytes);

}  // namespace monitor
