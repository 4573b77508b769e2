// What is the same for a Blu-ray disc in every form, and what is not.
#include "tests/discio/bluray_test.h"

using namespace testsupport;
using namespace discio_test;

namespace {

class BlurayForms : public BlurayTest, public testing::WithParamInterface<DiscForm> {
protected:
    // Opens the disc, and returns its path.
    std::string openTree(const DiscTree& tree)
    {
        std::string path = tree.write(GetParam(), m_folder);
        EXPECT_EQ(open(path), "");
        return path;
    }
    const bool m_isTree = GetParam() == DiscForm::Directory;
};

constexpr std::array kFormNames = {"Directory", "Iso", "Udf", "Hybrid", "Udf250", "Udf250Mirror"};
INSTANTIATE_TEST_SUITE_P(Forms, BlurayForms, testing::ValuesIn(kAllBlurayForms),
                         [](const auto& form) { return std::string(kFormNames.at(form.index)); });

DiscTree sampleTree()
{
    return DiscTree()
        .add("BDMV/index.bdmv", pattern(100, 1))
        .add("BDMV/PLAYLIST/00010.mpls", pattern(5000, 2))
        .add("BDMV/PLAYLIST/00002.MPLS", pattern(2048, 3))
        .add("BDMV/PLAYLIST/00001.mpls.bak", {4})
        .add("BDMV/PLAYLIST/.mpls", {5})
        .add("BDMV/PLAYLIST/00005.mpls/file", {6})
        .add("BDMV/CLIPINF/azAZ.clpi", {});
}

TEST_P(BlurayForms, GivesFilesAndListingsInAnyLetterCase)
{
    openTree(sampleTree());
    const auto imageMode =
        GetParam() == DiscForm::Iso ? discio::BluraySourceMode::Iso : discio::BluraySourceMode::Udf;
    EXPECT_EQ(m_source.mode, m_isTree ? discio::BluraySourceMode::Directory : imageMode);
    EXPECT_EQ(m_source.volumeId,
              GetParam() == DiscForm::Iso || GetParam() == DiscForm::Hybrid ? "TEST_DISC" : "");
    const std::pair<const char*, Bytes> files[] = {{"BDMV/index.bdmv", pattern(100, 1)},
                                                   {"BDMV/INDEX.BDMV", pattern(100, 1)},
                                                   {"bdmv/PlayList/00010.MPLS", pattern(5000, 2)},
                                                   {"/BDMV//PLAYLIST/00002.mpls/", pattern(2048, 3)},
                                                   {"BDMV/CLIPINF/AZaz.clpi", {}}};
    for (const auto& [path, bytes] : files) {
        EXPECT_EQ(read(path), bytes) << path;
        EXPECT_EQ(blurayFileSize(m_source, path), bytes.size()) << path;
    }
    for (const char* path :
         {"BDMV/none", "none/index.bdmv", "BDMV/index.bdmv/x", "BDMV/index", "index.bdmv", "BDMV", "", "/",
          "BDMV/PLAYLIST/00005.mpls", "BDMV/.", "BDMV/../BDMV/index.bdmv"}) {
        EXPECT_EQ(read(path), kUnreadable) << path;
        EXPECT_EQ(blurayFileSize(m_source, path), 0U) << path;
    }
    // A directory tree is listed in byte-wise order, and with its directories.
    const char* const playlists = m_isTree ? "00002 00005 00010" : "00010 00002";
    EXPECT_EQ(list("BDMV/PLAYLIST", ".mpls"), playlists);
    EXPECT_EQ(list("bdmv/playlist/", ".MPLS"), playlists);
    EXPECT_EQ(list("BDMV/CLIPINF", ".mpls"), "");
    for (const char* path : {"BDMV/none", "none", "BDMV/index.bdmv", "BDMV/PLAYLIST/none"}) {
        EXPECT_EQ(list(path), "failed") << path;
    }
    EXPECT_EQ(list("", ".x"), m_isTree ? "" : "failed");

    m_source.budget->lower(discio::ReadBudget::Bound::NavigationBytes, 199, "bytes");
    EXPECT_EQ(read("BDMV/index.bdmv").size(), 100U);
    EXPECT_EQ(m_source.budget->reached(), nullptr);
    EXPECT_EQ(read("BDMV/index.bdmv"), kUnreadable) << "no more is read than the budget allows";
    EXPECT_STREQ(m_source.budget->reached(), "bytes");
}

TEST_P(BlurayForms, PathsInImagesHaveUpTo64Components)
{
    std::string deep = "BDMV";
    for (int i = 2; i < 64; ++i) {
        deep += "/D";
    }
    openTree(DiscTree().add(deep + "/64.x", {64}).add(deep + "/D/65.x", {65}).add(deep + "/D/D/66.x", {66}));
    EXPECT_EQ(read(deep + "/64.x"), Bytes{64});
    EXPECT_EQ(list(deep + "/D"), "65");
    EXPECT_EQ(read(deep + "/D/65.x"), m_isTree ? Bytes{65} : kUnreadable);
    EXPECT_EQ(list(deep + "/D/D"), m_isTree ? "66" : "failed");
}

TEST_P(BlurayForms, ADirectoryIsReadOnce)
{
    const auto seen = [this] {
        return list("BDMV") + ", " + std::to_string(blurayFileSize(m_source, "BDMV/D/A.x"));
    };
    DiscTree tree = DiscTree().add("BDMV/1.x", {});
    const std::string path = openTree(tree);
    EXPECT_EQ(seen(), "1, 0");
    EXPECT_EQ(tree.add("BDMV/2.x", {}).add("BDMV/D/A.x", {1}).write(GetParam(), m_folder), path);
    EXPECT_EQ(seen(), "1, 0") << "also what is not there is remembered";
    EXPECT_EQ(open(path), "");
    EXPECT_EQ(seen(), "1 2, 1");
}

}  // namespace
