// HelperWatch over a channel that plays what a helper writes. helper_channel_test.cpp tests the real channel.
#include "monitor/helper_message.h"
#include "monitor/helper_watch.h"
#include "tests/monitor/reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <semaphore>

namespace {

using testsupport::textOf;

constexpr std::uint32_t kError = 5;

enum End { kCloses, kStaysOpen };

// What the helper and the system do.
struct Script {
    std::string bytes = {};    // the helper writes these
    End end = kCloses;         // after them
    std::string failing = {};  // this call fails with kError, "connect later" after cancelIo()
};

class FakeChannel final : public monitor::HelperChannel {
public:
    FakeChannel(Script script, std::size_t step, std::string& calls)
        : m_script(std::move(script))
        , m_step(step)
        , m_calls(calls)
    {}

    std::uint32_t createPipe(const std::string& name) override { return call("pipe " + name); }
    std::uint32_t createStopEvent(const std::string& name) override { return call("event " + name); }
    bool fileExists(const std::string& path) const override
    {
        return path == "helper" && m_script.failing != "file";
    }
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
        const std::string bytes = m_script.bytes.substr(0, std::min(m_step, buffer.size()));
        if (bytes.empty() && m_script.end == kStaysOpen) { waitForCancel(); }
        m_script.bytes.erase(0, bytes.size());
        std::copy(bytes.begin(), bytes.end(), buffer.begin());
        return bytes.size();
    }
    void signalStop() override { call("stop"); }
    void cancelIo() override { m_cancels.release(); }
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
    void waitForCancel()
    {
        m_cancels.acquire();  // comes too early
        m_cancels.acquire();
    }

    Script m_script;
    std::size_t m_step;  // bytes of one read
    std::string& m_calls;
    std::counting_semaphore<> m_cancels{0};
};

const std::string kPipe = "pipe Platterscope-ETW-u\n";
const std::string kOpening = kPipe + "event Local\\Platterscope-ETW-Stop-u\n";
const std::string kRoot = R"(E:\two words\a"b\"c\\"d\\)";
const std::string kLaunch =
    R"(launch helper --pipe "Platterscope-ETW-u" --root "E:\two words\a\"b\\\"c\\\\\"d\\\\" )"
    R"(--stop-event "Local\Platterscope-ETW-Stop-u" --parent-pid 4711)"
    "\n";
const std::string kClosing = "stop\nclose pipe\nrelease 5000\nclose event\n";

// A message of this kind. It announces the length of the payload or another one.
std::string message(std::uint32_t kind, const std::string& payload = {},
                    std::optional<std::size_t> length = {})
{
    std::string bytes;
    for (const std::size_t number : {std::size_t{kind}, length.value_or(payload.size())}) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(number >> shift & 0xFFU);
        }
    }
    return bytes + payload;
}

TEST(HelperWatch, ReportsMessagesUpToTheFirstFailure)
{
    const std::string a = message(2, "a");
    const std::string full(65'536, 'x');
    const struct {
        Script script;
        std::string reports;
        std::string calls = kOpening + kLaunch + kClosing;
    } rows[] = {
        {{""}, "FAILED HelperStopped"},
        {{message(1, "ignored") + message(2, "/d/a.mpls") + message(3, "/d/a.mpls") + message(3)},
         "OPEN a.mpls; CLOSE a.mpls; CLOSE ; FAILED HelperStopped"},
        {{a + message(2).substr(0, 7)}, "OPEN a; FAILED HelperStopped"},
        {{a + message(3, "abc", 4)}, "OPEN a; FAILED HelperStopped"},
        {{message(5, "x", 2)}, "FAILED HelperStopped"},
        {{message(2, full) + message(3, "\xFF b")}, "OPEN " + full + "; CLOSE \xFF b; FAILED HelperStopped"},
        {{a + message(2, "", 65'537), kStaysOpen}, "OPEN a; FAILED InvalidMessage"},
        {{message(9, "", UINT32_MAX), kStaysOpen}, "FAILED InvalidMessage"},
        {{a + message(0, "x") + a, kStaysOpen}, "OPEN a; FAILED UnknownMessage"},
        {{message(5), kStaysOpen}, "FAILED UnknownMessage"},
        {{message(UINT32_MAX, "x"), kStaysOpen}, "FAILED UnknownMessage"},
        {{a + message(4, "No right \xC3\xA9!") + a, kStaysOpen},
         "OPEN a; FAILED HelperFailed No right \xC3\xA9!"},
        {{message(4), kStaysOpen}, "FAILED HelperFailed"},
        {{"", kStaysOpen, "pipe"}, "FAILED PipeNotCreated 5", kPipe + kClosing},
        {{"", kStaysOpen, "event"}, "FAILED StopEventNotCreated 5", kOpening + kClosing},
        {{"", kStaysOpen, "file"}, "FAILED HelperMissing", kOpening + kClosing},
        {{"", kStaysOpen, "launch"}, "FAILED LaunchFailed 5"},
        {{"", kStaysOpen, "connect"}, "FAILED NotConnected 5"},
        // A watch that is stopped reports no further failure, whatever its reader is doing.
        {{"", kStaysOpen, "connect later"}, ""},
        {{"", kStaysOpen}, ""},
        {{a + a.substr(0, 8), kStaysOpen}, "OPEN a"},
    };
    for (const auto& row : rows) {
        for (const std::size_t step : {1U, 7U, 30'000U}) {
            if (1000 * step < row.script.bytes.size()) { continue; }
            SCOPED_TRACE(row.reports.substr(0, 80) + " in steps of " + std::to_string(step));
            std::string calls;
            testsupport::Reports reports;
            monitor::HelperWatch watch(std::make_unique<FakeChannel>(row.script, step, calls), "helper", "u");
            std::string text = textOf(watch.start(kRoot, reports.sink()));
            const auto separators = std::count(row.reports.begin(), row.reports.end(), ';');
            if (text.empty()) { text = reports.after("", row.reports.empty() ? 0 : separators + 1); }
            ASSERT_EQ(text, row.reports);
            watch.stop();
            watch.stop();
            EXPECT_EQ(reports.text().find("FAILED", row.reports.size()), std::string::npos);
            EXPECT_EQ(calls, row.calls);
        }
    }
}

TEST(HelperMessage, IsCutAtTheEndOfACharacter)
{
    const std::string full(65'536, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"/a", "/a"},
        {full, full},
        {full + "y", full},
        {full.substr(3) + "\xF0\x9F\x92\xBF", full.substr(3)},
        {full.substr(4) + "\xF0\x9F\x92\xBFy", full.substr(4) + "\xF0\x9F\x92\xBF"},
        {full.substr(3) + "\x80\x80\x80\x80", full.substr(3) + "\x80\x80\x80"}};
    for (const auto& [payload, sent] : rows) {
        EXPECT_TRUE(monitor::encodeMessage(monitor::MessageKind::Closed, payload) == message(3, sent))
            << payload.size() << ' ' << payload.substr(0, 10);
    }
}

}  // namespace
