// DirectoryWatch, with a real player process.
#include "monitor/directory_watch.h"
#include "tests/monitor/reports.h"
#include "tests/support/player.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unprivileged_user.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace fs = std::filesystem;
using testsupport::textOf;

namespace {

// A disc with one playlist (P/1.mpls) and one stream (S/1.m2ts), its watch, and a player, whose shell runs in the
// disc's directory.
struct Watched {
    Watched()
    {
        player.run("umask 022; chmod 755 '" + folder.path().string() + "'; mkdir -p '" + disc + "/P' '" +
                   disc + "/S'; cd '" + disc +
                   "'; for f in mark.mpls P/1.mpls S/1.m2ts S/UPPER.M2TS S/1.clpi; do echo >$f; done");
    }

    // Starts the watch. Returns whether the whole tree is watched, which takes a moment.
    [[nodiscard]] bool start()
    {
        return !watch.start(disc, reports.sink()) && isWatched("P/1.mpls") && isWatched("S/1.m2ts");
    }

    // What the watch reports of these shell commands.
    [[nodiscard]] std::string reportsOf(const std::string& commands)
    {
        reports.clear();
        player.run(commands + "\n: <'" + disc + "/mark.mpls'");
        const std::string text = reports.after("CLOSE mark.mpls");
        return text.substr(0, text.find("OPEN mark.mpls"));
    }

    // Whether opening the file is reported, at last.
    [[nodiscard]] bool isWatched(const std::string& file)
    {
        const std::string close = "CLOSE " + fs::path(file).filename().string();
        for (int i = 0; i < 1000; ++i) {
            if (reportsOf(": <" + file).find(close) != std::string::npos) { return true; }
            if (!reports.text().ends_with("CLOSE mark.mpls")) { return false; }
        }
        return false;
    }

