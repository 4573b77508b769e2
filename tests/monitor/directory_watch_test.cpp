// DirectoryWatch, with a real player process.
#include "monitor/directory_watch.h"
#include "tests/monitor/reports.h"
#include "tests/support/bounded_child.h"
#include "tests/support/golden.h"
#include "tests/support/player.h"
#include "tests/support/scopes.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sched.h>

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

    // What the watch reports of these shell commands. Its thread is held meanwhile if `mode` is '&' or '!'; then the
    // watch may fail ('!').
    [[nodiscard]] std::string reportsOf(const std::string& commands, char mode = '$')
    {
        reports.clear();
        reports.hold(mode != '$');
        player.run(commands + (mode == '!' ? "" : "\n: <'" + disc + "/mark.mpls'"));
        reports.hold(false);
        const std::string text = reports.after(mode == '!' ? "FAILED" : "CLOSE mark.mpls");
        return mode == '!' ? text.substr(text.rfind("FAILED"))
                           : text.substr(0, std::max<std::size_t>(text.find("OPEN mark.mpls"), 2) - 2);
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

// A "<" line of the table is what the player does before the watch begins; a "$", "&" or "!" line is what it does then,
// with its reports in the next line.
TEST(DirectoryWatch, ReportsWhatAPlayerOpensAndCloses)
{
    const auto countDescriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto descriptors = countDescriptors();
    std::string text, before;
    std::ifstream table(GOLDEN_DIR "/directory_watch.txt");
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with(' ')) { continue; }
        text += line + '\n';
        if (line.starts_with('<')) { before = line.substr(2); }
        if (line.find_first_of("$&!") != 0) { continue; }
        Watched watched;
        watched.player.run(std::exchange(before, {}));
        const testsupport::UnprivilegedUser user;
        ASSERT_TRUE(watched.start()) << line;
        text += "    " + watched.reportsOf(line.substr(2), line[0]) + '\n';
    }
    table.close();
    EXPECT_EQ(countDescriptors(), descriptors);
    EXPECT_EQ(testsupport::goldenDifference(text, "monitor/golden/directory_watch.txt"), "");
}

TEST(DirectoryWatch, WatchesDirectoriesThatAppear)
{
    Watched watched;
    for (const char* name : {"/absent", "/S/1.m2ts"}) {
        EXPECT_EQ(textOf(watched.watch.start(watched.disc + name, {})), "FAILED CannotWatch");
    }
    ASSERT_TRUE(watched.start());
    watched.player.run("mkdir -p new/deep; echo >new/deep/2.m2ts");
    EXPECT_TRUE(watched.isWatched("new/deep/2.m2ts"));
    EXPECT_EQ(watched.reportsOf("mv new ../away; : <../away/deep/2.m2ts"), "");
    watched.player.run("mv ../away back");
    EXPECT_TRUE(watched.isWatched("back/deep/2.m2ts"));
}

TEST(DirectoryWatch, LosesNoneOfAHundredThousandOpens)
{
    Watched watched;
    ASSERT_TRUE(watched.start());
    for (int i = 0; i < 50; ++i) {
        watched.reports.clear();
        watched.player.run("for i in $(seq 2000); do : <S/1.m2ts; done");  // the kernel queues 16,384 events
        const std::string text = watched.reports.after("", 4000);
        ASSERT_EQ(std::count(text.begin(), text.end(), ';'), 3999);
    }
}

TEST(DirectoryWatch, EndsAtTheSystemsLimitOrIfTheDiscIsUnmounted)
{
    const auto work = []() -> std::string {
        const std::string users = "0 " + std::to_string(::geteuid()) + " 1";
        const std::string groups = "0 " + std::to_string(::getegid()) + " 1";
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) { return "no user namespaces"; }
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << users;
        std::ofstream("/proc/self/gid_map") << groups;
        std::string text;
        Watched watched;
        for (const std::string name : {"", "/BDMV"}) {
            monitor::DirectoryWatch watch;
            watched.player.run("mount -t tmpfs none '" + watched.disc + "'; mkdir '" + watched.disc +
                               "/BDMV'");
            text += textOf(watch.start(watched.disc + name, watched.reports.sink()));
            // The disc is busy while the watch lists its directories.
            watched.player.run("until umount '" + watched.disc + "' 2>/dev/null; do :; done");
            text += watched.reports.after("FAILED") + '\n';
            watch.stop();
            watched.reports.clear();
        }
        std::ofstream("/proc/sys/user/max_inotify_watches") << 3;
        text += textOf(watched.watch.start(watched.disc, watched.reports.sink()));
        text += watched.reports.after("FAILED") + '\n';
        return text + textOf(monitor::DirectoryWatch().start(watched.disc + "/S", {}));
    };
    const std::string text = testsupport::runInChild(work).text;
    if (text == "no user namespaces") { GTEST_SKIP() << text; }
    EXPECT_EQ(text, "FAILED RootGone\nFAILED RootGone\nFAILED TooManyWatches\nFAILED TooManyWatches");
}

}  // namespace
