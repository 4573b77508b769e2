#include "monitor/directory_watch.h"
#include "tests/support/fault_table.h"
#include "tests/support/player.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unprivileged_user.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

namespace fs = std::filesystem;
using monitor::AccessEvent;
using monitor::DirectoryWatch;
using monitor::WatchFailure;
using testsupport::Player;
using testsupport::recordFault;

namespace {

constexpr std::chrono::seconds kPatience{20};
constexpr char kEndsWithMessage[] = "the watch ends with a message";

// Collects what a watch delivers.
class Reports {
public:
    monitor::WatchSink sink()
    {
        return {.onEvents =
                    [this](std::vector<AccessEvent> events) {
                        std::unique_lock lock(m_mutex);
                        m_changed.wait(lock, [this] { return !m_isHeld; });
                        m_events.insert(m_events.end(), events.begin(), events.end());
                        m_changed.notify_all();
                    },
                .onFailure =
                    [this](WatchFailure failure) {
                        const std::lock_guard lock(m_mutex);
                        m_failures.push_back(std::move(failure));
                        m_changed.notify_all();
                    }};
    }

    // Waits until `holds` is true of the events so far.
    template <typename Condition>
    bool waitFor(Condition holds)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kPatience, [&] { return holds(m_events); });
    }

    bool waitForEvents(std::size_t count)
    {
        return waitFor([count](const auto& events) { return events.size() >= count; });
    }

    // The kind of the one failure, once it has come.
    std::optional<WatchFailure::Kind> failure()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, kPatience, [&] { return !m_failures.empty(); });
        return m_failures.size() == 1 ? std::optional(m_failures[0].kind) : std::nullopt;
    }

    // "OPEN name", "CLOSE name" or, where others have it open as well, "close
    // name".
    std::vector<std::string> lines()
    {
        const std::lock_guard lock(m_mutex);
        std::vector<std::string> lines;
        for (const AccessEvent& event : m_events) {
            const bool isOpen = event.kind == AccessEvent::Kind::Open;
            lines.push_back((isOpen              ? "OPEN "
                             : event.isStillOpen ? "close "
                                                 : "CLOSE ") +
                            fs::path(event.path).filename().string());
        }
        return lines;
    }

    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_events.clear();
    }

    // Keeps the watch's thread inside its delivery, or lets it go.
    void hold(bool isHeld)
    {
        const std::lock_guard lock(m_mutex);
        m_isHeld = isHeld;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<AccessEvent> m_events;
    std::vector<WatchFailure> m_failures;
    bool m_isHeld = false;
};

class DirectoryWatchTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    DirectoryWatchTest()
    {
        fs::create_directories(m_root / "BDMV/STREAM");
        fs::create_directories(m_root / "BDMV/PLAYLIST");
        touch(m_playlist);
        touch(m_stream);
    }

    static void touch(const fs::path& path) { std::ofstream(path) << "bytes"; }

    // Starts the watch and returns once the whole tree is watched, which one of
    // the deepest files tells.
    [[nodiscard]] bool start()
    {
        if (m_watch.start(m_root, m_reports.sink())) { return false; }
        return untilSeen(m_stream) && untilSeen(m_playlist);
    }

    // Opens and closes the file until that is reported, then forgets all that
    // was.
    [[nodiscard]] bool untilSeen(const fs::path& path)
    {
        for (int i = 0; i < 1000; ++i) {
            m_player.openAndClose(path);
            m_player.openAndClose(m_root / "mark.mpls");
            if (m_reports.waitFor([&](const auto& events) {
                    return !events.empty() && fs::path(events.back().path).filename() == "mark.mpls" &&
                           events.back().kind == AccessEvent::Kind::Close;
                })) {
                const Lines lines = m_reports.lines();
                m_reports.clear();
                if (std::find(lines.begin(), lines.end(), "CLOSE " + path.filename().string()) !=
                    lines.end()) {
                    return true;
                }
            }
        }
        return false;
    }

    testsupport::TemporaryFolder m_folder;
    fs::path m_root = fs::canonical(m_folder.path()) / "disc";
    fs::path m_playlist = m_root / "BDMV/PLAYLIST/00800.mpls";
    fs::path m_stream = m_root / "BDMV/STREAM/00001.m2ts";
    Player m_player;
    Reports m_reports;
    DirectoryWatch m_watch;
};

TEST_F(DirectoryWatchTest, ReportsWhatASecondProcessOpensAndCloses)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    m_player.open(3, m_playlist);
    m_player.open(4, m_stream);
    m_player.open(5, m_stream);
    m_player.close(4);
    m_player.close(3);
    m_player.close(5);
    ASSERT_TRUE(m_reports.waitForEvents(6));
    EXPECT_EQ(m_reports.lines(), (Lines{"OPEN 00800.mpls", "OPEN 00001.m2ts", "OPEN 00001.m2ts",
                                        "close 00001.m2ts", "CLOSE 00800.mpls", "CLOSE 00001.m2ts"}));
}

