#include "package/bluray_package.h"
#include "package/dvd_package.h"
#include "package/encoding.h"
#include "tests/support/golden.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

std::vector<std::uint8_t> file(std::string_view signature, std::size_t size, std::uint8_t filler)
{
    std::vector<std::uint8_t> bytes(size, filler);
    std::ranges::copy(signature, bytes.begin());
    return bytes;
}

struct Discs {
    dvdmeta::DvdDisc dvd;
    bdmeta::BlurayDisc bluray;
    std::vector<bdmeta::BlurayTitle> titles;  // of the Blu-ray, as the totals
    bdmeta::BlurayDiscSummary totals;
};

// Files need one or two bytes for their lengths.
Discs sampleDiscs()
{
    Discs discs;
    dvdmeta::DvdDisc& dvd = discs.dvd;
    dvd.providerRaw.fill(' ');
    std::ranges::copy(std::string_view("PROVIDER"), dvd.providerRaw.begin());
    dvd.providerRaw.back() = 0;
    dvd.titles.resize(2);
    dvd.titles[0].titleNumber = 1;
    dvd.titles[0].chapterCount = 12;
    dvd.titles[0].durationMs = 5'400'480;
    dvd.titles[0].playbackSizeBytes = 0x1'2345'0000;
    dvd.titles[1].titleNumber = 2;
    dvd.titles[1].durationMs = 61'967;
    dvd.titles[1].playbackSizeBytes = 0x6800;
    dvd.titleSets = {{1,
                      {{720, 576, "", 1},
                       {{{'e', 'n'}, "", "", "", 0, 5, 0},
                        {{'d', '\0'}, "", "", "", 6, 1, 3},
                        {{'\0', 'd'}, "", "", "", 4, 0, 1}},
                       {{{'d', 'e'}, "", 1}, {{}, "", 7}}}},
                     {3, {{352, 240, "", 0}, {}, {}}}};
    dvd.rawIfos = {{"VIDEO_TS.IFO", file("DVDVIDEO-VMG", 300, 0x11)},
                   {"VTS_01_0.IFO", file("DVDVIDEO-VTS", 12, 0)},
                   {"VTS_03_0.IFO", file("DVDVIDEO-VTS", 128, 0x33)}};

    bdmeta::BlurayDisc& bluray = discs.bluray;
    bluray.indexVersion = {'0', '2', '0', '0'};
    bluray.titleCount = 7;
    bluray.organizationId = "0000ABCD";
    bluray.discId = "000102030405060708090A0B0C0D0E0F";
    bluray.clips.resize(1);
    bluray.clips[0].name = bdmeta::ClipName("00001");
    bluray.clips[0].rawData = file("HDMV", 200, 0x11);
    bluray.clips[0].streamFileSize = 0x1'0000'0000;
    bluray.playlists.resize(2);
    bluray.playlists[0].name = bdmeta::FixedText<5>("00000");
    bluray.playlists[0].rawData = file("MPLS", 4, 0);
    bluray.playlists[1].name = bdmeta::FixedText<5>("00800");
    bluray.playlists[1].rawData = file("MPLS", 10, 0x22);
    discs.titles.resize(2);
    discs.titles[0].durationMs = 1'000;
    discs.titles[1].durationMs = 5'400'000;
    discs.titles[1].playbackSize = 0x1'2345'6789;
    discs.titles[1].playmarkCount = 12;
    discs.totals.totalDurationMs = 5'401'000;
    discs.totals.totalPlaybackSize = 0x1'2345'6789;
    discs.totals.totalPlaymarks = 12;
    return discs;
}

struct Built {
    QByteArray bytes;
    QByteArray sha256 = "untouched";
    Message error = "of before";
};

// The DVD's package and the Blu-ray's. Digest and error text are optional.
std::array<Built, 2> build(const Discs& discs)
{
    std::array<Built, 2> built;
    auto& [dvd, bluray] = built;
    const package::DvdDiscTotals sums = package::sumDvdTitles(discs.dvd);
    dvd.bytes = package::buildDvdPackage(&discs.dvd, &sums, &dvd.sha256, &dvd.error);
    EXPECT_EQ(package::buildDvdPackage(&discs.dvd, &sums), dvd.bytes);
    bluray.bytes = package::buildBlurayPackage(&discs.bluray, discs.titles, &discs.totals, &bluray.sha256,
                                               &bluray.error);
    EXPECT_EQ(package::buildBlurayPackage(&discs.bluray, discs.titles, &discs.totals), bluray.bytes);
    return built;
}

// The package as hexadecimal digits and characters, 32 bytes a line; and its digest.
std::string dumpOf(const Built& built)
{
    EXPECT_EQ(built.sha256, QCryptographicHash::hash(built.bytes, QCryptographicHash::Sha256));
    const auto isUnprintable = [](char c) { return c < ' ' || c > '~'; };
    QByteArray text;
    for (qsizetype at = 0; at < built.bytes.size(); at += 32) {
        QByteArray line = built.bytes.mid(at, 32);
        text += line.toHex().leftJustified(66);
        std::ranges::replace_if(line, isUnprintable, '.');
        text += line + '\n';
    }
    return text.toStdString() + "SHA-256 " + built.sha256.toHex().toStdString() + '\n';
}

TEST(Packages, AreByteForByteTheFormat)
{
    const auto [dvd, bluray] = build(sampleDiscs());
    EXPECT_EQ(testsupport::goldenDifference(dumpOf(dvd), "package/golden/dvd.txt"), "");
    EXPECT_EQ(testsupport::goldenDifference(dumpOf(bluray), "package/golden/bluray.txt"), "");
}

