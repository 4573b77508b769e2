#include "monitor/helper_client.h"
#include "tests/monitor/helper_watch_fixture.h"

#include <future>
#include <ostream>

namespace {

using Kind = monitor::WatchFailure::Kind;
using Lines = std::vector<std::string>;
using testsupport::heldResources;
using testsupport::HelperWatchTest;
using testsupport::kBrokenPipe;

TEST_F(HelperWatchTest, ReportsOpensAndClosesInOrderUntilItIsStopped)
{
    ASSERT_EQ(start(m_watch, "connect\nmessage 2 /d/00001.mpls\nmessage 1 ignored\nmessage 3 /d/00001.mpls\n"
                             "message 2 /d/\xFFnotes .TXT\nmessage 3\nwait\n"),
              std::nullopt);
    m_recorder.waitForEvents(4);
    EXPECT_FALSE(wasHelperStopped());
    m_watch.stop();
    EXPECT_TRUE(wasHelperStopped());
    EXPECT_EQ(m_recorder.lines(), Lines({"O /d/00001.mpls", "C /d/00001.mpls", "O /d/\xFFnotes .TXT", "C "}));
    EXPECT_TRUE(m_recorder.failures.empty());
}

struct FailureCase {
    const char* name;
    const char* script;
    Kind kind;
    const char* text = "";
    Lines lines = {};  // what is reported before
};

// How the case is called in lists of tests; the toolkit of tests would print its bytes.
void PrintTo(const FailureCase& one, std::ostream* out)
{
    *out << one.name;
}

class HelperWatchFailure : public HelperWatchTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(HelperWatchFailure, IsReportedOnce)
{
    const FailureCase& expected = GetParam();
    ASSERT_NO_FATAL_FAILURE(watchUntilFailure(expected.script));
    const monitor::WatchFailure& failure = m_recorder.failures.front();
    EXPECT_EQ(failure.kind, expected.kind);
    EXPECT_EQ(failure.text, expected.text);
    EXPECT_EQ(failure.errorNumber, expected.kind == Kind::NotConnected ? kBrokenPipe : 0U);
    EXPECT_EQ(m_recorder.lines(), expected.lines);
}

// A helper that waits after its last message shows that the failure needed no more bytes.
const FailureCase kFailureCases[] = {
    {"EndedBeforeConnecting", "", Kind::NotConnected},
    {"EndedBetweenMessages", "connect\nmessage 2 a\n", Kind::HelperStopped, "", {"O a"}},
    {"EndedAtOnce", "connect\n", Kind::HelperStopped},
    {"EndedInHeader", "connect\nmessage 3 a\nbytes 2 0 0 0 1 0 0\n", Kind::HelperStopped, "", {"C a"}},
    {"EndedInPayload", "connect\nheader 2 4\ntext abc\n", Kind::HelperStopped},
    {"EndedBeforePayload", "connect\nheader 4 4\n", Kind::HelperStopped},
    {"KilledInPayload",
     "connect\nmessage 2 a\nheader 2 65536\nfill 65535\nkill\n",
     Kind::HelperStopped,
     "",
     {"O a"}},
    {"TooLong", "connect\nmessage 2 a\nheader 2 65537\nwait\n", Kind::InvalidMessage, "", {"O a"}},
    {"TooLongByFar", "connect\nheader 1 4294967295\nwait\n", Kind::InvalidMessage},
    {"TooLongAndUnknown", "connect\nheader 9 65537\nwait\n", Kind::InvalidMessage},
    {"UnknownKind0", "connect\nmessage 2 a\nmessage 0 b\nwait\n", Kind::UnknownMessage, "", {"O a"}},
    {"UnknownKind5", "connect\nmessage 5\nwait\n", Kind::UnknownMessage},
    {"UnknownGreatestKind", "connect\nmessage 4294967295 b\nwait\n", Kind::UnknownMessage},
    {"UnknownButIncomplete", "connect\nheader 5 2\ntext b\n", Kind::HelperStopped},
    {"FailedWithText",
     "connect\nmessage 2 a\nmessage 4 No right \xC3\xA9!\nmessage 2 b\nmessage 0\nwait\n",
     Kind::HelperFailed,
     "No right \xC3\xA9!",
     {"O a"}},
    {"FailedWithoutText", "connect\nmessage 4\n", Kind::HelperFailed}};

INSTANTIATE_TEST_SUITE_P(Each, HelperWatchFailure, testing::ValuesIn(kFailureCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(HelperWatchTest, PayloadMayHave65536Bytes)
{
    ASSERT_EQ(start(m_watch, "connect\nheader 2 65536\nfill 65536\nmessage 3 next\nwait\n"), std::nullopt);
    m_recorder.waitForEvents(2);
    m_watch.stop();
    EXPECT_EQ(m_recorder.lines(), Lines({"O " + std::string(65'536, 'x'), "C next"}));
}

TEST_F(HelperWatchTest, MessagesMayComeByteByByte)
{
    ASSERT_NO_FATAL_FAILURE(watchUntilFailure("connect\nbytewise\nnumber 300\nmessage 4 over\n"));
    ASSERT_EQ(m_recorder.events.size(), 300U);
    EXPECT_EQ(m_recorder.lines().back(), "C 299");
    EXPECT_EQ(m_recorder.failures.front().text, "over");
}

TEST_F(HelperWatchTest, ManyMessagesComeInOrder)
{
    constexpr int kCount = 100'000;
    ASSERT_EQ(start(m_watch, "connect\nnumber " + std::to_string(kCount) + "\nwait\n"), std::nullopt);
    m_recorder.waitForEvents(kCount);
    m_watch.stop();
    Lines expected;
    for (int i = 0; i < kCount; ++i) {
        expected.push_back((i % 2 == 0 ? "O " : "C ") + std::to_string(i));
    }
    EXPECT_TRUE(m_recorder.lines() == expected);  // EXPECT_EQ would print both
}

TEST_F(HelperWatchTest, EventIsNotHeldBackByAnIncompleteMessage)
{
    ASSERT_EQ(start(m_watch, "connect\nmessage 2 a\nheader 2 9\ntext half\nwait\n"), std::nullopt);
    m_recorder.waitForEvents(1);
    m_watch.stop();
    EXPECT_EQ(m_recorder.lines(), Lines({"O a"}));
    EXPECT_TRUE(m_recorder.failures.empty());
}

TEST_F(HelperWatchTest, StopsWhileMessagesPourIn)
{
    ASSERT_EQ(start(m_watch, "connect\nflood\n"), std::nullopt);
    m_recorder.waitForEvents(1000);
    m_watch.stop();
    m_watch.stop();
    EXPECT_TRUE(m_recorder.failures.empty());
}

TEST_F(HelperWatchTest, StopsAtAnyMomentOfItsStart)
{
    for (int i = 0; i < 20; ++i) {
        monitor::HelperWatch watch(TEST_HELPER, m_uuid);
        ASSERT_EQ(start(watch, "connect\nmessage 2 a\n" + std::string(i % 2 == 0 ? "wait\n" : "flood\n")),
                  std::nullopt);
        if (i % 4 < 2) { watch.stop(); }  // else by its destructor
    }
    EXPECT_TRUE(m_recorder.failures.empty());
}

TEST_F(HelperWatchTest, FailedStartLeavesItsNamesToOthers)
{
    for (const std::string& missing : {rootText(), rootText() + "/none"}) {  // a directory is no helper
        monitor::HelperWatch watch(missing, m_uuid);
        const auto failure = start(watch, "");
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->kind, Kind::HelperMissing);
        EXPECT_EQ(heldResources(m_names), m_heldBefore);
        watch.stop();
    }
    ASSERT_NO_FATAL_FAILURE(watchUntilFailure("connect\nmessage 4 was here\n"));
    EXPECT_EQ(m_recorder.failures.front().text, "was here");
}

TEST_F(HelperWatchTest, ArgumentsArriveAsTheyAre)
{
    const Lines arguments = {
        "",          "a b",  "a  \tb",  "\"",   "a\"b c\"",           "\\",     "\\\\",
        "C:\\a b\\", "\\\"", "a\\\\\"", "\"\"", "Stra\u00DFe \u20AC", "--pipe", "'*?' $HOME %PATH% `x`"};
    const std::string file = rootText() + "/arguments";
    std::string parameters = "--record " + monitor::quoteArgument(file);
    for (const std::string& argument : arguments) {
        parameters += ' ' + monitor::quoteArgument(argument);
    }
    monitor::HelperChannel channel;
    ASSERT_EQ(channel.launch(TEST_HELPER, parameters), 0U);
    channel.releaseProcess(testsupport::kPatience);
    std::ifstream recorded(m_root / "arguments", std::ios::binary);
    Lines found;
    for (std::string argument; std::getline(recorded, argument, '\0');) {
        found.push_back(argument);
    }
    EXPECT_EQ(found, arguments);
}

TEST_F(HelperWatchTest, ClientHearsOfTheStopEachTimeAndOfTheClosedPipe)
{
    monitor::HelperChannel channel;
    ASSERT_EQ(channel.createPipe(m_names.pipe), 0U);
    ASSERT_EQ(channel.createStopEvent(m_names.stopEvent), 0U);
    monitor::HelperClient client;
    ASSERT_EQ(client.connect(m_names.pipe, m_names.stopEvent, monitor::currentProcessId()), 0U);
    channel.signalStop();
    client.waitForStop();
    client.waitForStop();
    channel.closePipe();
    EXPECT_FALSE(client.write("nobody reads this"));
}

// The client's parent is a helper here, which ends when it is stopped.
TEST_F(HelperWatchTest, ClientHearsOfItsParentsEnd)
{
    monitor::HelperWatch parent(TEST_HELPER, m_uuid + "-parent");
    ASSERT_EQ(start(parent, "connect\npid\nwait\n"), std::nullopt);
    m_recorder.waitForEvents(1);
    ASSERT_FALSE(m_recorder.events.empty());
    const std::uint64_t parentProcessId = std::stoull(m_recorder.events.front().path);

    monitor::HelperChannel channel;
    ASSERT_EQ(channel.createPipe(m_names.pipe), 0U);
    ASSERT_EQ(channel.createStopEvent(m_names.stopEvent), 0U);
    monitor::HelperClient client;
    ASSERT_EQ(client.connect(m_names.pipe, m_names.stopEvent, parentProcessId), 0U);
    std::future<void> heard = std::async(std::launch::async, [&] { client.waitForStop(); });
    // By then a wait that does not wait would be over.
    EXPECT_EQ(heard.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    parent.stop();
    EXPECT_EQ(heard.wait_for(testsupport::kPatience), std::future_status::ready);
    channel.signalStop();
    monitor::HelperClient orphan;
    EXPECT_NE(orphan.connect(m_names.pipe, m_names.stopEvent, parentProcessId), 0U);
}

}  // namespace
