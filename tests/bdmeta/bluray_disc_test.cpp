#include "bdmeta/bluray_disc.h"
#include "tests/support/clpi_spec.h"
#include "tests/support/disc_tree.h"
#include "tests/support/mpls_spec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::MplsSpec;
namespace fs = std::filesystem;

namespace {

constexpr char kCannotEnumerate[] = "cannot enumerate BDMV playlist or clip information files";

struct ReadOutcome {
    int code = 0;
    std::string message;
    bdmeta::BlurayDisc disc;
};

ReadOutcome readPath(const std::string& path)
{
    ReadOutcome outcome;
    std::array<char, 256> text = {'?'};
    outcome.disc.playlists.resize(3);  // of a disc read before
    outcome.disc.discId = "old";
    outcome.code = bdmeta::readBlurayDisc(path.c_str(), &outcome.disc, text.data(), text.size());
    outcome.message = text.data();
    return outcome;
}

ReadOutcome readTree(const DiscTree& tree, DiscForm form = DiscForm::Directory)
{
    const testsupport::TemporaryFolder folder;
    return readPath(tree.write(form, folder));
}

bdmeta::BlurayDisc discOf(const DiscTree& tree)
{
    ReadOutcome outcome = readTree(tree);
    EXPECT_EQ(outcome.code, 0) << outcome.message;
    return std::move(outcome.disc);
}

// Checks that the disc fails with the message in every form and leaves nothing behind.
void expectFailure(const DiscTree& tree, const std::string& message)
{
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const ReadOutcome outcome = readTree(tree, form);
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_TRUE(outcome.disc.playlists.empty() && outcome.disc.clips.empty() &&
                    outcome.disc.discId.empty());
    }
}

Bytes indexFile(std::uint16_t titleCount = 7)
{
    Bytes index(40 + 30);
    testsupport::putText(index, 0, "INDX0300");
    testsupport::putBe32(index, 8, 40);
    testsupport::putBe16(index, 40 + 28, titleCount);
    return index;
}

Bytes idFile()
{
    Bytes id(60);
    testsupport::putText(id, 0, "BDID");
    testsupport::putBe32(id, 40, 0x0123ABCD);
    for (std::size_t i = 0; i < 16; ++i) {
        id[44 + i] = static_cast<std::uint8_t>(0x10 * i + 15 - i);
    }
    return id;
}

DiscTree smallDisc()
{
    return DiscTree()
        .add("BDMV/index.bdmv", indexFile())
        .add("BDMV/PLAYLIST/00010.mpls", MplsSpec().build())
        .add("BDMV/PLAYLIST/00002.MPLS", MplsSpec{.version = "0300"}.build())
        .add("BDMV/CLIPINF/00003.clpi", ClpiSpec().build())
        .add("BDMV/CLIPINF/00001.clpi", ClpiSpec{.numberOfSourcePackets = 42}.build())
        .add("BDMV/STREAM/00001.m2ts", Bytes(6144))
        .add("CERTIFICATE/id.bdmv", idFile());
}

TEST(BlurayDisc, EveryFormGivesTheSameDisc)
{
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const ReadOutcome outcome = readTree(smallDisc(), form);
        ASSERT_EQ(outcome.code, 0) << outcome.message;
        EXPECT_EQ(outcome.message, "");
        const bdmeta::BlurayDisc& disc = outcome.disc;
        const bool hasVolumeId = form == DiscForm::Iso || form == DiscForm::Hybrid;
        EXPECT_EQ(disc.volumeId, hasVolumeId ? "TEST_DISC" : "");
        EXPECT_EQ(std::string(disc.indexVersion.begin(), disc.indexVersion.end()), "0300");
        EXPECT_EQ(disc.titleCount, 7U);
        EXPECT_EQ(disc.organizationId, "0123ABCD");
        EXPECT_EQ(disc.discId, "0F1E2D3C4B5A69788796A5B4C3D2E1F0");

        ASSERT_EQ(disc.playlists.size(), 2U);
        EXPECT_EQ(disc.playlists[0].name.view(), "00002");
        EXPECT_EQ(disc.playlists[0].version.view(), "0300");
        EXPECT_EQ(disc.playlists[1].name.view(), "00010");
        EXPECT_EQ(disc.playlists[1].rawData, MplsSpec().build());
        EXPECT_EQ(disc.playlists[1].playItems.size(), 1U);
        ASSERT_EQ(disc.clips.size(), 2U);
        EXPECT_EQ(disc.clips[0].name.view(), "00001");
        EXPECT_EQ(disc.clips[0].sourcePacketCount, 42U);
        EXPECT_EQ(disc.clips[0].streamFileSize, 6144U);
        EXPECT_EQ(disc.clips[1].name.view(), "00003");
        EXPECT_EQ(disc.clips[1].streamFileSize, 0U) << "its stream file is missing";
        EXPECT_EQ(disc.clips[1].rawData, ClpiSpec().build());
    }
}

