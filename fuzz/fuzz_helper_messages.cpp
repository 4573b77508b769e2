// What a helper's pipe brings: read at once and in pieces, which must give the same.
#include "fuzz/target.h"
#include "monitor/received_messages.h"

#include <algorithm>
#include <string>

namespace {

// The events and the failure, as text.
std::string textOf(const monitor::ReceivedMessages& messages)
{
    std::string text;
    for (const monitor::AccessEvent& event : messages.events) {
        text += (event.kind == monitor::AccessEvent::Kind::Open ? '+' : '-') + event.path;
    }
    return messages.failure ? text + '!' : text;
}

}  // namespace

void fuzz::target(Input input)
{
    const std::size_t step = input.empty() ? 1 : 1 + input[0] % 16U;
    std::string inPieces;
    std::size_t taken = 0;
    for (std::size_t end = 0; end < input.size();) {
        end = std::min(end + step, input.size());
        const monitor::ReceivedMessages messages = monitor::takeMessages(input.subspan(taken, end - taken));
        require(messages.bytes <= end - taken);
        taken += messages.bytes;
        inPieces += textOf(messages);
        if (messages.failure) { break; }
    }
    require(inPieces == textOf(monitor::takeMessages(input)));
}
