// Real DVD-Video discs, authored by tools/author_dvd.sh and packed by tools/author_dvd_images.sh, in the
// folder that PLATTERSCOPE_AUTHORED_DIR names:
//
//   pal/VIDEO_TS    pal.iso     pal_bridge.iso
//   ntsc/VIDEO_TS   ntsc.iso    ntsc_bridge.iso
#include "dvdmeta/dvd_disc.h"
#include "package/dvd_package.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

// One audio stream: language, coding, channels.
using Audio = std::array<std::string, 3>;

class AuthoredDvd : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        const char* const folder = std::getenv("PLATTERSCOPE_AUTHORED_DIR");
        if (folder == nullptr || *folder == '\0') {
            GTEST_SKIP() << "PLATTERSCOPE_AUTHORED_DIR is not set: there are no authored discs to read";
        }
        m_folder = folder;
    }

    // The disc of this name: "pal", "pal.iso" and so on.
    [[nodiscard]] dvdmeta::DvdDisc read(const std::string& name) const
    {
        dvdmeta::DvdDisc disc;
        std::array<char, 256> text = {};
        EXPECT_EQ(readDvdDisc((m_folder / name).c_str(), &disc, text.data(), text.size()), 0) << text.data();
        return disc;
    }

    [[nodiscard]] std::uint64_t vobSize(const std::string& standard, const std::string& name) const
    {
        return fs::file_size(m_folder / standard / "VIDEO_TS" / name);
    }

    fs::path m_folder;
};

std::vector<Audio> audioOf(const dvdmeta::DvdTitle& title)
{
    std::vector<Audio> streams;
    for (const dvdmeta::DvdAudioStream& audio : title.streams.audio) {
        streams.push_back(
            {std::string(audio.language.begin(), audio.language.end()), audio.codingName, audio.channels});
        EXPECT_EQ(audio.sampleRateName, "48 kHz");
    }
    return streams;
}

std::vector<std::string> subpictureLanguages(const dvdmeta::DvdTitle& title)
{
    std::vector<std::string> languages;
    for (const dvdmeta::DvdSubpictureStream& subpicture : title.streams.subpicture) {
        languages.emplace_back(subpicture.language.begin(), subpicture.language.end());
    }
    return languages;
}

TEST_F(AuthoredDvd, PalDiscOfTwoTitleSets)
{
    constexpr double kFrameMs = 40;
    const dvdmeta::DvdDisc disc = read("pal");
    ASSERT_EQ(disc.titles.size(), 2U);
    ASSERT_EQ(disc.titleSets.size(), 2U);
    ASSERT_EQ(disc.rawIfos.size(), 3U);

    const dvdmeta::DvdTitle& first = disc.titles[0];
    EXPECT_EQ(first.titleSetNumber, 1U);
    EXPECT_EQ(first.chapterCount, 4U);
    EXPECT_EQ(first.angleCount, 1U);
    EXPECT_NEAR(static_cast<double>(first.durationMs), 20'000, kFrameMs);
    EXPECT_EQ(first.playbackSizeBytes, vobSize("pal", "VTS_01_1.VOB"));
    EXPECT_FALSE(first.isSizeEstimated());
    EXPECT_EQ(first.streams.video.formatName, "MPEG-2 Video");
    EXPECT_EQ(first.streams.video.width, 720U);
    EXPECT_EQ(first.streams.video.height, 576U);
    EXPECT_EQ(audioOf(first),
              (std::vector<Audio>{{"en", "AC-3", "2 channels"}, {"de", "MPEG-1", "2 channels"}}));
    EXPECT_EQ(subpictureLanguages(first), (std::vector<std::string>{"en", "de"}));

    const dvdmeta::DvdTitle& second = disc.titles[1];
    EXPECT_EQ(second.titleSetNumber, 2U);
    EXPECT_EQ(second.chapterCount, 2U);
    EXPECT_NEAR(static_cast<double>(second.durationMs), 8'000, kFrameMs);
    EXPECT_EQ(second.playbackSizeBytes, vobSize("pal", "VTS_02_1.VOB"));
    EXPECT_EQ(second.streams.video.height, 576U);
    EXPECT_EQ(audioOf(second),
              (std::vector<Audio>{{"en", "AC-3", "6 channels"}, {"de", "LPCM", "2 channels"}}));
    EXPECT_EQ(subpictureLanguages(second), (std::vector<std::string>{"en"}));
}

TEST_F(AuthoredDvd, NtscDiscOfTwoTitlesInOneTitleSet)
{
    constexpr double kFrameMs = 1001.0 / 30;
    const dvdmeta::DvdDisc disc = read("ntsc");
    ASSERT_EQ(disc.titles.size(), 2U);
    EXPECT_EQ(disc.titleSets.size(), 1U);
    EXPECT_EQ(disc.rawIfos.size(), 2U);
    EXPECT_EQ(disc.titles[0].chapterCount, 3U);
    EXPECT_EQ(disc.titles[1].chapterCount, 1U);
    EXPECT_NEAR(static_cast<double>(disc.titles[0].durationMs), 12'000, kFrameMs);
    EXPECT_NEAR(static_cast<double>(disc.titles[1].durationMs), 8'000, kFrameMs);

    // The two share one VOB: the first from its start, the second up to its end.
    EXPECT_EQ(disc.titles[0].playbackSizeBytes + disc.titles[1].playbackSizeBytes,
              vobSize("ntsc", "VTS_01_1.VOB"));
    EXPECT_EQ(disc.titles[1].firstSector, disc.titles[0].lastSector + 1);
    EXPECT_EQ(disc.titles[0].playbackSizeBytes,
              (disc.titles[0].lastSector - disc.titles[0].firstSector + 1) * 2048);
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        EXPECT_EQ(title.titleSetNumber, 1U);
        EXPECT_EQ(title.streams.video.width, 720U);
        EXPECT_EQ(title.streams.video.height, 480U);
        EXPECT_EQ(audioOf(title),
                  (std::vector<Audio>{{"en", "AC-3", "6 channels"}, {"de", "AC-3", "2 channels"}}));
        EXPECT_EQ(subpictureLanguages(title), (std::vector<std::string>{"en"}));
    }
}

TEST_P(AuthoredDvd, EveryFormGivesTheSamePackage)
{
    const auto packageOf = [this](const std::string& name, QByteArray& digest) {
        const dvdmeta::DvdDisc disc = read(name);
        const package::DvdDiscTotals totals = package::sumDvdTitles(disc);
        EXPECT_EQ(disc.volumeLabel, disc.hasVolumeInfo ? "TEST_PATTERNS" : "");
        return package::buildDvdPackage(&disc, &totals, &digest);
    };
    QByteArray digest;
    const QByteArray fromDirectory = packageOf(GetParam(), digest);
    ASSERT_FALSE(fromDirectory.isEmpty());
    for (const char* form : {".iso", "_bridge.iso"}) {
        QByteArray imageDigest;
        EXPECT_EQ(packageOf(std::string(GetParam()) + form, imageDigest), fromDirectory) << form;
        EXPECT_EQ(imageDigest.toHex(), digest.toHex()) << form;
    }
}

INSTANTIATE_TEST_SUITE_P(Standards, AuthoredDvd, testing::Values("pal", "ntsc"));

}  // namespace
