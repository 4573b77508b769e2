#include "package/bluray_package.h"
#include "package/dvd_package.h"
#include "package/encoding.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using dvdmeta::DvdDisc;

namespace {

std::vector<std::uint8_t> file(std::string_view signature, std::size_t size, std::uint8_t filler)
{
    std::vector<std::uint8_t> bytes(size, filler);
    std::ranges::copy(signature, bytes.begin());
    return bytes;
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray sha256(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

struct Discs {
    DvdDisc dvd;
    bdmeta::BlurayDisc bluray;
    std::vector<bdmeta::BlurayTitle> blurayTitles;
    bdmeta::BlurayDiscSummary blurayTotals;
};

// A DVD of two titles and of title sets 1 and 3; a Blu-ray disc of one clip and two playlists. The lengths of files need
// one or two bytes.
Discs sampleDiscs()
{
    Discs discs;
    DvdDisc& dvd = discs.dvd;
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

    discs.bluray.indexVersion = {'0', '2', '0', '0'};
    discs.bluray.titleCount = 7;
    discs.bluray.organizationId = "0000ABCD";
    discs.bluray.discId = "000102030405060708090A0B0C0D0E0F";
    discs.bluray.clips.resize(1);
    discs.bluray.clips[0].name = bdmeta::ClipName("00001");
    discs.bluray.clips[0].rawData = file("HDMV", 200, 0x11);
    discs.bluray.clips[0].streamFileSize = 0x1'0000'0000;
    discs.bluray.playlists.resize(2);
    discs.bluray.playlists[0].name = bdmeta::FixedText<5>("00000");
    discs.bluray.playlists[0].rawData = file("MPLS", 4, 0);
    discs.bluray.playlists[1].name = bdmeta::FixedText<5>("00800");
    discs.bluray.playlists[1].rawData = file("MPLS", 10, 0x22);
    discs.blurayTitles.resize(2);
    discs.blurayTitles[0].durationMs = 1'000;
    discs.blurayTitles[1].durationMs = 5'400'000;
    discs.blurayTitles[1].playbackSize = 0x1'2345'6789;
    discs.blurayTitles[1].playmarkCount = 12;
    discs.blurayTotals.totalDurationMs = 5'401'000;
    discs.blurayTotals.totalPlaybackSize = 0x1'2345'6789;
    discs.blurayTotals.totalPlaymarks = 12;
    return discs;
}

struct Built {
    QByteArray bytes;
    QByteArray sha256 = "untouched";
    Message error = "of before";
};

Built buildDvd(const Discs& discs)
{
    Built built;
    const package::DvdDiscTotals totals = package::sumDvdTitles(discs.dvd);
    built.bytes = package::buildDvdPackage(&discs.dvd, &totals, &built.sha256, &built.error);
    EXPECT_EQ(package::buildDvdPackage(&discs.dvd, &totals), built.bytes)
        << "digest and error text are optional";
    return built;
}

Built buildBluray(const Discs& discs)
{
    Built built;
    const auto build = [&discs](QByteArray* sha256, Message* error) {
        return package::buildBlurayPackage(&discs.bluray, discs.blurayTitles, &discs.blurayTotals, sha256,
                                           error);
    };
    built.bytes = build(&built.sha256, &built.error);
    EXPECT_EQ(build(nullptr, nullptr), built.bytes);
    return built;
}

TEST(Packages, DvdIsByteForByteTheFormat)
{
    const QByteArray manager = "DVDVIDEO-VMG" + QByteArray(288, '\x11');
    const QByteArray third = "DVDVIDEO-VTS" + QByteArray(116, '\x33');
    QByteArray package = "PSTP-DVD" + hex("0001 0020 00000000 000000000000033b 00000004 00000000");
    package +=
        "DISC" + hex("0001 0000 0000000000000035") + hex("20") + "PROVIDER" + QByteArray(23, ' ') + hex("00");
    package += hex("00000002 00000000005359af 0000000123456800");
    package += "IFO " + hex("0001 0000 0000000000000245") + hex("03");
    package += hex("0c") + "VIDEO_TS.IFO" + sha256(manager) + hex("ac02") + manager;
    package +=
        hex("0c") + "VTS_01_0.IFO" + hex("3e9ac36f51d0d3c34af7a803b3b8d786f1ed8307b6f874f6196f282537f264fa");
    package += hex("0c") + "DVDVIDEO-VTS";
    package += hex("0c") + "VTS_03_0.IFO" + sha256(third) + hex("8001") + third;
    package += "VTS " + hex("0001 0000 0000000000000030") + hex("02");
    package += hex("01 02d0 0240 01") + hex("03  01656e00 00 05 00  00000000 06 01 03  00000000 04 00 01");
    package += hex("02  01646500 01  00000000 07");
    package += hex("03 0160 00f0 00  00  00");
    package += "TITL" + hex("0001 0000 0000000000000031") + hex("02");
    package += hex("00000001 0000000c 00000000005267a0 0000000123450000");
    package += hex("00000002 00000000 000000000000f20f 0000000000006800");
    const Built built = buildDvd(sampleDiscs());
    EXPECT_EQ(built.bytes.toHex(' '), package.toHex(' '));
    EXPECT_EQ(built.sha256, sha256(package));
    EXPECT_TRUE(built.error.isEmpty());
}

TEST(Packages, BlurayIsByteForByteTheFormat)
{
    const QByteArray clip = "HDMV" + QByteArray(196, '\x11');
    const QByteArray second = "MPLS" + QByteArray(6, '\x22');
    QByteArray package = "PSTPBD" + hex("0001 0001 0020 00000000 0000000000000238 00000004 00000000");
    package += "DISC" + hex("0001 0000 0000000000000040") + hex("00000003") + "0200";
    package += hex("00000007 00000002 00000001 00000002 00000000005269a8 0000000123456789 0000000c");
    package += hex("0000abcd 000102030405060708090a0b0c0d0e0f");
    package += "CLPI" + hex("0001 0000 00000000000000fe") + hex("01");
    package += hex("0a") + "00001.clpi" + sha256(clip) + hex("c801") + clip + hex("0000000100000000");
    package += "MPLS" + hex("0001 0000 0000000000000067") + hex("02");
    package += hex("0a") + "00000.mpls" + sha256("MPLS") + hex("04") + "MPLS";
    package += hex("0a") + "00800.mpls" + sha256(second) + hex("0a") + second;
    package += "TITL" + hex("0001 0000 0000000000000033") + hex("02");
    package += "00000" + hex("00000000000003e8 0000000000000000 00000000");
    package += "00800" + hex("00000000005265c0 0000000123456789 0000000c");
    const Built built = buildBluray(sampleDiscs());
    EXPECT_EQ(built.bytes.toHex(' '), package.toHex(' '));
    EXPECT_EQ(built.sha256, sha256(package));
    EXPECT_TRUE(built.error.isEmpty());
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
         {[](Discs& d) { d.blurayTitles.clear(); }, [](Discs& d) { d.blurayTitles.pop_back(); }}},
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
            const Built dvd = buildDvd(discs);
            const Built bluray = buildBluray(discs);
            EXPECT_EQ((dvd.error.english() + bluray.error.english()).toStdString(), error);
            for (const Built& built : {dvd, bluray}) {
                EXPECT_EQ(built.bytes.isEmpty(), !built.error.isEmpty()) << error;
                EXPECT_EQ(built.sha256 == "untouched", !built.error.isEmpty()) << error;
            }
        }
    }
}

