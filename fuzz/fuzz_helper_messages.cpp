// What a helper's pipe brings: all at once and in pieces, which must come to the same.
#include "fuzz/abort_unless.h"
#include "monitor/received_messages.h"

#include <string>

namespace {

struct Outcome {
    std::string events;
    bool isFailed = false;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

void add(const monitor::ReceivedMessages& messages, Outcome& outcome)
{
    for (const monitor::AccessEvent& event : messages.events) {
        outcome.events += event.kind == monitor::AccessEvent::Kind::Open ? '+' : '-';
        outcome.events += event.path;
    }
    outcome.isFailed = messages.failure.has_value();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span<const std::uint8_t> bytes(data, size);
    Outcome whole;
    add(monitor::takeMessages(bytes), whole);

    Outcome inPieces;
    std::size_t taken = 0;
    const std::size_t step = size == 0 ? 1 : 1 + data[0] % 16;
    for (std::size_t end = 0; end < size && !inPieces.isFailed;) {
        end = end + step < size ? end + step : size;
        const monitor::ReceivedMessages messages = monitor::takeMessages(bytes.subspan(taken, end - taken));
        fuzz::abortUnless(messages.bytes <= end - taken);
        taken += messages.bytes;
        add(messages, inPieces);
    }
    fuzz::abortUnless(whole == inPieces);
    return 0;
}
