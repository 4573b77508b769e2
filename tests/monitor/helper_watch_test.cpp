// HelperWatch over a channel that plays what a helper writes. helper_channel_test.cpp tests the real channel.
#include "monitor/helper_message.h"
#include "monitor/helper_watch.h"
#include "tests/monitor/reports.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using testsupport::textOf;
using Lock = std::unique_lock<std::mutex>;

constexpr std::uint32_t kError = 5;

// What the helper and the system do.
struct Script {
    std::string bytes = {};      // the helper writes these
    std::size_t step = 100'000;  // bytes of one read
    bool isEndless = false;      // the helper writes them again and again
    bool staysOpen = false;      // the pipe does not end after them
    std::string failing = {};    // this call fails with kError, "connect later" after cancelIo()
};

class FakeChannel final : public monitor::HelperChannel {
public:
    FakeChannel(Script script, std::string& calls)
        : m_script(std::move(script))
        , m_calls(calls)
    {}

    std::uint32_t createPipe(const std::string& name) override { return call("pipe " + name); }
    std::uint32_t createStopEvent(const std::string& name) override { return call("event " + name); }
    bool fileExists(const std::string& path) const override { return path == "helper"; }
    std::uint64_t currentProcessId() const override { return 4711; }
    std::uint32_t launch(const std::string& executable, const std::string& parameters) override
    {
        return call("launch " + executable + ' ' + parameters);
    }
    std::uint32_t waitForConnection() override
    {
        if (m_script.failing == "connect later") { waitForCancel(); }
        return m_script.failing.starts_with("connect") ? kError : 0;
    }
    std::size_t read(std::span<std::uint8_t> buffer) override
    {
        const std::string bytes = m_script.bytes.substr(0, std::min(m_script.step, buffer.size()));
        if (bytes.empty() && m_script.staysOpen) { waitForCancel(); }
        if (!m_script.isEndless) { m_script.bytes.erase(0, bytes.size()); }
        std::copy(bytes.begin(), bytes.end(), buffer.begin());
        return bytes.size();
    }
    void signalStop() override { call("stop"); }
    void cancelIo() override
    {
        const Lock lock(m_mutex);
        ++m_cancels;
        m_cancelled.notify_all();
    }
    void closePipe() override { call("close pipe"); }
    void releaseProcess(std::chrono::milliseconds limit) override
    {
        call("release " + std::to_string(limit.count()));
    }
    void closeStopEvent() override { call("close event"); }

private:
    std::uint32_t call(const std::string& text)
    {
        m_calls += text + '\n';
        return m_script.failing == text.substr(0, text.find(' ')) ? kError : 0;
    }
    void waitForCancel()  // the first one comes too early
    {
        Lock lock(m_mutex);
        m_cancelled.wait(lock, [this] { return m_cancels > 1; });
    }

    Script m_script;
    std::string& m_calls;
    std::mutex m_mutex;
    std::condition_variable m_cancelled;
    int m_cancels = 0;
};

const std::string kOpening = "pipe Platterscope-ETW-u\nevent Local\\Platterscope-ETW-Stop-u\n";
const std::string kRoot = R"(E:\two words\a"b\"c\\"d\\)";
const std::string kLaunch =
    R"(launch helper --pipe "Platterscope-ETW-u" --root "E:\two words\a\"b\\\"c\\\\\"d\\\\" )"
    R"(--stop-event "Local\Platterscope-ETW-Stop-u" --parent-pid 4711)"
    "\n";
const std::string kClosing = "stop\nclose pipe\nrelease 5000\nclose event\n";

// A watch over the channel, and the calls that it made.
struct Watched {
    explicit Watched(Script script, const std::string& executable = "helper")
        : watch(std::make_unique<FakeChannel>(std::move(script), calls), executable, "u")
    {}
    [[nodiscard]] auto start() { return watch.start(kRoot, reports.sink()); }

    std::string calls;
    testsupport::Reports reports;
    monitor::HelperWatch watch;
};

// A message of this kind that announces `length` bytes, and `payload`.
std::string message(std::uint32_t kind, std::uint32_t length, const std::string& payload)
{
    std::string bytes;
    for (const std::uint32_t number : {kind, length}) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(number >> shift & 0xFFU);
        }
    }
    return bytes + payload;
}
std::string message(std::uint32_t kind, const std::string& payload = {})
{
    return message(kind, static_cast<std::uint32_t>(payload.size()), payload);
}

