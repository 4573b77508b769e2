// Small discs of both families, and what the program makes of one, as a text.
#pragma once

#include "scan/bluray_flow.h"
#include "scan/dvd_flow.h"
#include "tests/support/bounded_child.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <string>

namespace faults {

enum class Family { Dvd, Bluray };

// Two titles in two title sets, or three playlists and three clips with stream files of a few bytes.
[[nodiscard]] inline testsupport::DiscTree treeOf(Family family)
{
    if (family == Family::Dvd) { return testsupport::sampleDvd(); }
    testsupport::DiscTree tree = testsupport::sampleBluray();
    for (const char* clip : {"00001", "00002", "00003"}) {
        tree.add(std::string("BDMV/STREAM/") + clip + ".m2ts", testsupport::Bytes(6144));
    }
    return tree;
}

// Reads a disc and prepares it for the window. Returns "disc ..." with the size of its package, the number of its titles,
// its digest and "(warned)" if an optional file could not be read, or the message of the failure.
[[nodiscard]] inline std::string readDisc(Family family, const std::string& path)
{
    const testsupport::CapturedLog ignored;
    std::array<char, 8192> problem = {};
    DiscScanResult shown;
    if (family == Family::Dvd) {
        dvdmeta::DvdDisc disc;
        if (readDvdDisc(path.c_str(), &disc, problem.data(), problem.size()) != 0) { return problem.data(); }
        shown = scan::describeDvd(&disc);
    } else {
        bdmeta::BlurayDisc disc;
        const int result = readBlurayDisc(path.c_str(), &disc, problem.data(), problem.size());
        if (result != 0) { return problem.data(); }
        shown = scan::describeBluray(&disc);
    }
    return "disc " + std::to_string(shown.dvdPackage.size() + shown.blurayPackage.size()) + " bytes " +
           std::to_string(shown.dvdTitles.size() + shown.blurayTitles.size()) + " titles " +
           (shown.dvdPackageSha256 + shown.blurayPackageSha256).toHex().toStdString() +
           (shown.readWarnings.isEmpty() ? "" : " (warned)");
}

// What reading the whole small disc gives, in any form.
[[nodiscard]] inline std::string wholeDisc(Family family)
{
    const testsupport::TemporaryFolder folder;
    return readDisc(family, treeOf(family).write(testsupport::DiscForm::Directory, folder));
}

[[nodiscard]] inline bool isWhole(const std::string& text)
{
    return text.starts_with("disc ") && !text.ends_with("(warned)");
}
[[nodiscard]] inline bool isRefusalOrWarning(const std::string& text)
{
    return !text.empty() && !isWhole(text);
}

// Like readDisc(), in a process of its own that has to refuse a disc within a second or to show it within three, and to
// take no more memory than 16 MiB and eight times what is stored: a sparse file takes no room on the disk.
[[nodiscard]] inline std::string boundedRead(Family family, const std::string& path)
{
#ifdef NDEBUG
    constexpr std::int64_t kSlack = 1;
#else
    constexpr std::int64_t kSlack = 20;  // not optimised, and perhaps with sanitizers
#endif
    struct stat status = {};
    const std::int64_t storedKiB = ::stat(path.c_str(), &status) == 0 ? status.st_blocks / 2 : 0;
    const auto child = testsupport::runInChild([&] { return readDisc(family, path); });
    EXPECT_TRUE(child.hasEnded) << "a hang or a crash";
    EXPECT_LT(child.seconds, (isWhole(child.text) ? 3 : 1) * kSlack);
    EXPECT_LT(child.extraKiB, (16 * 1024 + 8 * storedKiB) * kSlack);
    return child.text;
}

}  // namespace faults