// Equal events that follow each other, as when a process ends, which the kernel would make one of.
TEST_F(DirectoryWatchTest, CountsOpensAndClosesOfTheSameMoment)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    {
        Player player;
        m_reports.hold(true);
        m_player.openAndClose(m_playlist);  // keeps the watch busy
        player.open(3, m_stream);
        player.open(4, m_stream);
        player.open(5, m_stream);
    }
    m_reports.hold(false);
    ASSERT_TRUE(m_reports.waitForEvents(8));
    EXPECT_EQ(m_reports.lines(),
              (Lines{"OPEN 00800.mpls", "CLOSE 00800.mpls", "OPEN 00001.m2ts", "OPEN 00001.m2ts",
                     "OPEN 00001.m2ts", "close 00001.m2ts", "close 00001.m2ts", "CLOSE 00001.m2ts"}));
}

TEST_F(DirectoryWatchTest, AnOpenFileThatIsMovedCountsAsClosed)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    m_player.open(3, m_stream);
    m_player.open(4, m_playlist);
    fs::rename(m_stream, m_root / "BDMV/STREAM/moved.m2ts");
    fs::rename(m_root / "BDMV/PLAYLIST", m_folder.path() / "away");
    ASSERT_TRUE(m_reports.waitForEvents(4));
    EXPECT_EQ(m_reports.lines(),
              (Lines{"OPEN 00001.m2ts", "OPEN 00800.mpls", "CLOSE 00001.m2ts", "CLOSE 00800.mpls"}));
}

TEST_F(DirectoryWatchTest, NeedsNoRights)
{
    touch(m_root / "mark.mpls");
    ::chmod(m_folder.path().c_str(), 0755);
    fs::create_directory(m_root / "locked");
    ::chmod((m_root / "locked").c_str(), 0700);
    const testsupport::UnprivilegedUser user;
    ASSERT_TRUE(start());
    m_player.openAndClose(m_stream);
    ASSERT_TRUE(m_reports.waitForEvents(2));
    EXPECT_EQ(m_reports.lines(), (Lines{"OPEN 00001.m2ts", "CLOSE 00001.m2ts"}));
}

TEST_F(DirectoryWatchTest, FollowsTheTreeAndNothingOutOfIt)
{
    touch(m_root / "mark.mpls");
    const fs::path outside = m_folder.path() / "outside";
    fs::create_directory(outside);
    touch(outside / "00009.m2ts");
    fs::create_directory_symlink(outside, m_root / "BDMV/LINK");
    fs::create_symlink(outside / "00009.m2ts", m_root / "BDMV/STREAM/00009.m2ts");
    fs::create_symlink(m_stream, m_root / "BDMV/STREAM/00002.m2ts");
    ASSERT_TRUE(start());
    m_player.openAndClose(m_root / "BDMV/LINK/00009.m2ts");
    m_player.openAndClose(m_root / "BDMV/STREAM/00009.m2ts");
    m_player.openAndClose(m_root / "BDMV/STREAM/00002.m2ts");  // a link to a file inside: the file's own name
    ASSERT_TRUE(m_reports.waitForEvents(2));
    EXPECT_EQ(m_reports.lines(), (Lines{"OPEN 00001.m2ts", "CLOSE 00001.m2ts"}));

    // A directory that appears later, its directories with it; and one that
    // leaves the tree.
    m_player.run("mkdir -p '" + (m_root / "new/deep").string() + "'");
    touch(m_root / "new/deep/00003.m2ts");
    EXPECT_TRUE(untilSeen(m_root / "new/deep/00003.m2ts"));
    fs::rename(m_root / "new", outside / "moved");
    m_player.openAndClose(outside / "moved/deep/00003.m2ts");
    m_player.openAndClose(m_playlist);
    ASSERT_TRUE(m_reports.waitForEvents(2));
    fs::rename(outside / "moved", m_root / "back");
    EXPECT_TRUE(untilSeen(m_root / "back/deep/00003.m2ts"));
}

TEST_F(DirectoryWatchTest, LosesNoneOfAHundredThousandOpens)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    constexpr std::size_t kOpensAtOnce = 2000;  // the kernel keeps 16,384 events
    for (std::size_t opens = kOpensAtOnce; opens <= 100'000; opens += kOpensAtOnce) {
        m_player.openAndClose(m_stream, kOpensAtOnce);
        ASSERT_TRUE(m_reports.waitForEvents(2 * opens));
    }
    EXPECT_EQ(m_reports.lines().size(), 200'000U);
}

TEST_F(DirectoryWatchTest, WatchesALargeTreeWithoutDrowningInItself)
{
    for (int i = 0; i < 4500; ++i) {
        fs::create_directories(m_root / std::to_string(i % 60) / std::to_string(i));
    }
    touch(m_root / "mark.mpls");
    EXPECT_TRUE(start());
}

TEST_F(DirectoryWatchTest, LostEventsEndTheWatch)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    m_reports.hold(true);
    m_player.openAndClose(m_stream, 20'000);  // the kernel keeps 16,384 events
    m_reports.hold(false);
    EXPECT_EQ(m_reports.failure(), WatchFailure::Kind::EventsLost);
    recordFault("Monitor: more events than the system keeps", kEndsWithMessage);
}

