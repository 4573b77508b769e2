#include "monitor/helper_message.h"

namespace monitor {

namespace {

constexpr unsigned kBitsPerByte = 8;
constexpr std::size_t kNumberBytes = 4;
constexpr std::size_t kMaximumContinuationBytes = 3;  // of a character in UTF-8

std::uint32_t littleEndian(std::span<const std::uint8_t, kNumberBytes> bytes)
{
    std::uint32_t value = 0;
    for (std::size_t i = kNumberBytes; i > 0; --i) {
        value = value << kBitsPerByte | bytes[i - 1];
    }
    return value;
}

void appendLittleEndian(std::string& bytes, std::uint32_t value)
{
    for (std::size_t i = 0; i < kNumberBytes; ++i) {
        bytes += static_cast<char>(value >> (i * kBitsPerByte) & 0xFFU);
    }
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Cuts at the end of a character. A payload that is not UTF-8 has none near the limit and is cut at the limit.
std::string_view cutToLimit(std::string_view payload)
{
    if (payload.size() <= kMaximumPayloadBytes) { return payload; }
    for (std::size_t cut = 0; cut <= kMaximumContinuationBytes; ++cut) {
        if (!isContinuation(payload[kMaximumPayloadBytes - cut])) {
            return payload.substr(0, kMaximumPayloadBytes - cut);
        }
    }
    return payload.substr(0, kMaximumPayloadBytes);
}

}  // namespace

MessageHeader parseMessageHeader(std::span<const std::uint8_t, kMessageHeaderBytes> bytes)
{
    return {.kind = littleEndian(bytes.first<kNumberBytes>()),
            .payloadBytes = littleEndian(bytes.last<kNumberBytes>())};
}

std::string encodeMessage(MessageKind kind, std::string_view payload)
{
    const std::string_view text = cutToLimit(payload);
    std::string message;
    message.reserve(kMessageHeaderBytes + text.size());
    appendLittleEndian(message, static_cast<std::uint32_t>(kind));
    appendLittleEndian(message, static_cast<std::uint32_t>(text.size()));
    message += text;
    return message;
}

}  // namespace monitor