TEST(BlurayDisc, LongNamesAreCutInTheRecordAlone)
{
    const DiscTree tree = DiscTree()
                              .add("BDMV/PLAYLIST/0000123.mpls", MplsSpec().build())
                              .add("BDMV/CLIPINF/0000777.clpi", ClpiSpec().build())
                              .add("BDMV/STREAM/0000777.m2ts", Bytes(77))
                              .add("BDMV/STREAM/00007.m2ts", Bytes(7));
    const bdmeta::BlurayDisc disc = discOf(tree);
    EXPECT_EQ(disc.playlists.at(0).name.view(), "00001");
    EXPECT_EQ(disc.clips.at(0).name.view(), "00007");
    EXPECT_EQ(disc.clips[0].streamFileSize, 77U);
}

TEST(BlurayDisc, NamesTooLongForAPathAreCutAndShownSo)
{
    const std::string name(70, 'x');
    DiscTree tree = smallDisc().add("BDMV/PLAYLIST/" + name + ".mpls", MplsSpec().build());
    ReadOutcome outcome = readTree(tree);
    EXPECT_EQ(outcome.message, "cannot parse playlist 'BDMV/PLAYLIST/" + std::string(49, 'x') + "'");
    tree = smallDisc().add("BDMV/CLIPINF/" + name + ".clpi", ClpiSpec().build());
    outcome = readTree(tree);
    EXPECT_EQ(outcome.message, "cannot parse clip information 'BDMV/CLIPINF/" + std::string(50, 'x') + "'");
}

TEST(BlurayDisc, IdentityFilesMayBeMissingOrMalformed)
{
    DiscTree tree = smallDisc().remove("BDMV/index.bdmv").remove("CERTIFICATE/id.bdmv");
    bdmeta::BlurayDisc disc = discOf(tree);
    EXPECT_EQ(disc.indexVersion, (std::array<std::uint8_t, 4>{}));
    EXPECT_EQ(disc.titleCount, 0U);
    EXPECT_TRUE(disc.organizationId.empty() && disc.discId.empty());

    Bytes id = idFile();
    id.pop_back();
    EXPECT_EQ(discOf(smallDisc().add("CERTIFICATE/id.bdmv", id)).organizationId, "");
    id = idFile();
    id[0] = 'X';
    EXPECT_EQ(discOf(smallDisc().add("CERTIFICATE/id.bdmv", id)).discId, "");
    disc = discOf(smallDisc().add("BDMV/index.bdmv", Bytes(100)));
    EXPECT_EQ(disc.indexVersion, (std::array<std::uint8_t, 4>{}));
}

TEST(BlurayDisc, IndexCutShort)
{
    const auto read = [](const Bytes& index) { return discOf(smallDisc().add("BDMV/index.bdmv", index)); };
    const Bytes whole = indexFile(0x1234);
    EXPECT_EQ(read(whole).titleCount, 0x1234U);
    EXPECT_EQ(read(Bytes(whole.begin(), whole.end() - 1)).titleCount, 0U);
    EXPECT_EQ(read(Bytes(whole.begin(), whole.begin() + 16)).indexVersion[1], '3');
    EXPECT_EQ(read(Bytes(whole.begin(), whole.begin() + 15)).indexVersion[1], 0);
    Bytes elsewhere = whole;
    testsupport::putBe32(elsewhere, 8, UINT32_MAX);
    EXPECT_EQ(read(elsewhere).titleCount, 0U);
    EXPECT_EQ(read(elsewhere).indexVersion[1], '3');
}

TEST(BlurayDisc, DirectoriesMustBeThereAndMayBeEmpty)
{
    const DiscTree withoutPlaylists = DiscTree().add("BDMV/CLIPINF/00001.clpi", ClpiSpec().build());
    const DiscTree withoutClips = DiscTree().add("BDMV/PLAYLIST/00001.mpls", MplsSpec().build());
    expectFailure(withoutPlaylists, kCannotEnumerate);
    expectFailure(withoutClips, kCannotEnumerate);
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const ReadOutcome outcome = readTree(DiscTree(withoutClips).add("BDMV/CLIPINF/readme.txt", {}), form);
        EXPECT_EQ(outcome.code, 0) << outcome.message;
        EXPECT_EQ(outcome.disc.playlists.size(), 1U);
        EXPECT_TRUE(outcome.disc.clips.empty());
    }
}

TEST(BlurayDisc, OneBadFileFailsTheDisc)
{
    expectFailure(smallDisc().add("BDMV/PLAYLIST/00003.mpls", MplsSpec{.magic = "XXXX"}.build()),
                  "cannot parse playlist 'BDMV/PLAYLIST/00003.mpls'");
    expectFailure(smallDisc().add("BDMV/PLAYLIST/00003.mpls", {}),
                  "cannot parse playlist 'BDMV/PLAYLIST/00003.mpls'");
    expectFailure(smallDisc().add("BDMV/CLIPINF/00003.clpi", ClpiSpec{.programInfoAddress = 0}.build()),
                  "cannot parse clip information 'BDMV/CLIPINF/00003.clpi'");
    // Playlists come first, in the order of their names.
    expectFailure(smallDisc()
                      .add("BDMV/CLIPINF/00001.clpi", {})
                      .add("BDMV/PLAYLIST/00004.mpls", {})
                      .add("BDMV/PLAYLIST/00003.mpls", {}),
                  "cannot parse playlist 'BDMV/PLAYLIST/00003.mpls'");
}

