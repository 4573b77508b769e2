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
    Nothing = 1,  // no effect
    Opened = 2,   // the payload is the full path of the opened file
    Closed = 3,   // the payload is the full path of the closed file
    Failed = 4    // the helper ends; the payload is an error text and may be empty
};

struct MessageHeader {
    std::uint32_t kind = 0;  // as received: may be unknown
    std::uint32_t payloadBytes = 0;
};

[[nodiscard]] MessageHeader parseMessageHeader(std::span<const std::uint8_t, kMessageHeaderBytes> bytes);

// Returns the message, header and payload. A longer payload is cut to the limit, at the end of a character.
[[nodiscard]] std::string encodeMessage(MessageKind kind, std::string_view payload);

}  // namespace monitor