TEST(HelperWatch, ReportsMessagesUpToTheFirstFailure)
{
    const std::string a = message(2, "a");
    const std::string full(65'536, 'x');
    const struct {
        std::string bytes;
        std::string reports;  // a failure other than HelperStopped needs no end of the pipe
    } rows[] = {
        {"", "FAILED HelperStopped"},
        {message(1, "ignored") + message(2, "/d/a.mpls") + message(3, "/d/a.mpls") + message(3),
         "OPEN a.mpls; CLOSE a.mpls; CLOSE ; FAILED HelperStopped"},
        {a + message(2).substr(0, 7), "OPEN a; FAILED HelperStopped"},
        {a + message(3, 4, "abc"), "OPEN a; FAILED HelperStopped"},
        {message(5, 2, "x"), "FAILED HelperStopped"},
        {message(2, full) + message(3, "\xFF b"), "OPEN " + full + "; CLOSE \xFF b; FAILED HelperStopped"},
        {a + message(2, 65'537, ""), "OPEN a; FAILED InvalidMessage"},
        {message(9, UINT32_MAX, ""), "FAILED InvalidMessage"},
        {a + message(0, "x") + a, "OPEN a; FAILED UnknownMessage"},
        {message(5), "FAILED UnknownMessage"},
        {message(UINT32_MAX, "x"), "FAILED UnknownMessage"},
        {a + message(4, "No right \xC3\xA9!") + a, "OPEN a; FAILED HelperFailed No right \xC3\xA9!"},
        {message(4), "FAILED HelperFailed"}};
    for (const auto& row : rows) {
        for (const std::size_t step : {1U, 7U, 30'000U}) {
            if (1000 * step < row.bytes.size()) { continue; }  // would take seconds
            SCOPED_TRACE(row.reports.substr(0, 80) + " in steps of " + std::to_string(step));
            Watched watched(
                {.bytes = row.bytes, .step = step, .staysOpen = !row.reports.ends_with("HelperStopped")});
            ASSERT_EQ(textOf(watched.start()), "");
            EXPECT_EQ(watched.reports.after("FAILED"), row.reports);
            watched.watch.stop();
            watched.watch.stop();
            EXPECT_EQ(watched.reports.text(), row.reports);
            EXPECT_EQ(watched.calls, kOpening + kLaunch + kClosing);
        }
    }
}

TEST(HelperWatch, AFailedStartIsReleased)
{
    const struct {
        const char* failing;
        const char* executable;
        const char* failure;
        std::string calls;
    } rows[] = {{"pipe", "helper", "FAILED PipeNotCreated 5", kOpening.substr(0, kOpening.find('\n') + 1)},
                {"event", "helper", "FAILED StopEventNotCreated 5", kOpening},
                {"", "missing", "FAILED HelperMissing", kOpening},
                {"launch", "helper", "FAILED LaunchFailed 5", kOpening + kLaunch}};
    for (const auto& row : rows) {
        Watched watched({.failing = row.failing}, row.executable);
        EXPECT_EQ(textOf(watched.start()), row.failure);
        EXPECT_EQ(watched.calls, row.calls + kClosing);
    }
}

// A watch that is stopped reports no further failure, whatever its reader is doing.
TEST(HelperWatch, StopsAtAnyMoment)
{
    const std::string a = message(2, "a");
    const struct {
        Script script;
        std::ptrdiff_t count;
        const char* reports;  // the first `count`
    } rows[] = {{{.failing = "connect"}, 1, "FAILED NotConnected 5"},
                {{.failing = "connect later"}, 0, ""},
                {{.staysOpen = true}, 0, ""},
                {{.bytes = a + a.substr(0, 8), .staysOpen = true}, 1, "OPEN a"},
                {{.bytes = a, .isEndless = true}, 2, "OPEN a; OPEN a"}};
    for (const auto& row : rows) {
        Watched watched(row.script);
        ASSERT_EQ(textOf(watched.start()), "");
        EXPECT_TRUE(watched.reports.after("", row.count).starts_with(row.reports));
        watched.watch.stop();
        EXPECT_EQ(watched.reports.text().find("FAILED", 1), std::string::npos);
        EXPECT_EQ(watched.calls, kOpening + kLaunch + kClosing);
    }
}

TEST(HelperMessage, IsCutAtTheEndOfACharacter)
{
    const std::string full(65'536, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"/a", "/a"},
        {full, full},
        {full + "y", full},
        {full.substr(1) + "\xC3\xA9", full.substr(1)},
        {full.substr(3) + "\xF0\x9F\x92\xBF", full.substr(3)},
        {full.substr(4) + "\xF0\x9F\x92\xBFy", full.substr(4) + "\xF0\x9F\x92\xBF"},
        {full.substr(3) + "\x80\x80\x80\x80", full.substr(3) + "\x80\x80\x80"}};
    for (const auto& [payload, sent] : rows) {
        EXPECT_TRUE(monitor::encodeMessage(monitor::MessageKind::Closed, payload) == message(3, sent))
            << payload.size() << ' ' << payload.substr(0, 10);
    }
}

}  // namespace
