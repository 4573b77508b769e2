// Durations, languages, roles, and what a disc does not say.
#include "text/language_name.h"
#include "text/title_text.h"

#include <gtest/gtest.h>

namespace {

TEST(TitleText, DurationsAreWholeSecondsWithoutPluralForms)
{
    EXPECT_EQ(titletext::duration(0), QStringLiteral("0 Second"));
    EXPECT_EQ(titletext::duration(999), QStringLiteral("0 Second"));
    EXPECT_EQ(titletext::duration(1'000), QStringLiteral("1 Second"));
    EXPECT_EQ(titletext::duration(60'000), QStringLiteral("1 Minute"));
    EXPECT_EQ(titletext::duration(3'600'000), QStringLiteral("1 Hour"));
    EXPECT_EQ(titletext::duration(7'200'000), QStringLiteral("2 Hour"));
    EXPECT_EQ(titletext::duration(3'661'999), QStringLiteral("1 Hour 1 Minute 1 Second"));
    EXPECT_EQ(titletext::duration(3'601'000), QStringLiteral("1 Hour 1 Second"));
    EXPECT_FALSE(titletext::duration(~quint64{0}).isEmpty());
    EXPECT_EQ(titletext::titleSummary(2, 5'000), QStringLiteral("2 Chapters, 5 Second"));
}

TEST(TitleText, LanguagesAreNamedInWordsWhereTheyAreKnown)
{
    EXPECT_EQ(languageName(QStringLiteral("de")), QStringLiteral("German"));
    EXPECT_EQ(languageName(QStringLiteral("DE")), QStringLiteral("German"));
    EXPECT_EQ(languageName(QStringLiteral("ger")), QStringLiteral("German"));
    EXPECT_EQ(languageName(QStringLiteral("deu")), QStringLiteral("German"));
    EXPECT_EQ(languageName(QStringLiteral("iw")), QStringLiteral("Hebrew"));
    EXPECT_EQ(languageName(QStringLiteral("in")), QStringLiteral("Indonesian"));
    EXPECT_EQ(languageName(QStringLiteral("zq")), QStringLiteral("zq"));
    EXPECT_EQ(languageName(QStringLiteral("<b>")), QStringLiteral("<b>"));
    EXPECT_EQ(languageName(QString()), QString());
}

TEST(TitleText, WhatIsNotSaidIsUnknown)
{
    EXPECT_EQ(titletext::summary(AudioTrackInfo{}), QStringLiteral("Unknown, Unknown"));
    EXPECT_EQ(titletext::details(AudioTrackInfo{}),
              QStringLiteral("Audio track\nLanguage: Unknown\nCodec: Unknown\nChannel layout: Unknown\n"
                             "Sample rate: Unknown\nPID: 0\n"));
    EXPECT_EQ(titletext::summary(SubtitleTrackInfo{}), QStringLiteral("Unknown, Unknown"));
    VideoStreamInfo video;
    video.category = 26;
    EXPECT_EQ(titletext::details(video),
              QStringLiteral("Video track\nCodec: Unknown\nRole: Unknown (0x1a)\nPID: 0\n"));
    DvdTitleInfo title;
    title.isSizeEstimated = true;
    title.playbackSizeBytes = 1'234'567;
    EXPECT_TRUE(titletext::details(title).contains(
        QStringLiteral("\nPlayback size (angle 1, estimated): 1234567 bytes\n")));
}

}  // namespace
