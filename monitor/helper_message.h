// The messages a helper process writes to the pipe. One message:
//
//   offset  size    field
//   0       4       kind, unsigned little-endian
//   4       4       length of the payload in bytes, unsigned little-endian, at most 65,536
//   8       length  payload, UTF-8 text
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace monitor {

inline constexpr std::size_t kMessageHeaderBytes = 8;
inline constexpr std::uint32_t kMaximumPayloadBytes = 65'536;

enum class MessageKind : std::uint32_t {
    Nothing = 1,  // means only that the helper is there
    Opened = 2,   // the payload is the full path of a file that was opened
    Closed = 3,   // ... that was closed
    Failed = 4    // the helper ends; the payload says why, and may be empty
};

struct MessageHeader {
    std::uint32_t kind = 0;  // as received: may be no MessageKind
    std::uint32_t payloadBytes = 0;
};

[[nodiscard]] MessageHeader parseMessageHeader(std::span<const std::uint8_t, kMessageHeaderBytes> bytes);

// The whole message; a payload beyond the limit is cut to it, at the end of a character.
[[nodiscard]] std::string encodeMessage(MessageKind kind, std::string_view payload);

}  // namespace monitor