// Names that only an image can hold: a listed name ends at its first NUL, and one with a separator opens nothing.
TEST(BlurayDisc, NamesWithNulsAndSeparators)
{
    const std::string kMessage = "cannot parse playlist 'BDMV/PLAYLIST/A/B.mpls'";
    const DiscTree tree = smallDisc()
                              .add("BDMV/PLAYLIST/00003.mplsX", MplsSpec().build())
                              .add("BDMV/PLAYLIST/A_B.mpls", MplsSpec().build())
                              .add("BDMV/PLAYLIST/A/B.mpls", MplsSpec().build());
    const testsupport::TemporaryFolder folder;
    for (const DiscForm form : {DiscForm::Iso, DiscForm::Udf}) {
        const std::string path = tree.write(form, folder);
        const auto patch = [&path](const std::string& name, char byte, std::size_t at) {
            std::ifstream in(path, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            std::fstream(path).seekp(static_cast<std::streamoff>(bytes.find(name) + at)).put(byte);
        };
        patch("00003.mplsX", '\0', 10);
        const ReadOutcome outcome = readPath(path);
        ASSERT_EQ(outcome.disc.playlists.size(), 4U) << outcome.message;
        EXPECT_EQ(outcome.disc.playlists[1].name.view(), "00003");
        patch("A_B.mpls", '/', 1);
        EXPECT_EQ(readPath(path).message, kMessage);
    }
}

TEST(BlurayDisc, FilesThatCannotBeRead)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = smallDisc().write(DiscForm::Directory, folder);
    fs::create_directory(disc + "/BDMV/STREAM/00003.m2ts");
    EXPECT_EQ(readPath(disc).disc.clips.at(1).streamFileSize, 0U);

    fs::create_directory(disc + "/BDMV/PLAYLIST/00020.mpls");
    EXPECT_EQ(readPath(disc).message, "cannot parse playlist 'BDMV/PLAYLIST/00020.mpls'");

    // A sparse file claims any size at no cost. No file is to blame, and none counts as missing.
    for (const char* file : {"/BDMV/index.bdmv", "/BDMV/PLAYLIST/00010.mpls", "/BDMV/CLIPINF/00003.clpi"}) {
        const testsupport::TemporaryFolder other;
        const std::string large = smallDisc().write(DiscForm::Directory, other);
        fs::resize_file(large + file, 512ULL << 20U);  // and the other files
        EXPECT_EQ(readPath(large).message, "the navigation files are larger than 512 MiB") << file;
    }
}

TEST(BlurayDisc, MessagesOfTheSourceArePassedOn)
{
    const testsupport::TemporaryFolder folder;
    ReadOutcome outcome = readPath(folder / "nothing");
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, "cannot stat '" + folder / "nothing" + "': No such file or directory");
    EXPECT_TRUE(outcome.disc.playlists.empty() && outcome.disc.discId.empty()) << "of the disc read before";
    outcome = readPath(folder.path());
    EXPECT_EQ(outcome.message, "'" + folder.path().string() + "' has no BDMV directory");
}

TEST(BlurayDisc, PathAndDiscAreRequired)
{
    std::array<char, 64> text = {};
    bdmeta::BlurayDisc disc;
    EXPECT_EQ(bdmeta::readBlurayDisc(nullptr, &disc, text.data(), text.size()), -1);
    EXPECT_STREQ(text.data(), "path and disc are required");
    EXPECT_EQ(bdmeta::readBlurayDisc("/", nullptr, text.data(), text.size()), -1);
    EXPECT_STREQ(text.data(), "path and disc are required");
    EXPECT_EQ(bdmeta::readBlurayDisc("/", nullptr, nullptr, 0), -1);
}

// A disc of decoys repeats one table in all its playlists.
TEST(BlurayDisc, PlaylistsShareTheirStreamTables)
{
    MplsSpec spec;
    spec.playItems.resize(50);
    for (testsupport::PlayItemSpec& item : spec.playItems) {
        item.stn.primaryVideo = {{.pid = 0x1011, .attributes = testsupport::videoAttributes()}};
    }
    DiscTree tree = smallDisc();
    tree.add("BDMV/PLAYLIST/00100.mpls", spec.build()).add("BDMV/PLAYLIST/00200.mpls", spec.build());
    bdmeta::BlurayDisc disc = discOf(tree);
    ASSERT_EQ(disc.playlists.size(), 4U);
    const bdmeta::StreamTable table = disc.playlists[2].playItems[0].streams;
    for (const auto& item : disc.playlists[3].playItems) {
        EXPECT_EQ(item.streams, table);
    }
    bdmeta::releaseBlurayDisc(disc);
    EXPECT_TRUE(disc.playlists.empty() && disc.clips.empty());
    EXPECT_EQ(table.use_count(), 1);
}

}  // namespace