    testsupport::TemporaryFolder folder;
    std::string disc = fs::canonical(folder.path()) / "disc";
    testsupport::Player player;
    testsupport::Reports reports;
    monitor::DirectoryWatch watch;
};

TEST(DirectoryWatch, ReportsWhatAPlayerOpensAndCloses)
{
    constexpr char kPlaylist[] = "OPEN 1.mpls; CLOSE 1.mpls; ";
    const struct {
        const char* before;  // the watch begins
        const char* commands;
        const char* reports;
    } rows[] = {
        {"", "exec 3<P/1.mpls 4<S/1.m2ts 5<S/1.m2ts 4<&- 3<&- 5<&-",
         "OPEN 1.mpls; OPEN 1.m2ts; OPEN 1.m2ts; close 1.m2ts; CLOSE 1.mpls; CLOSE 1.m2ts; "},
        {"exec 3<S/1.m2ts", "exec 3<&-", "CLOSE 1.m2ts; "},
        {"", ": <S/1.clpi; : <S/UPPER.M2TS", "OPEN UPPER.M2TS; CLOSE UPPER.M2TS; "},
        {"", "echo >S/new.m2ts", "OPEN new.m2ts; CLOSE new.m2ts; "},
        // A file that is moved while it is open counts as closed.
        {"", "exec 3<S/1.m2ts 4<P/1.mpls 5<S/1.m2ts; mv S/1.m2ts S/moved.m2ts; mv P ../away",
         "OPEN 1.m2ts; OPEN 1.mpls; OPEN 1.m2ts; CLOSE 1.m2ts; CLOSE 1.mpls; "},
        {"", "mv S ../away; : <../away/1.m2ts; : <P/1.mpls", kPlaylist},
        {"", "rm -r S; : <P/1.mpls", kPlaylist},
        // Links are followed only to files of the disc, which are reported by their own names.
        {"ln -s S/1.m2ts in.m2ts; mkdir ../out; echo >../out/2.m2ts; ln -s ../out dir; ln -s ../out/2.m2ts "
         "out.m2ts",
         ": <in.m2ts; : <out.m2ts; : <dir/2.m2ts", "OPEN 1.m2ts; CLOSE 1.m2ts; "},
        {"mkdir -m 700 locked", ": <P/1.mpls", kPlaylist},
        // Listing 4,500 directories makes events too.
        {"for i in $(seq 60); do mkdir $i; (cd $i; mkdir $(seq 75)); done", ": <P/1.mpls", kPlaylist}};
    const auto countDescriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto descriptors = countDescriptors();
    for (const auto& row : rows) {
        Watched watched;
        watched.player.run(row.before);
        const testsupport::UnprivilegedUser user;
        ASSERT_TRUE(watched.start()) << row.commands;
        EXPECT_EQ(watched.reportsOf(row.commands), row.reports) << row.commands;
    }
    EXPECT_EQ(countDescriptors(), descriptors);
}

TEST(DirectoryWatch, WatchesDirectoriesThatAppear)
{
    Watched watched;
    ASSERT_TRUE(watched.start());
    watched.player.run("mkdir -p new/deep; echo >new/deep/2.m2ts");
    EXPECT_TRUE(watched.isWatched("new/deep/2.m2ts"));
    EXPECT_EQ(watched.reportsOf("mv new ../away; : <../away/deep/2.m2ts"), "");
    watched.player.run("mv ../away back");
    EXPECT_TRUE(watched.isWatched("back/deep/2.m2ts"));
}

// inotify would merge identical consecutive events, as those of a process that ends.
TEST(DirectoryWatch, CountsOpensAndClosesOfTheSameMoment)
{
    Watched watched;
    ASSERT_TRUE(watched.start());
    watched.reports.clear();
    watched.reports.hold(true);
    watched.player.run(": <P/1.mpls; sh -c 'exec 3<S/1.m2ts 4<S/1.m2ts 5<S/1.m2ts'");
    watched.reports.hold(false);
    EXPECT_EQ(watched.reports.after("", 8),
              "OPEN 1.mpls; CLOSE 1.mpls; OPEN 1.m2ts; OPEN 1.m2ts; OPEN 1.m2ts; "
              "close 1.m2ts; close 1.m2ts; CLOSE 1.m2ts");
}

TEST(DirectoryWatch, LosesNoneOfAHundredThousandOpens)
{
    Watched watched;
    ASSERT_TRUE(watched.start());
    for (int i = 0; i < 50; ++i) {
        watched.reports.clear();
        watched.player.openAndClose("S/1.m2ts", 2000);  // the kernel queues 16,384 events
        const std::string text = watched.reports.after("", 4000);
        ASSERT_EQ(std::count(text.begin(), text.end(), ';'), 3999);
    }
}

TEST(DirectoryWatch, EndsIfItsRootGoesOrEventsAreLost)
{
    const char* const rows[][2] = {
        {"mv \"$PWD\" ../away", "FAILED RootGone"},
        {"root=$PWD; cd /; rm -r \"$root\"", "FAILED RootGone"},
        {": <P/1.mpls; for i in $(seq 20000); do : <S/1.m2ts; done", "FAILED EventsLost"}};
    for (const auto& [commands, failure] : rows) {
        Watched watched;
        ASSERT_TRUE(watched.start());
        watched.reports.hold(true);
        watched.player.run(commands);
        watched.reports.hold(false);
        EXPECT_TRUE(watched.reports.after("FAILED").ends_with(failure)) << commands;
    }
}

TEST(DirectoryWatch, RefusesWhatIsNoDirectory)
{
    Watched watched;
    for (const char* name : {"/absent", "/S/1.m2ts"}) {
        EXPECT_EQ(textOf(monitor::DirectoryWatch().start(watched.disc + name, {})), "FAILED CannotWatch")
            << name;
    }
}

// Runs the present test again in a user namespace of its own, after `commands` of the shell, and `body` in there.
template <typename Body>
void runInNamespace(const std::string& commands, Body body)
{
    if (std::getenv("PLATTERSCOPE_NAMESPACE") != nullptr) { return body(); }
    if (std::system("unshare -Urm true") != 0) { GTEST_SKIP() << "no user namespaces"; }
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string self = fs::read_symlink("/proc/self/exe");
    EXPECT_EQ(std::system(("unshare -Urm sh -c '" + commands + " PLATTERSCOPE_NAMESPACE=1 exec \"$0\" " +
                           "--gtest_filter=*." + name + "' '" + self + "'")
                              .c_str()),
              0);
}

TEST(DirectoryWatch, EndsAtTheSystemsLimit)
{
    runInNamespace("echo 3 >/proc/sys/user/max_inotify_watches &&", [] {
        Watched watched;
        ASSERT_FALSE(watched.watch.start(watched.disc, watched.reports.sink()));
        EXPECT_EQ(watched.reports.after("FAILED"), "FAILED TooManyWatches");
        EXPECT_EQ(textOf(monitor::DirectoryWatch().start(watched.disc + "/S", {})), "FAILED TooManyWatches");
    });
}

TEST(DirectoryWatch, EndsIfTheDiscIsUnmounted)
{
    runInNamespace("", [] {
        Watched watched;
        for (const std::string& root : {watched.disc, watched.disc + "/BDMV"}) {
            watched.player.run("mount -t tmpfs none '" + watched.disc + "'; mkdir '" + watched.disc +
                               "/BDMV'");
            monitor::DirectoryWatch watch;
            ASSERT_FALSE(watch.start(root, watched.reports.sink()));
            // The disc is busy while the watch lists its directories.
            watched.player.run("until umount '" + watched.disc + "' 2>/dev/null; do :; done");
            EXPECT_EQ(watched.reports.after("FAILED"), "FAILED RootGone") << root;
            watch.stop();
            watched.reports.clear();
        }
    });
}

}  // namespace
