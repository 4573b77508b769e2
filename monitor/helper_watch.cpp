#include "monitor/helper_watch.h"

#include "monitor/helper_message.h"
#include "monitor/received_messages.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace monitor {

namespace {

using Kind = WatchFailure::Kind;

constexpr std::chrono::milliseconds kHelperEndLimit{5000};
constexpr std::chrono::milliseconds kCancelInterval{10};

}  // namespace

HelperWatch::HelperWatch(std::unique_ptr<HelperChannel> channel, std::string executable,
                         const std::string& uuid)
    : m_channel(std::move(channel))
    , m_executable(std::move(executable))
    , m_names(helperNames(uuid))
{}

HelperWatch::~HelperWatch()
{
    HelperWatch::stop();
}

std::optional<WatchFailure> HelperWatch::start(const std::string& root, WatchSink sink)
{
    m_sink = std::move(sink);
    std::optional<WatchFailure> failure = launchHelper(root);
    if (!failure) { failure = startReader(); }
    if (failure) {
        m_channel->signalStop();
        release();
    }
    return failure;
}

void HelperWatch::stop()
{
    if (!m_reader.joinable()) { return; }
    m_isRunning = false;
    m_channel->signalStop();
    const std::future<void> readerEnd = m_readerEnd.get_future();
    do {
        m_channel->cancelIo();
    } while (readerEnd.wait_for(kCancelInterval) != std::future_status::ready);
    m_reader.join();
    release();
}

std::optional<WatchFailure> HelperWatch::launchHelper(const std::string& root)
{
    if (const std::uint32_t error = m_channel->createPipe(m_names.pipe); error != 0) {
        return WatchFailure{Kind::PipeNotCreated, error, {}};
    }
    if (const std::uint32_t error = m_channel->createStopEvent(m_names.stopEvent); error != 0) {
        return WatchFailure{Kind::StopEventNotCreated, error, {}};
    }
    if (!m_channel->fileExists(m_executable)) { return WatchFailure{Kind::HelperMissing, 0, {}}; }
    const std::string parameters = helperParameters(m_names, root, m_channel->currentProcessId());
    if (const std::uint32_t error = m_channel->launch(m_executable, parameters); error != 0) {
        return WatchFailure{Kind::LaunchFailed, error, {}};
    }
    return std::nullopt;
}

std::optional<WatchFailure> HelperWatch::startReader()
{
    m_isRunning = true;
    try {
        m_reader = std::thread(&HelperWatch::runReader, this);
    } catch (const std::system_error& error) {
        m_isRunning = false;
        return WatchFailure{Kind::LaunchFailed, static_cast<std::uint32_t>(error.code().value()), {}};
    }
    return std::nullopt;
}

void HelperWatch::runReader()
{
    WatchFailure failure{Kind::HelperStopped, 0, {}};
    try {
        failure = readMessages();
    } catch (const std::bad_alloc&) {
        // Reported as HelperStopped: no further message can be read.
    }
    if (m_isRunning.exchange(false)) { m_sink.onFailure(failure); }
    m_readerEnd.set_value();
}

// Returns why reading ended; the caller decides whether to report it. Events are delivered after every read, so
// that none waits for the rest of the next message.
WatchFailure HelperWatch::readMessages()
{
    if (const std::uint32_t error = m_channel->waitForConnection(); error != 0) {
        return {Kind::NotConnected, error, {}};
    }
    // One maximal message. What is left of a read is an incomplete message, so there is always room for more.
    std::vector<std::uint8_t> buffer(kMessageHeaderBytes + kMaximumPayloadBytes);
    std::size_t filledBytes = 0;
    while (m_isRunning) {
        const std::size_t readBytes = m_channel->read(std::span(buffer).subspan(filledBytes));
        if (readBytes == 0) { break; }
        filledBytes += readBytes;
        ReceivedMessages messages = takeMessages(std::span(buffer).first(filledBytes));
        if (!messages.events.empty() && m_isRunning) { m_sink.onEvents(std::move(messages.events)); }
        if (messages.failure) { return *std::move(messages.failure); }
        const auto rest = std::span(buffer).first(filledBytes).subspan(messages.bytes);
        std::copy(rest.begin(), rest.end(), buffer.begin());
        filledBytes = rest.size();
    }
    return {Kind::HelperStopped, 0, {}};
}

void HelperWatch::release()
{
    m_channel->closePipe();
    m_channel->releaseProcess(kHelperEndLimit);
    m_channel->closeStopEvent();
}

}  // namespace monitor
