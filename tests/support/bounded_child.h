// Work that may hang, crash or eat the memory, done by a process of its own that is watched from outside.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace testsupport {

struct ChildOutcome {
    bool hasEnded = false;      // by itself, without a crash
    std::string text;           // what the work gave back
    double seconds = 0;         // how long it took, but for the time that it waited for a free processor
    std::int64_t extraKiB = 0;  // its largest memory, above that of a process that does nothing
};

// Forks and does the work; a process that takes longer than `patience` is killed.
[[nodiscard]] ChildOutcome runInChild(const std::function<std::string()>& work,
                                      std::chrono::seconds patience = std::chrono::seconds(30));

}  // namespace testsupport