TEST(Packages, DiscsThatBreakARuleHaveNone)
{
    using Change = std::function<void(Discs&)>;
    const auto named = [](const char* name) -> Change {
        return [name](Discs& d) { d.dvd.rawIfos[1].name = name; };
    };
    const std::vector<std::pair<const char*, std::vector<Change>>> rows = {
        {"DVD package input is incomplete.", {[](Discs& d) { d.dvd.titles.clear(); }}},
        {"DVD package requires VIDEO_TS.IFO as its first raw file.",
         {[](Discs& d) { d.dvd.rawIfos.clear(); }, [](Discs& d) { d.dvd.rawIfos[0].name = "video_ts.ifo"; },
          [](Discs& d) { std::swap(d.dvd.rawIfos[0], d.dvd.rawIfos[1]); }}},
        {"DVD package contains an invalid raw IFO file.",
         {named("VTS_1_0.IFO"), named("VTS_100_0.IFO"), named("VTS_0A_0.IFO"), named("VTS_A1_0.IFO"),
          named("VTS_01_0.ifo"), named("VTS_01_1.IFO"), named("vts_01_0.IFO"),
          [](Discs& d) { d.dvd.rawIfos[1].bytes.pop_back(); },
          [](Discs& d) { d.dvd.rawIfos[0].bytes.clear(); }}},
        {"DVD package contains an IFO with an unexpected signature.",
         {[](Discs& d) { d.dvd.rawIfos[0].bytes = d.dvd.rawIfos[1].bytes; },
          [](Discs& d) { d.dvd.rawIfos[2].bytes = d.dvd.rawIfos[0].bytes; },
          [](Discs& d) { d.dvd.rawIfos[1] = d.dvd.rawIfos[0]; }}},
        {"DVD package contains no VTS metadata.", {[](Discs& d) { d.dvd.titleSets.clear(); }}},
        {"DVD package contains invalid VTS stream metadata.",
         {[](Discs& d) { d.dvd.titleSets[0].number = 0; }, [](Discs& d) { d.dvd.titleSets[1].number = 100; },
          [](Discs& d) { d.dvd.titleSets[1].streams.audio.resize(9); },
          [](Discs& d) { d.dvd.titleSets[1].streams.subpicture.resize(33); }}},
        {"DVD title metadata is not in canonical order.",
         {[](Discs& d) { d.dvd.titles[0].titleNumber = 0; },
          [](Discs& d) { d.dvd.titles[1].titleNumber = 3; }}},
        {"Blu-ray package input is incomplete.",
         {[](Discs& d) { d.titles.clear(); }, [](Discs& d) { d.titles.pop_back(); }}},
        {"A Blu-ray clip information file could not be retained for packaging.",
         {[](Discs& d) { d.bluray.clips[0].rawData.clear(); }}},
        {"A Blu-ray playlist could not be retained for packaging.",
         {[](Discs& d) { d.bluray.playlists[1].rawData.clear(); }}},
        {"Blu-ray package requires five-character BDMV identifiers.",
         {[](Discs& d) { d.bluray.playlists[1].name = bdmeta::FixedText<5>("0080"); }}},
        {"", {[](Discs& d) {
             d.dvd.titleSets[1].number = 99;
             d.dvd.titleSets[1].streams.audio.resize(8);
             d.dvd.titleSets[1].streams.subpicture.resize(32);
             d.dvd.rawIfos[1].name = "VTS_99_0.IFO";
             d.bluray.clips.clear();
         }}},
    };
    for (const auto& [error, changes] : rows) {
        for (const Change& change : changes) {
            Discs discs = sampleDiscs();
            change(discs);
            QString errors;
            for (const Built& built : build(discs)) {
                errors += built.error.english();
                EXPECT_EQ(built.bytes.isEmpty(), !built.error.isEmpty()) << error;
                EXPECT_EQ(built.sha256 == "untouched", !built.error.isEmpty()) << error;
            }
            EXPECT_EQ(errors.toStdString(), error);
        }
    }
}

TEST(Packages, EachIdentifierOfABlurayDiscIsPresentOnItsOwn)
{
    Discs discs = sampleDiscs();
    const std::string id = discs.bluray.discId;
    const std::vector<std::tuple<std::string, std::string, char, char>> rows = {
        {"", "", 0, 44},          {"0000ABCD", "00", 1, 48}, {"", id, 2, 60},        {"0000ABC", id, 2, 60},
        {"0000ABCDE", "", 0, 44}, {"0000ABCG", "", 0, 44},   {"0G00ABCD", id, 2, 60}};
    for (const auto& [organizationId, discId, flags, sizeBytes] : rows) {
        discs.bluray.organizationId = organizationId;
        discs.bluray.discId = discId;
        const QByteArray bytes = build(discs)[1].bytes;
        EXPECT_TRUE(bytes[32 + 15] == sizeBytes && bytes[32 + 16 + 3] == flags) << organizationId;
    }
}

TEST(Packages, LengthsHaveSevenBitsAByte)
{
    QByteArray out;
    for (const std::uint64_t value : {127ULL, 128ULL, 0xFFFFFFFFULL, ~0ULL}) {
        package::appendVarint(out, value);
    }
    EXPECT_EQ(out.toHex(), "7f8001ffffffff0fffffffffffffffffff01");
}

}  // namespace
