// Work that may hang, crash or eat the memory, done by a process of its own that is watched from outside.
#pragma once

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

namespace testsupport {

struct ChildOutcome {
    bool hasEnded = false;      // by itself, without a crash
    std::string text = {};      // what the work gave back
    double seconds = 0;         // of processor time
    std::int64_t extraKiB = 0;  // its largest memory, above that of a process that does nothing
};

// The outcome with all of the memory that the child took.
inline ChildOutcome runOnce(const std::function<std::string()>& work, std::chrono::seconds patience)
{
    std::FILE* const file = std::tmpfile();
    const pid_t child = file == nullptr ? -1 : ::fork();
    if (child < 0) { throw std::runtime_error("no process"); }
    if (child == 0) {
        ::alarm(static_cast<unsigned>(patience.count()));  // kills the process
        ::_exit(std::fputs(work().c_str(), file) >= 0 && std::fflush(file) == 0 ? 0 : 1);
    }
    int status = 0;
    rusage usage = {};
    ::wait4(child, &status, 0, &usage);
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    ChildOutcome outcome = {.hasEnded = WIFEXITED(status) && WEXITSTATUS(status) == 0,
                            .seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
                            .extraKiB = usage.ru_maxrss};
    std::rewind(file);
    for (int letter = std::fgetc(file); letter != EOF; letter = std::fgetc(file)) {
        outcome.text += static_cast<char>(letter);
    }
    std::fclose(file);
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
