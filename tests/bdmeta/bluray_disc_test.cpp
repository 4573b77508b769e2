// Whole discs in every form. tests/faults has files that cannot be read.
#include "bdmeta/bluray_disc.h"
#include "tests/bdmeta/built_records.h"
#include "tests/support/sample_bluray.h"

#include <iterator>

using namespace testsupport;

namespace {

const Bytes kMpls = MplsSpec().build();
const Bytes kClpi = ClpiSpec().build();

DiscTree smallDisc()
{
    DiscTree disc = sampleBluray().add("BDMV/PLAYLIST/00002.MPLS", kMpls);
    disc.add("BDMV/STREAM/00001.m2ts", Bytes(6144)).add("BDMV/STREAM/00002.m2ts", Bytes(6144));
    return disc.remove("BDMV/STREAM/00003.m2ts");
}

// The small disc with a file cut or filled up with zeros.
DiscTree smallDisc(const std::string& path, std::size_t sizeBytes, const std::vector<Patch>& patches = {})
{
    DiscTree disc = smallDisc();
    Bytes bytes = std::ranges::find(disc.files(), path, &TreeFile::path)->bytes;
    bytes.resize(sizeBytes);
    return disc.add(path, patched(bytes, patches));
}

// What reading gives: index, identity, playlists and clips with the sizes of their files, "&" behind a playlist that
// shares the stream table of the one before, sizes of stream files; or the message.
std::string textOf(const std::string& path)
{
    bdmeta::BlurayDisc disc;
    disc.playlists.resize(3);  // of a disc read before
    disc.discId = "old";
    std::array<char, 256> message = {'?'};
    const int code = bdmeta::readBlurayDisc(path.c_str(), &disc, message.data(), message.size());
    EXPECT_EQ(code, message[0] == '\0' ? 0 : -1);
    std::string text;
    if (disc.indexVersion[0] != 0) { text += Text::words("index", disc.indexVersion, disc.titleCount, ""); }
    if (!disc.discId.empty()) { text += disc.organizationId + ' ' + disc.discId + ' '; }
    bdmeta::StreamTable former;
    for (const bdmeta::BlurayPlaylist& playlist : disc.playlists) {
        const bdmeta::StreamTable& table = playlist.playItems.at(0).streams;
        text += Text::words(playlist.name, playlist.rawData.size(), table == former ? "& " : "");
        former = table;
    }
    for (const bdmeta::BlurayClip& clip : disc.clips) {
        text += Text::words(clip.name, clip.rawData.size(), clip.streamFileSize, "");
    }
    return text + disc.volumeId + message.data();
}

TEST(BlurayDisc, InEveryForm)
{
    const std::string index = "BDMV/index.bdmv";
    const std::string id = "CERTIFICATE/id.bdmv";
    const std::string withIndex = "index 48 50 48 48 2 ";
    const std::string shortIndex = "index 48 50 48 48 0 ";
    const std::string withId = "0000ABCD 000102030405060708090A0B0C0D0E0F ";
    const std::string files = "[00000] 162 [00002] 144 [00800] 394 [00801] 394 & [00001] 196 6144 "
                              "[00002] 196 6144 [00003] 160 0 ";
    const std::string badPlaylist = "cannot parse playlist 'BDMV/PLAYLIST/";
    const std::string badClip = "cannot parse clip information 'BDMV/CLIPINF/";
    const std::string noDirectory = "cannot enumerate BDMV playlist or clip information files";
    const std::string longName(70, 'x');
    const auto with = [](const std::string& path, const Bytes& bytes) {
        return smallDisc().add(path, bytes);
    };
    const DiscTree playlistAlone = DiscTree().add("BDMV/PLAYLIST/0000123.mpls", kMpls);
    const std::pair<DiscTree, std::string> rows[] = {
        {smallDisc(), withIndex + withId + files},
        {smallDisc().remove(index), withId + files},
        {smallDisc().remove(id), withIndex + files},
        {with(index, Bytes(100)), withId + files},
        {smallDisc(index, 70, {{8, 4, UINT32_MAX}}), shortIndex + withId + files},
        {smallDisc(index, 69), shortIndex + withId + files},
        {smallDisc(index, 16), shortIndex + withId + files},
        {smallDisc(index, 15), withId + files},
        {with(id, Bytes(60)), withIndex + files},
        {smallDisc(id, 59), withIndex + files},
        {DiscTree().add("BDMV/CLIPINF/00001.clpi", kClpi), noDirectory},
        {playlistAlone, noDirectory},
        {DiscTree(playlistAlone).add("BDMV/CLIPINF/readme.txt", {}), "[00001] 144 "},
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
         "[00001] 144 [00007] 108 77 "},
        {with("BDMV/PLAYLIST/" + longName + ".mpls", kMpls), badPlaylist + longName.substr(21) + "'"},
        {with("BDMV/CLIPINF/" + longName + ".clpi", kClpi), badClip + longName.substr(20) + "'"},
    };
    for (const auto& [tree, expected] : rows) {
        for (const DiscForm form : kAllBlurayForms) {
            const TemporaryFolder folder;
            const std::string label = form == DiscForm::Iso || form == DiscForm::Hybrid ? "TEST_DISC" : "";
            EXPECT_EQ(textOf(tree.write(form, folder)), expected + (expected.back() == ' ' ? label : ""))
                << static_cast<int>(form);
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
    const TemporaryFolder folder;
    for (const DiscForm form : {DiscForm::Iso, DiscForm::Udf}) {
        const std::string path = tree.write(form, folder);
        std::ifstream in(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        std::fstream image(path);
        image.seekp(static_cast<std::streamoff>(bytes.find("00003.mplsX") + 10)).put('\0').flush();
        EXPECT_NE(textOf(path).find(" [00003] 144 & "), std::string::npos);
        image.seekp(static_cast<std::streamoff>(bytes.find("A_B.mpls") + 1)).put('/').flush();
        EXPECT_EQ(textOf(path), "cannot parse playlist 'BDMV/PLAYLIST/A/B.mpls'");
    }
}

}  // namespace
