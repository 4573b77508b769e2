#include "monitor/received_messages.h"

#include "monitor/helper_message.h"

#include <string>
#include <utility>

namespace monitor {

namespace {

using Kind = WatchFailure::Kind;

void takeMessage(std::uint32_t kind, std::string payload, ReceivedMessages& messages)
{
    switch (static_cast<MessageKind>(kind)) {
    case MessageKind::Nothing:
        return;
    case MessageKind::Opened:
        messages.events.push_back({AccessEvent::Kind::Open, std::move(payload), false});
        return;
    case MessageKind::Closed:
        messages.events.push_back({AccessEvent::Kind::Close, std::move(payload), false});
        return;
    case MessageKind::Failed:
        messages.failure = WatchFailure{Kind::HelperFailed, 0, std::move(payload)};
        return;
    }
    messages.failure = WatchFailure{Kind::UnknownMessage, 0, {}};
}

}  // namespace

ReceivedMessages takeMessages(std::span<const std::uint8_t> bytes)
{
    ReceivedMessages messages;
    while (!messages.failure && bytes.size() >= kMessageHeaderBytes) {
        const MessageHeader header = parseMessageHeader(bytes.first<kMessageHeaderBytes>());
        if (header.payloadBytes > kMaximumPayloadBytes) {
            messages.failure = WatchFailure{Kind::InvalidMessage, 0, {}};
            break;
        }
        if (header.payloadBytes > bytes.size() - kMessageHeaderBytes) { break; }
        const auto payload = bytes.subspan(kMessageHeaderBytes, header.payloadBytes);
        takeMessage(header.kind, std::string(payload.begin(), payload.end()), messages);
        messages.bytes += kMessageHeaderBytes + payload.size();
        bytes = bytes.subspan(kMessageHeaderBytes + payload.size());
    }
    return messages;
}

}  // namespace monitor
