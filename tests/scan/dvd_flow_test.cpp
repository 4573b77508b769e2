#include "scan/dvd_flow.h"
#include "tests/support/captured_log.h"
#include "tests/support/sample_dvd.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testsupport::DiscTree;
using testsupport::VmgSpec;
using testsupport::VtsSpec;

dvdmeta::DvdDisc read(const DiscTree& tree)
{
    const testsupport::TemporaryFolder folder;
    std::array<char, 256> error = {};
    dvdmeta::DvdDisc disc;
    EXPECT_EQ(readDvdDisc(tree.write(testsupport::DiscForm::Directory, folder).c_str(), &disc, error.data(),
                          error.size()),
              0)
        << error.data();
    return disc;
}

TEST(DvdFlow, DescribesEveryTitleWithItsStreams)
{
    const dvdmeta::DvdDisc disc = read(testsupport::sampleDvd());
    const DiscScanResult result = scan::describeDvd(&disc);
    ASSERT_EQ(result.dvdTitles.size(), 2);

    const DvdTitleInfo& feature = result.dvdTitles.at(0);
    EXPECT_EQ(feature.titleNumber, 1U);
    EXPECT_EQ(feature.videoWidth, 720U);
    EXPECT_EQ(feature.videoHeight, 576U);
    EXPECT_EQ(feature.videoCodec, QStringLiteral("MPEG-2 Video"));
    EXPECT_EQ(feature.durationMs, 3'661'000U);
    EXPECT_EQ(feature.distinctDurationMs, 3'660'000U);
    EXPECT_EQ(feature.playbackSizeBytes, 1000U * 2048);
    EXPECT_FALSE(feature.isSizeEstimated);
    EXPECT_EQ(feature.chapterCount, 3U);
    EXPECT_EQ(feature.angleCount, 1U);
    ASSERT_EQ(feature.videoStreams.size(), 1);
    EXPECT_EQ(feature.videoStreams.at(0).pid, 0xE0U);
    ASSERT_EQ(feature.audioTracks.size(), 2);
    EXPECT_EQ(feature.audioTracks.at(0).language, QStringLiteral("en"));
    EXPECT_EQ(feature.audioTracks.at(0).codecName, QStringLiteral("AC-3"));
    EXPECT_EQ(feature.audioTracks.at(0).channelLayout, QStringLiteral("6 channels"));
    EXPECT_EQ(feature.audioTracks.at(0).pid, 0x80U);
    EXPECT_EQ(feature.audioTracks.at(1).codecName, QStringLiteral("MPEG-1"));
    EXPECT_EQ(feature.audioTracks.at(1).pid, 0xC1U)
        << "the second audio stream of all, the first of its coding";
    ASSERT_EQ(feature.subtitleTracks.size(), 1);
    EXPECT_EQ(feature.subtitleTracks.at(0).pid, 0x20U);

    const DvdTitleInfo& extra = result.dvdTitles.at(1);
    EXPECT_EQ(extra.videoHeight, 480U);
    EXPECT_TRUE(extra.audioTracks.at(0).language.isEmpty());
    EXPECT_EQ(extra.audioTracks.at(0).pid, 0xA0U);
    EXPECT_EQ(extra.audioTracks.at(0).channelLayout, QStringLiteral("1 channel"));

    EXPECT_EQ(result.discSummary.titleCount, 2U);
    EXPECT_EQ(result.discSummary.durationMs, 3'691'000U);
    EXPECT_EQ(result.discSummary.playbackSizeBytes, 1050U * 2048);
    EXPECT_EQ(result.discSummary.chapterCount, 4U);
    EXPECT_EQ(result.dvdPackageSha256.size(), 32);
    EXPECT_TRUE(result.blurayPackage.isEmpty());
    EXPECT_TRUE(result.blurayDiscIdBytes.isEmpty());
    EXPECT_EQ(result.ok, 0) << "only a lookup makes a result a success";
}

TEST(DvdFlow, WarnsOnceOfAllTitlesWhoseSizeIsAnEstimate)
{
    VmgSpec manager;
    manager.titles = {{.playbackType = 0x7C, .vtsn = 1}, {.vtsn = 2}, {.vtsn = 3}};
    VtsSpec angles;
    angles.pgcs = {{.cells = {{0, 9, 0x50}, {10, 19, 0xD0}, {20, 29}}}};
    const dvdmeta::DvdDisc disc = read(DiscTree()
                                           .add("VIDEO_TS/VIDEO_TS.IFO", manager.build())
                                           .add("VIDEO_TS/VTS_01_0.IFO", VtsSpec().build())
                                           .add("VIDEO_TS/VTS_02_0.IFO", angles.build())
                                           .add("VIDEO_TS/VTS_03_0.IFO", VtsSpec().build()));
    const testsupport::CapturedLog log;
    const DiscScanResult result = scan::describeDvd(&disc);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"dvdmeta: warning: default angle-1 playback size is estimated for 2 "
                                        "title(s) with complex angle or PGC navigation"}));
    EXPECT_TRUE(result.dvdTitles.at(0).isSizeEstimated);
    EXPECT_TRUE(result.dvdTitles.at(1).isSizeEstimated);
    EXPECT_EQ(result.dvdTitles.at(1).playbackSizeBytes, 20U * 2048)
        << "the second angle's cell does not count";
    EXPECT_FALSE(result.dvdTitles.at(2).isSizeEstimated);
}

TEST(DvdFlow, WhatCannotBePackagedIsACleanErrorResult)
{
    const auto expectError = [](const DiscScanResult& result, const char* message) {
        EXPECT_EQ(result.errorMessage, QString::fromUtf8(message));
        EXPECT_EQ(result.ok, 0);
        EXPECT_EQ(result.discType, DiscType::None);
        EXPECT_TRUE(result.dvdTitles.isEmpty());
        EXPECT_TRUE(result.dvdPackage.isEmpty());
    };
    const testsupport::CapturedLog quiet;
    expectError(scan::describeDvd(nullptr), "DVD scan metadata is unavailable.");

    VmgSpec empty;
    empty.titles.clear();
    const dvdmeta::DvdDisc noTitles = read(DiscTree().add("VIDEO_TS/VIDEO_TS.IFO", empty.build()));
    expectError(scan::describeDvd(&noTitles), "No titles found on DVD.");

    // A title in a set that no disc can name properly: read, but not packaged.
    VmgSpec manager;
    manager.titles = {{.vtsn = 100}};
    const dvdmeta::DvdDisc beyond = read(DiscTree()
                                             .add("VIDEO_TS/VIDEO_TS.IFO", manager.build())
                                             .add("VIDEO_TS/VTS_100_0.IFO", VtsSpec().build()));
    expectError(scan::describeDvd(&beyond), "DVD package contains no VTS metadata.");
}

TEST(DvdFlow, ACopiedResultStandsForItself)
{
    const dvdmeta::DvdDisc disc = read(testsupport::sampleDvd());
    const DiscScanResult first = scan::describeDvd(&disc);
    DiscScanResult second = first;
    second.dvdTitles[0].chapterCount = 99;
    second.dvdPackage.clear();
    EXPECT_EQ(first.dvdTitles.at(0).chapterCount, 3U);
    EXPECT_FALSE(first.dvdPackage.isEmpty());
}

}  // namespace