TEST_F(DirectoryWatchTest, ARemovedOrRenamedRootEndsTheWatch)
{
    touch(m_root / "mark.mpls");
    ASSERT_TRUE(start());
    m_player.run("rm -r '" + (m_root / "BDMV/STREAM").string() + "'");  // not the root
    m_player.run("mv '" + m_root.string() + "' '" + m_root.string() + ".away'");
    EXPECT_EQ(m_reports.failure(), WatchFailure::Kind::RootGone);
    m_watch.stop();

    fs::rename(m_root.string() + ".away", m_root);
    Reports reports;
    DirectoryWatch watch;
    ASSERT_FALSE(watch.start(m_root, reports.sink()));
    m_player.run("rm -r '" + m_root.string() + "'");
    EXPECT_EQ(reports.failure(), WatchFailure::Kind::RootGone);
    recordFault("Monitor: the disc is removed, renamed or unmounted", kEndsWithMessage, 2);
}

TEST_F(DirectoryWatchTest, WhatCannotBeWatchedIsRefused)
{
    const auto kindFor = [](const fs::path& root) {
        DirectoryWatch watch;
        const auto failure = watch.start(root, {});
        return failure ? std::optional(failure->kind) : std::nullopt;
    };
    EXPECT_EQ(kindFor(m_root / "absent"), WatchFailure::Kind::CannotWatch);
    EXPECT_EQ(kindFor(m_stream), WatchFailure::Kind::CannotWatch);
    EXPECT_EQ(kindFor(m_root),
              std::nullopt);  // and a watch that hears nothing ends at once
}

// What follows needs a user namespace of its own, in which the test runs once more.
class InNamespace : public DirectoryWatchTest {
protected:
    static bool isInside() { return std::getenv("PLATTERSCOPE_NAMESPACE") != nullptr; }

    // Runs this test inside, after `commands` of the shell. False where there are no such namespaces.
    static bool runInside(const std::string& commands)
    {
        if (std::system("unshare -Urm true") != 0) { return false; }
        const std::string self = fs::read_symlink("/proc/self/exe");
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        const std::string command = "unshare -Urm sh -c '" + commands +
                                    " PLATTERSCOPE_NAMESPACE=1 exec \"$0\" --gtest_filter=*." + name + "' '" +
                                    self + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return true;
    }
};

TEST_F(InNamespace, TheSystemsLimitEndsTheWatch)
{
    if (!isInside()) {
        if (!runInside("echo 3 >/proc/sys/user/max_inotify_watches &&")) { GTEST_SKIP(); }
        return;
    }
    ASSERT_FALSE(m_watch.start(m_root, m_reports.sink()));
    EXPECT_EQ(m_reports.failure(), WatchFailure::Kind::TooManyWatches);
    DirectoryWatch second;  // not even its root
    const auto failure = second.start(m_root / "BDMV/STREAM", {});
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->kind, WatchFailure::Kind::TooManyWatches);
    recordFault("Monitor: the system has no more watches", kEndsWithMessage, 2);
}

TEST_F(InNamespace, AnUnmountedDiscEndsTheWatch)
{
    if (!isInside()) {
        if (!runInside("")) { GTEST_SKIP(); }
        return;
    }
    const std::string root = m_root;
    m_player.run("mount -t tmpfs none '" + root + "' && mkdir '" + root + "/BDMV'");
    for (const std::string& watched : {root + "/BDMV", root}) {
        Reports reports;
        DirectoryWatch watch;
        ASSERT_FALSE(watch.start(watched, reports.sink()));
        m_player.run("umount '" + root + "'");
        EXPECT_EQ(reports.failure(), WatchFailure::Kind::RootGone) << watched;
        m_player.run("mount -t tmpfs none '" + root + "'");
    }
    m_player.run("umount '" + root + "'");
    recordFault("Monitor: the disc is removed, renamed or unmounted", kEndsWithMessage, 2);
}

TEST_F(DirectoryWatchTest, NothingIsLeftBehind)
{
    touch(m_root / "mark.mpls");
    const auto count = [](const char* directory) {
        return std::distance(fs::directory_iterator(directory), fs::directory_iterator());
    };
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;
    for (int i = 0; i < 50; ++i) {
        Reports reports;
        DirectoryWatch watch;
        ASSERT_FALSE(watch.start(m_root, reports.sink()));
        m_player.openAndClose(m_stream, 10);
        if (i % 2 == 0) { watch.stop(); }
        if (i > 0) { continue; }
        descriptors = count("/proc/self/fd");  // with the first thread a sanitizer starts one of its own
        threads = count("/proc/self/task");
    }
    EXPECT_EQ(count("/proc/self/fd"), descriptors);
    // A thread that was joined stays listed for a moment.
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (count("/proc/self/task") > threads && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(count("/proc/self/task"), threads);
}

}  // namespace
