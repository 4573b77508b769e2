// Real DVD-Video discs, authored by tools/author_dvd.sh and packed by tools/author_dvd_images.sh, in the folder that
// PLATTERSCOPE_AUTHORED_DIR names: of "pal" and of "ntsc" the folder, NAME.iso and NAME_bridge.iso (with UDF).
#include "package/dvd_package.h"
#include "tests/dvdmeta/disc_text.h"
#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>

namespace fs = std::filesystem;

namespace {

dvdmeta::DvdDisc read(const fs::path& path)
{
    dvdmeta::DvdDisc disc;
    std::array<char, 256> message = {};
    EXPECT_EQ(readDvdDisc(path.c_str(), &disc, message.data(), message.size()), 0) << message.data();
    EXPECT_EQ(disc.volumeLabel, fs::is_directory(path) ? "" : "TEST_PATTERNS");
    return disc;
}

QByteArray packageOf(const dvdmeta::DvdDisc& disc)
{
    const package::DvdDiscTotals totals = package::sumDvdTitles(disc);
    return package::buildDvdPackage(&disc, &totals);
}

// The titles, with durations to a tenth of a second: the encoder decides about the last frame.
std::string titlesOf(const dvdmeta::DvdDisc& disc)
{
    std::ostringstream out;
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        out << "title " << title.vtsTtn << " of set " << title.titleSetNumber << ": " << title.angleCount
            << " angles, " << title.chapterCount << " chapters, "
            << std::round(static_cast<double>(title.durationMs) / 100) / 10 << " s"
            << (title.isSizeEstimated() ? ", estimated\n" : "\n") << textOf(title.streams);
    }
    return out.str();
}

TEST(AuthoredDvd, EveryFormGivesTheDiscAndItsPackage)
{
    const char* const folder = std::getenv("PLATTERSCOPE_AUTHORED_DIR");
    if (folder == nullptr || *folder == '\0') { GTEST_SKIP() << "PLATTERSCOPE_AUTHORED_DIR is not set"; }
    for (const std::string standard : {"pal", "ntsc"}) {
        SCOPED_TRACE(standard);
        const fs::path root = fs::path(folder) / standard;
        const dvdmeta::DvdDisc disc = read(root);
        EXPECT_EQ(testsupport::goldenDifference(titlesOf(disc), "authored/golden/" + standard + ".txt"), "");

        std::map<std::uint32_t, std::uint64_t> sizes;  // of the title sets' VOBs: their titles in a row
        for (const dvdmeta::DvdTitle& title : disc.titles) {
            EXPECT_EQ(title.playbackSizeBytes, (title.lastSector - title.firstSector + 1) * 2048);
            sizes[title.titleSetNumber] += title.playbackSizeBytes;
        }
        for (const auto& [number, sizeBytes] : sizes) {
            EXPECT_EQ(fs::file_size(root / "VIDEO_TS" / ("VTS_0" + std::to_string(number) + "_1.VOB")),
                      sizeBytes);
        }
        EXPECT_EQ(disc.rawIfos.size(), sizes.size() + 1);
        EXPECT_FALSE(packageOf(disc).isEmpty());
        for (const char* form : {".iso", "_bridge.iso"}) {
            EXPECT_TRUE(packageOf(read(root.string() + form)) == packageOf(disc)) << form;
        }
    }
}

}  // namespace