// What the builders refuse before they come to a chunk.
TEST(Packages, TitleChunksCheckTheirDiscThemselves)
{
    Discs discs = sampleDiscs();
    discs.blurayTitles.resize(3);
    QByteArray body;
    Message error;
    EXPECT_FALSE(package::writeTitleChunk(DvdDisc(), body, &error));
    EXPECT_EQ(error.english(), QStringLiteral("DVD package contains no title metadata."));
    EXPECT_FALSE(package::writeTitleChunk(discs.bluray, discs.blurayTitles, body, &error));
    EXPECT_EQ(error.english(), QStringLiteral("Blu-ray title data does not match its playlist manifest."));
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
        const QByteArray discChunk = buildBluray(discs).bytes.mid(32);
        EXPECT_EQ(discChunk[15], sizeBytes) << organizationId;
        EXPECT_EQ(discChunk[16 + 3], flags) << organizationId;
    }
}

TEST(Packages, LengthsHaveSevenBitsAByte)
{
    const std::vector<std::pair<std::uint64_t, const char*>> rows = {
        {127, "7f"}, {128, "8001"}, {UINT32_MAX, "ffffffff0f"}, {UINT64_MAX, "ffffffffffffffffff01"}};
    for (const auto& [value, bytes] : rows) {
        QByteArray out;
        package::appendVarint(out, value);
        EXPECT_EQ(out.toHex(), bytes);
    }
}

}  // namespace
