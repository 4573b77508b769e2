// Work that may hang, crash or eat the memory, done by a process of its own that is watched from outside.
#pragma once

#include <malloc.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

namespace testsupport {

struct ChildOutcome {
    bool hasEnded = false;      // by itself, without a crash
    std::string text;           // what the work gave back
    double seconds = 0;         // how long it took, but for the time that it waited for a free processor
    std::int64_t extraKiB = 0;  // its largest memory, above that of a process that does nothing
};

// How long a process has been ready to run and was not; 0 if the system does not tell.
inline double secondsWithoutProcessor(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/schedstat");
    double running = 0;
    double waiting = 0;
    file >> running >> waiting;
    return waiting / 1e9;
}

// The outcome with all of the memory that the child took.
inline ChildOutcome runOnce(const std::function<std::string()>& work, std::chrono::milliseconds patience)
{
    std::array<int, 2> pipe = {};
    if (::pipe(pipe.data()) != 0) { throw std::runtime_error("no pipe"); }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child < 0) { throw std::runtime_error("no process"); }
    if (child == 0) {
        const std::string text = work();
        ::_exit(::write(pipe[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    ::close(pipe[1]);
    ChildOutcome outcome;
    std::array<char, 4096> buffer = {};
    for (ssize_t got = 1; got > 0;) {
        const auto left = patience - std::chrono::duration_cast<std::chrono::milliseconds>(
                                         std::chrono::steady_clock::now() - start);
        pollfd waiting = {pipe[0], POLLIN, 0};
        if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
            ::kill(child, SIGKILL);
            break;
        }
        got = ::read(pipe[0], buffer.data(), buffer.size());
        if (got > 0) { outcome.text.append(buffer.data(), static_cast<std::size_t>(got)); }
    }
    ::close(pipe[0]);
    siginfo_t ended = {};
    if (::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) == 0) {
        const std::chrono::duration<double> wallTime = std::chrono::steady_clock::now() - start;
        outcome.seconds = wallTime.count() - secondsWithoutProcessor(child);
    }
    rusage usage = {};
    ::wait4(child, nullptr, 0, &usage);
    outcome.hasEnded = ended.si_code == CLD_EXITED && ended.si_status == 0;
    outcome.extraKiB = usage.ru_maxrss;
    return outcome;
}

// Forks and does the work; a process that takes longer than `patience` is killed.
[[nodiscard]] inline ChildOutcome runInChild(const std::function<std::string()>& work,
                                             std::chrono::seconds patience = std::chrono::seconds(30))
{
    ::malloc_trim(0);  // what is free here would be memory that the child takes for nothing
    const std::int64_t idleKiB = runOnce([] { return std::string(); }, patience).extraKiB;
    ChildOutcome outcome = runOnce(work, patience);
    outcome.extraKiB -= idleKiB;
    return outcome;
}

}  // namespace testsupport
