// Reading a disc under watch: in time, and with no more memory than what is really there accounts for.
#pragma once

#include "base/log.h"
#include "scan/bluray_flow.h"
#include "scan/dvd_flow.h"
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

// What the window would show of the disc, made within another second: nothing where it cannot be read, else the number
// of titles or what is wrong with them.
[[nodiscard]] inline std::string boundedDescription(Family family, const std::string& path)
{
    const auto describe = [family, &path]() -> std::string {
        const logging::ScopedSwitch silence(false);
        dvdmeta::DvdDisc dvd;
        bdmeta::BlurayDisc bluray;
        const bool isRead = family == Family::Dvd ? readDvdDisc(path.c_str(), &dvd, nullptr, 0) == 0
                                                  : readBlurayDisc(path.c_str(), &bluray, nullptr, 0) == 0;
        if (!isRead) { return {}; }
        const DiscScanResult result =
            family == Family::Dvd ? scan::describeDvd(&dvd) : scan::describeBluray(&bluray);
        const qsizetype titles = result.dvdTitles.size() + result.blurayTitles.size();
        return titles > 0 ? std::to_string(titles) + " titles" : result.errorMessage.toStdString();
    };
    const testsupport::ChildOutcome child = testsupport::runInChild(describe);
    EXPECT_TRUE(child.hasEnded) << "a hang or a crash";
    EXPECT_LT(child.seconds, 2 * kSecondsAllowed);
    return child.text;
}

}  // namespace faults
