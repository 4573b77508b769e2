#include "tests/support/bounded_child.h"

#include <malloc.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace testsupport {

namespace {

using Clock = std::chrono::steady_clock;

struct Run {
    ChildOutcome outcome;
    std::int64_t peakKiB = 0;
};

[[noreturn]] void workAndExit(const std::function<std::string()>& work, int out)
{
    const std::string text = work();
    const bool isWritten = ::write(out, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::_exit(isWritten ? EXIT_SUCCESS : EXIT_FAILURE);
}

// All that the child writes; false where it is still there at the deadline.
bool readUntil(int in, Clock::time_point deadline, std::string& text)
{
    std::array<char, 4096> buffer = {};
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting = {in, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) { return false; }
        const ssize_t got = ::read(in, buffer.data(), buffer.size());
        if (got <= 0) { return true; }
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
}

// How long a process has been ready to run and was not; 0 where the system does not say.
double secondsWithoutProcessor(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/schedstat");
    double running = 0;
    double waiting = 0;
    file >> running >> waiting;
    return waiting / 1e9;
}

Run runOnce(const std::function<std::string()>& work, std::chrono::seconds patience)
{
    std::array<int, 2> pipe = {};
    if (::pipe(pipe.data()) != 0) { throw std::runtime_error("no pipe"); }
    const Clock::time_point start = Clock::now();
    const pid_t child = ::fork();
    if (child < 0) { throw std::runtime_error("no process"); }
    if (child == 0) { workAndExit(work, pipe[1]); }
    ::close(pipe[1]);
    Run run;
    if (!readUntil(pipe[0], start + patience, run.outcome.text)) { ::kill(child, SIGKILL); }
    ::close(pipe[0]);
    siginfo_t ended = {};
    int status = 0;
    rusage usage = {};
    if (::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) == 0) {
        const std::chrono::duration<double> wallTime = Clock::now() - start;
        run.outcome.seconds = wallTime.count() - secondsWithoutProcessor(child);
    }
    if (::wait4(child, &status, 0, &usage) != child) { throw std::runtime_error("the process is lost"); }
    run.outcome.hasEnded = WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    run.peakKiB = usage.ru_maxrss;
    return run;
}

}  // namespace

ChildOutcome runInChild(const std::function<std::string()>& work, std::chrono::seconds patience)
{
    ::malloc_trim(0);  // what is free here would be memory that the child takes for nothing
    const std::int64_t idleKiB = runOnce([] { return std::string(); }, patience).peakKiB;
    Run run = runOnce(work, patience);
    run.outcome.extraKiB = run.peakKiB - idleKiB;
    return run.outcome;
}

}  // namespace testsupport
