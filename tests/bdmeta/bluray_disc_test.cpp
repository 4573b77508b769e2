#include "bdmeta/bluray_disc.h"
#include "tests/support/sample_bluray.h"

#include <gtest/gtest.h>

#include <iterator>

using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::patched;
namespace fs = std::filesystem;

namespace {

const Bytes kMpls = testsupport::MplsSpec().build();
const Bytes kClpi = testsupport::ClpiSpec().build();

DiscTree smallDisc()
{
    DiscTree disc = testsupport::sampleBluray().add("BDMV/PLAYLIST/00002.MPLS", kMpls);
    for (const char* clip : {"00001", "00002"}) {
        disc.add(std::string("BDMV/STREAM/") + clip + ".m2ts", Bytes(6144));
    }
    return disc.remove("BDMV/STREAM/00003.m2ts");
}

// A file of the small disc, cut or filled up with zeros.
Bytes fileOf(const std::string& path, std::size_t sizeBytes)
{
    const DiscTree disc = smallDisc();
    Bytes bytes = std::ranges::find(disc.files(), path, &testsupport::TreeFile::path)->bytes;
    bytes.resize(sizeBytes);
    return bytes;
}

const std::string kIndex = "0200 2 ";
const std::string kId = "0000ABCD 000102030405060708090A0B0C0D0E0F ";
const std::string kFiles =
    "00000:162 00002:144 00800:394 00801:394& 00001:196=6144 00002:196=6144 00003:160=0 ";

// What reading gives: index, identity, playlists and clips with their sizes, "&" behind a playlist that shares the
// stream table of the one before, sizes of stream files; or the message.
std::string textOf(const std::string& path)
{
    bdmeta::BlurayDisc disc;
    disc.playlists.resize(3);  // of a disc read before
    disc.discId = "old";
    std::array<char, 256> message = {'?'};
    const int code = bdmeta::readBlurayDisc(path.c_str(), &disc, message.data(), message.size());
    EXPECT_EQ(code, *message.data() == '\0' ? 0 : -1);
    std::string text(disc.indexVersion.begin(), disc.indexVersion.end());
    text = text[0] == '\0' ? "" : text + ' ' + std::to_string(disc.titleCount) + ' ';
    if (!disc.discId.empty()) { text += disc.organizationId + ' ' + disc.discId + ' '; }
    bdmeta::StreamTable former;
    for (const bdmeta::BlurayPlaylist& playlist : disc.playlists) {
        const bdmeta::StreamTable& table = playlist.playItems.at(0).streams;
        text += std::string(playlist.name.view()) + ':' + std::to_string(playlist.rawData.size()) +
                (table == former ? "& " : " ");
        former = table;
    }
    for (const bdmeta::BlurayClip& clip : disc.clips) {
        text += std::string(clip.name.view()) + ':' + std::to_string(clip.rawData.size()) + '=' +
                std::to_string(clip.streamFileSize) + ' ';
    }
    return text + disc.volumeId + message.data();
}

TEST(BlurayDisc, InEveryForm)
{
    const std::string badPlaylist = "cannot parse playlist 'BDMV/PLAYLIST/";
    const std::string badClip = "cannot parse clip information 'BDMV/CLIPINF/";
    const std::string noDirectory = "cannot enumerate BDMV playlist or clip information files";
    const std::string longName(70, 'x');
    const auto with = [](const std::string& path, const Bytes& bytes) {
        return smallDisc().add(path, bytes);
    };
    const DiscTree playlistAlone = DiscTree().add("BDMV/PLAYLIST/0000123.mpls", kMpls);
    const std::vector<std::pair<DiscTree, std::string>> cases = {
        {smallDisc(), kIndex + kId + kFiles},
        {smallDisc().remove("BDMV/index.bdmv"), kId + kFiles},
        {smallDisc().remove("CERTIFICATE/id.bdmv"), kIndex + kFiles},
        {with("BDMV/index.bdmv", Bytes(100)), kId + kFiles},
        {with("BDMV/index.bdmv", fileOf("BDMV/index.bdmv", 69)), "0200 0 " + kId + kFiles},
        {with("BDMV/index.bdmv", patched(fileOf("BDMV/index.bdmv", 70), {{8, 4, UINT32_MAX}})),
         "0200 0 " + kId + kFiles},
        {with("BDMV/index.bdmv", fileOf("BDMV/index.bdmv", 16)), "0200 0 " + kId + kFiles},
        {with("BDMV/index.bdmv", fileOf("BDMV/index.bdmv", 15)), kId + kFiles},
        {with("CERTIFICATE/id.bdmv", Bytes(60)), kIndex + kFiles},
        {with("CERTIFICATE/id.bdmv", fileOf("CERTIFICATE/id.bdmv", 59)), kIndex + kFiles},
        {DiscTree().add("BDMV/CLIPINF/00001.clpi", kClpi), noDirectory},
        {playlistAlone, noDirectory},
        {DiscTree(playlistAlone).add("BDMV/CLIPINF/readme.txt", {}), "00001:144 "},
        {with("BDMV/PLAYLIST/00003.mpls", {}), badPlaylist + "00003.mpls'"},
        {with("BDMV/CLIPINF/00003.clpi", Bytes(100)), badClip + "00003.clpi'"},
        // Playlists come first, in the order of their names.
        {with("BDMV/CLIPINF/0.clpi", {}).add("BDMV/PLAYLIST/4.mpls", {}).add("BDMV/PLAYLIST/3.mpls", {}),
         badPlaylist + "3.mpls'"},
        // A name is cut in the record; one too long for a path also there.
        {DiscTree(playlistAlone)
             .add("BDMV/CLIPINF/0000777.clpi", kClpi)
             .add("BDMV/STREAM/0000777.m2ts", Bytes(77))
             .add("BDMV/STREAM/00007.m2ts", Bytes(7)),
         "00001:144 00007:108=77 "},
        {with("BDMV/PLAYLIST/" + longName + ".mpls", kMpls), badPlaylist + longName.substr(21) + "'"},
        {with("BDMV/CLIPINF/" + longName + ".clpi", kClpi), badClip + longName.substr(20) + "'"},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        for (const DiscForm form : testsupport::kAllBlurayForms) {
            const testsupport::TemporaryFolder folder;
            const bool hasLabel = form == DiscForm::Iso || form == DiscForm::Hybrid;
            const auto& [tree, text] = cases[i];
            EXPECT_EQ(textOf(tree.write(form, folder)),
                      text + (hasLabel && text.back() == ' ' ? "TEST_DISC" : ""))
                << i << " in form " << static_cast<int>(form);
        }
    }
}

// Names that only an image can hold: a listed name ends at its first NUL, and one with a separator opens nothing.
TEST(BlurayDisc, NamesWithNulsAndSeparators)
{
    const DiscTree tree = smallDisc()
                              .add("BDMV/PLAYLIST/00003.mplsX", kMpls)
                              .add("BDMV/PLAYLIST/A_B.mpls", kMpls)
                              .add("BDMV/PLAYLIST/A/B.mpls", kMpls);
    const testsupport::TemporaryFolder folder;
    for (const DiscForm form : {DiscForm::Iso, DiscForm::Udf}) {
        const std::string path = tree.write(form, folder);
        const auto patch = [&path](const std::string& name, char byte, std::size_t at) {
            std::ifstream in(path, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            std::fstream(path).seekp(static_cast<std::streamoff>(bytes.find(name) + at)).put(byte);
        };
        patch("00003.mplsX", '\0', 10);
        EXPECT_NE(textOf(path).find(" 00002:144 00003:144& 00800:394 00801:394& A_B:144 "),
                  std::string::npos);
        patch("A_B.mpls", '/', 1);
        EXPECT_EQ(textOf(path), "cannot parse playlist 'BDMV/PLAYLIST/A/B.mpls'");
    }
}

TEST(BlurayDisc, FilesThatCannotBeRead)
{
    const testsupport::TemporaryFolder folder;
    EXPECT_EQ(textOf(folder / "none"), "cannot stat '" + folder / "none" + "': No such file or directory");
    EXPECT_EQ(textOf(folder.path()), "'" + folder.path().string() + "' has no BDMV directory");
    // A sparse file claims any size at no cost. No file is to blame, and none counts as missing.
    for (const char* file : {"/BDMV/index.bdmv", "/BDMV/PLAYLIST/00800.mpls", "/BDMV/CLIPINF/00003.clpi"}) {
        const testsupport::TemporaryFolder other;
        const std::string large = smallDisc().write(DiscForm::Directory, other);
        fs::resize_file(large + file, 512ULL << 20U);  // and the other files
        EXPECT_EQ(textOf(large), "the navigation files are larger than 512 MiB") << file;
    }
    const std::string disc = smallDisc().write(DiscForm::Directory, folder);
    fs::create_directory(disc + "/BDMV/STREAM/00003.m2ts");
    EXPECT_EQ(textOf(disc), kIndex + kId + kFiles);
    fs::create_directory(disc + "/BDMV/PLAYLIST/00020.mpls");
    EXPECT_EQ(textOf(disc), "cannot parse playlist 'BDMV/PLAYLIST/00020.mpls'");
}

}  // namespace
