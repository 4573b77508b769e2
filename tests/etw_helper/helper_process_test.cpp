// The real helper. If it cannot trace (wine has no tracing), it reports that and ends; these tests go no further.
#include "monitor/helper_watch.h"
#include "tests/monitor/reports.h"

#include <windows.h>
#include <gtest/gtest.h>
#include <process.h>

#include <filesystem>

namespace {

// The helper's exit code.
template <typename... Arguments>
std::intptr_t run(Arguments... arguments)
{
    return ::_spawnl(_P_WAIT, ETW_HELPER, "PlatterscopeEtwHelper", arguments..., nullptr);
}

TEST(HelperProcess, EndsWithACodeIfItCannotConnect)
{
    EXPECT_EQ(run(), 2);
    EXPECT_EQ(run("--help"), 2);
    const std::string id = std::to_string(::GetCurrentProcessId());
    EXPECT_EQ(run("--pipe", "none", "--root", "C:\\", "--stop-event", "none", "--parent-pid", id.c_str()), 1);
}

TEST(HelperProcess, ConnectsAndEndsWhenItIsStopped)
{
    const std::string folder = std::filesystem::temp_directory_path().string();
    const std::string noFolder =
        "FAILED HelperFailed The Windows ETW helper could not find the disc's directory (error 2).";
    for (const bool exists : {true, false}) {
        testsupport::Reports reports;
        monitor::HelperWatch watch(monitor::makeHelperChannel(), ETW_HELPER, "etw-test");
        ASSERT_EQ(testsupport::textOf(watch.start(folder + (exists ? "" : "\\none"), reports.sink())), "");
        if (!exists) { EXPECT_EQ(reports.after("FAILED"), noFolder); }
        const auto begin = std::chrono::steady_clock::now();
        watch.stop();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));  // after 5 it gives up
        EXPECT_EQ(reports.text().find("stopped"), std::string::npos);
    }
}

}  // namespace
