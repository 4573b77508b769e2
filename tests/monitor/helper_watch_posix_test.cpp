// What only the POSIX back end shows: the system's own numbers, rights, descriptors and processes.
#include "tests/monitor/helper_watch_fixture.h"
#include "tests/support/scoped_environment.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

namespace {

namespace fs = std::filesystem;
using Kind = monitor::WatchFailure::Kind;
using testsupport::heldResources;
using testsupport::HelperWatchTest;
using testsupport::ScopedEnvironment;

std::vector<int> inheritedDescriptors()
{
    std::vector<int> descriptors;
    for (int number = 0; number < 1024; ++number) {
        const int flags = ::fcntl(number, F_GETFD);
        if (flags >= 0 && (flags & FD_CLOEXEC) == 0) { descriptors.push_back(number); }
    }
    return descriptors;
}

class HelperWatchPosix : public HelperWatchTest {
protected:
    // A start of `executable` that fails and leaves nothing.
    void expectFailure(const std::string& executable, Kind kind, int errorNumber)
    {
        const std::string held = heldResources(m_names);
        monitor::HelperWatch watch(executable, m_uuid);
        const auto failure = start(watch, "connect\n");
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->kind, kind);
        EXPECT_EQ(failure->errorNumber, static_cast<std::uint32_t>(errorNumber));
        EXPECT_EQ(heldResources(m_names), held);
    }

    // A channel whose helper acts `script` out.
    void launch(monitor::HelperChannel& channel, const std::string& script)
    {
        writeScript(script);
        ASSERT_EQ(channel.createPipe(m_names.pipe), 0U);
        ASSERT_EQ(channel.createStopEvent(m_names.stopEvent), 0U);
        const std::string parameters =
            monitor::helperParameters(m_names, rootText(), monitor::currentProcessId());
        ASSERT_EQ(channel.launch(TEST_HELPER, parameters), 0U);
    }
};

TEST_F(HelperWatchPosix, RefusedPipe)
{
    {
        monitor::HelperChannel other;
        ASSERT_EQ(other.createPipe(m_names.pipe), 0U);
        expectFailure(TEST_HELPER, Kind::PipeNotCreated, EADDRINUSE);
    }
    {
        const ScopedEnvironment folder("TMPDIR", rootText() + '/' + std::string(200, 'x'));
        monitor::HelperWatch watch(TEST_HELPER, m_uuid);
        EXPECT_EQ(start(watch, "").value().errorNumber, static_cast<std::uint32_t>(ENAMETOOLONG));
    }
    const ScopedEnvironment folder("TMPDIR", rootText() + "/none");
    monitor::HelperWatch watch(TEST_HELPER, m_uuid);
    EXPECT_EQ(start(watch, "").value().errorNumber, static_cast<std::uint32_t>(ENOENT));
}

TEST_F(HelperWatchPosix, RefusedStopEvent)
{
    monitor::HelperChannel other;
    ASSERT_EQ(other.createStopEvent(m_names.stopEvent), 0U);
    expectFailure(TEST_HELPER, Kind::StopEventNotCreated, EEXIST);
}

TEST_F(HelperWatchPosix, RefusedLaunch)
{
    const fs::path file = m_root / "helper";
    std::ofstream(file) << "no program";
    expectFailure(file, Kind::LaunchFailed, EACCES);
    fs::permissions(file, fs::perms::owner_all);
    expectFailure(file, Kind::LaunchFailed, ENOEXEC);
}

TEST_F(HelperWatchPosix, PipeIsTheOwnersAndNothingIsInherited)
{
    const std::vector<int> before = inheritedDescriptors();
    ASSERT_EQ(start(m_watch, "connect\nmessage 2 a\nwait\n"), std::nullopt);
    m_recorder.waitForEvents(1);
    struct stat status = {};
    ASSERT_EQ(::stat((fs::temp_directory_path() / m_names.pipe).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFSOCK | 0600U);
    EXPECT_EQ(inheritedDescriptors(), before);
}

TEST_F(HelperWatchPosix, HelperThatConnectedWroteAndEndedHasConnected)
{
    monitor::HelperChannel channel;
    launch(channel, "connect\nmessage 2 a\n");
    siginfo_t end = {};
    ASSERT_EQ(::waitid(P_ALL, 0, &end, WEXITED | WNOWAIT), 0);
    ASSERT_EQ(channel.waitForConnection(), 0U);
    std::vector<std::uint8_t> bytes(64);
    EXPECT_EQ(channel.read(bytes), 9U);
    EXPECT_EQ(channel.read(bytes), 0U);
}

TEST_F(HelperWatchPosix, WaitAndReadAreCancelled)
{
    const auto begin = std::chrono::steady_clock::now();
    for (const char* const script : {"hang\n", "connect\nhang\n"}) {
        monitor::HelperChannel channel;
        ASSERT_NO_FATAL_FAILURE(launch(channel, script));
        const bool connects = *script == 'c';
        if (connects) { ASSERT_EQ(channel.waitForConnection(), 0U); }
        std::thread canceller([&] { channel.cancelIo(); });
        std::vector<std::uint8_t> bytes(64);
        if (connects) {
            EXPECT_EQ(channel.read(bytes), 0U);
        } else {
            EXPECT_EQ(channel.waitForConnection(), static_cast<std::uint32_t>(ECANCELED));
        }
        canceller.join();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));  // a helper hangs longer
}

TEST_F(HelperWatchPosix, HelperThatNeitherConnectsNorEndsIsEndedAfterFiveSeconds)
{
    ASSERT_EQ(start(m_watch, "hang\n"), std::nullopt);
    const auto begin = std::chrono::steady_clock::now();
    m_watch.stop();
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, std::chrono::seconds(5));
    EXPECT_LT(passed, std::chrono::seconds(20));
    EXPECT_TRUE(m_recorder.failures.empty());
}

}  // namespace
