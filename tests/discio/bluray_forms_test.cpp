// What is the same for a disc in every form, and what is not.
#include "tests/discio/bluray_source_fixture.h"

#include <algorithm>

using discio::BluraySourceMode;
using discio_test::BluraySource;
using discio_test::Names;
using discio_test::pattern;
using discio_test::sampleTree;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::kAllBlurayForms;

namespace {

class BlurayForms : public BluraySource, public testing::WithParamInterface<DiscForm> {
protected:
    void openTree(const DiscTree& tree) { ASSERT_EQ(open(tree.write(GetParam(), m_folder)), 0) << message(); }
    [[nodiscard]] static bool isDirectory() { return GetParam() == DiscForm::Directory; }
};

std::string formName(const testing::TestParamInfo<DiscForm>& info)
{
    constexpr std::array<const char*, 6> kNames = {"Directory", "Iso",    "Udf",
                                                   "Hybrid",    "Udf250", "Udf250Mirror"};
    return kNames.at(static_cast<std::size_t>(info.param));
}
INSTANTIATE_TEST_SUITE_P(Forms, BlurayForms, testing::ValuesIn(kAllBlurayForms), formName);

TEST_P(BlurayForms, FilesAndListingsAreTheSame)
{
    openTree(sampleTree());
    EXPECT_EQ(read("BDMV/index.bdmv"), pattern(100, 1));
    EXPECT_EQ(read("BDMV/PLAYLIST/00010.mpls"), pattern(5000, 2));
    EXPECT_EQ(read("BDMV/PLAYLIST/00002.MPLS"), pattern(2048, 3));
    EXPECT_EQ(read("BDMV/CLIPINF/00001.clpi"), Bytes()) << "empty, but there";
    EXPECT_EQ(sizeOf("BDMV/PLAYLIST/00010.mpls"), 5000U);
    EXPECT_EQ(sizeOf("BDMV/CLIPINF/00001.clpi"), 0U);

    const Names stored = isDirectory() ? Names{"00002", "00010"} : Names{"00010", "00002"};
    EXPECT_EQ(list("BDMV/PLAYLIST"), stored);
    EXPECT_EQ(list("BDMV/CLIPINF", ".CLPI"), Names{"00001"});
    EXPECT_EQ(list("BDMV/CLIPINF"), Names{});
}

TEST_P(BlurayForms, LetterCaseAndExtraSeparatorsDoNotMatter)
{
    openTree(sampleTree());
    EXPECT_EQ(read("bdmv/PlayList/00010.MPLS"), pattern(5000, 2));
    EXPECT_EQ(read("/BDMV//PLAYLIST/00002.mpls/"), pattern(2048, 3));
    EXPECT_EQ(list("bdmv/playlist/").size(), 2U);
    EXPECT_EQ(sizeOf("BDMV/INDEX.BDMV"), 100U);
}

TEST_P(BlurayForms, WhatIsNotThereFails)
{
    openTree(sampleTree());
    for (const char* path : {"BDMV/none", "none/index.bdmv", "BDMV/index.bdmv/x", "BDMV/index", "index.bdmv",
                             "BDMV", "BDMV/PLAYLIST", "", "/", "BDMV/.", "BDMV/../BDMV/index.bdmv"}) {
        EXPECT_EQ(read(path), m_unreadable) << path;
        EXPECT_EQ(sizeOf(path), 0U) << path;
    }
    for (const char* path : {"BDMV/none", "none", "BDMV/index.bdmv", "BDMV/PLAYLIST/none"}) {
        EXPECT_EQ(list(path), m_failed) << path;
    }
}

TEST_P(BlurayForms, NoMoreIsReadThanTheBudgetAllows)
{
    openTree(sampleTree());
    m_source.budget->lower(discio::ReadBudget::Bound::NavigationBytes, 199, "bytes");
    EXPECT_EQ(read("BDMV/index.bdmv").size(), 100U);
    EXPECT_EQ(m_source.budget->reached(), nullptr);
    EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
    EXPECT_STREQ(m_source.budget->reached(), "bytes");
}

TEST_P(BlurayForms, DirectoriesAreListedFromATreeAlone)
{
    openTree(sampleTree().add("BDMV/PLAYLIST/00005.mpls/file", {1}));
    Names names = list("BDMV/PLAYLIST");
    std::ranges::sort(names);
    EXPECT_EQ(names, (isDirectory() ? Names{"00002", "00005", "00010"} : Names{"00002", "00010"}));
    EXPECT_EQ(read("BDMV/PLAYLIST/00005.mpls"), m_unreadable);
}

TEST_P(BlurayForms, PathsInImagesHaveUpTo64Components)
{
    std::string deep = "BDMV";
    for (int i = 2; i < 64; ++i) {
        deep += "/D";
    }
    openTree(DiscTree().add(deep + "/64.x", {64}).add(deep + "/D/65.x", {65}).add(deep + "/D/D/66.x", {66}));
    EXPECT_EQ(read(deep + "/64.x"), Bytes{64});
    EXPECT_EQ(list(deep + "/D", ".x"), Names{"65"});
    EXPECT_EQ(read(deep + "/D/65.x"), isDirectory() ? Bytes{65} : m_unreadable);
    EXPECT_EQ(list(deep + "/D/D", ".x"), isDirectory() ? Names{"66"} : m_failed);
}

TEST_P(BlurayForms, ADirectoryIsReadOnce)
{
    openTree(sampleTree());
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 2U);
    EXPECT_EQ(sizeOf("BDMV/STREAM/00001.m2ts"), 0U);
    DiscTree more = sampleTree().add("BDMV/PLAYLIST/00003.mpls", {}).add("BDMV/STREAM/00001.m2ts", {1});
    const std::string path = more.write(GetParam(), m_folder);
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 2U);
    EXPECT_EQ(sizeOf("BDMV/STREAM/00001.m2ts"), 0U) << "one that is not there is remembered as well";
    ASSERT_EQ(open(path), 0);
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 3U);
    EXPECT_EQ(sizeOf("BDMV/STREAM/00001.m2ts"), 1U);
}

TEST_P(BlurayForms, ModeAndVolumeId)
{
    openTree(sampleTree());
    constexpr std::array kModes = {BluraySourceMode::Directory, BluraySourceMode::Iso, BluraySourceMode::Udf,
                                   BluraySourceMode::Udf,       BluraySourceMode::Udf, BluraySourceMode::Udf};
    const auto form = static_cast<std::size_t>(GetParam());
    EXPECT_EQ(m_source.mode, kModes.at(form));
    EXPECT_EQ(m_source.volumeId,
              GetParam() == DiscForm::Iso || GetParam() == DiscForm::Hybrid ? "TEST_DISC" : "");

    std::string path;
    discio::ExtentList data;
    bool isFolder = false;
    EXPECT_EQ(resolveDirectoryPath(m_source, "bdmv/Playlist", path), isDirectory() ? 0 : -1);
    EXPECT_EQ(path, isDirectory() ? m_disc + "/BDMV/PLAYLIST" : "");
    EXPECT_EQ(resolveImagePath(m_source, "bdmv/Playlist", data, isFolder), isDirectory() ? -1 : 0);
    EXPECT_EQ(isFolder, !isDirectory());
}

}  // namespace
