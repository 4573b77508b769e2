// Reading a disc under watch: in time, and with no more memory than what is really there accounts for.
#pragma once

#include "tests/faults/disc_reading.h"
#include "tests/support/bounded_child.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace faults {

#ifdef __SANITIZE_ADDRESS__
inline constexpr double kSecondsAllowed = 10;
inline constexpr std::int64_t kMemoryFactor = 8;
#else
inline constexpr double kSecondsAllowed = 1;
inline constexpr std::int64_t kMemoryFactor = 1;
#endif

// Of the file or directory `path`, as the disk holds it: a sparse file takes no room.
[[nodiscard]] inline std::int64_t storedKiB(const std::string& path)
{
    struct stat status = {};
    std::int64_t blocks = ::stat(path.c_str(), &status) == 0 ? status.st_blocks : 0;
    if (!S_ISDIR(status.st_mode)) { return blocks / 2; }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
        if (::lstat(entry.path().c_str(), &status) == 0) { blocks += status.st_blocks; }
    }
    return blocks / 2;
}

// What reading the disc gives (readDisc), checked to end within a second and to take no more than some megabytes and
// eight times what is stored.
[[nodiscard]] inline std::string boundedRead(Family family, const std::string& path,
                                             std::int64_t allowedKiB = 16 * 1024)
{
    const testsupport::ChildOutcome child =
        testsupport::runInChild([family, &path] { return readDisc(family, path); });
    EXPECT_TRUE(child.hasEnded) << "a hang or a crash";
    EXPECT_LT(child.seconds, kSecondsAllowed);
    EXPECT_LT(child.extraKiB, (allowedKiB + 8 * storedKiB(path)) * kMemoryFactor);
    return child.text;
}

}  // namespace faults
