#include "package/dvd_package.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

using dvdmeta::DvdDisc;
using package::DvdDiscTotals;

namespace {

std::vector<std::uint8_t> fileBytes(std::string_view signature, std::size_t size, std::uint8_t filler)
{
    std::vector<std::uint8_t> bytes(size, filler);
    std::ranges::copy(signature, bytes.begin());
    return bytes;
}

// Two titles and title sets 1 and 3, with files whose lengths need one and two bytes.
DvdDisc sampleDisc()
{
    DvdDisc disc;
    disc.providerRaw.fill(' ');
    std::ranges::copy(std::string_view("PROVIDER"), disc.providerRaw.begin());
    disc.providerRaw.back() = 0;
    disc.titles.resize(2);
    disc.titles[0].titleNumber = 1;
    disc.titles[0].chapterCount = 12;
    disc.titles[0].durationMs = 5'400'480;
    disc.titles[0].playbackSizeBytes = 0x1'2345'0000;
    disc.titles[1].titleNumber = 2;
    disc.titles[1].durationMs = 61'967;
    disc.titles[1].playbackSizeBytes = 0x6800;
    disc.titleSets.resize(2);
    disc.titleSets[0].number = 1;
    disc.titleSets[0].streams.video = {720, 576, "MPEG-2 Video", 1};
    disc.titleSets[0].streams.audio = {{{'e', 'n'}, "AC-3", "6 channels", "48 kHz", 0, 5, 0},
                                       {{'d', '\0'}, "DTS", "2 channels", "32 kHz", 6, 1, 3}};
    disc.titleSets[0].streams.subpicture = {{{'d', 'e'}, "DVD subpicture extended", 1}};
    disc.titleSets[1].number = 3;
    disc.titleSets[1].streams.video = {352, 240, "MPEG-1 Video", 0};
    disc.rawIfos = {{"VIDEO_TS.IFO", fileBytes("DVDVIDEO-VMG", 300, 0x11)},
                    {"VTS_01_0.IFO", fileBytes("DVDVIDEO-VTS", 12, 0)},
                    {"VTS_03_0.IFO", fileBytes("DVDVIDEO-VTS", 128, 0x33)}};
    return disc;
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

// The sample's package, written out.
QByteArray samplePackage()
{
    QByteArray out;
    out += "PSTP-DVD" + hex("0001 0020 00000000") + hex("000000000000032f") + hex("00000004 00000000");

    out += "DISC" + hex("0001 0000 0000000000000035");
    out += hex("20") + "PROVIDER" + QByteArray(23, ' ') + hex("00");
    out += hex("00000002") + hex("00000000005359af") + hex("0000000123456800");

    out += "IFO " + hex("0001 0000 0000000000000245") + hex("03");
    out += hex("0c") + "VIDEO_TS.IFO";
    out += hex("6be44a3471ada058e3b9af26e2f4e1894784b14498a1bae1015e1981bae1ab73");
    out += hex("ac02") + "DVDVIDEO-VMG" + QByteArray(288, '\x11');
    out += hex("0c") + "VTS_01_0.IFO";
    out += hex("3e9ac36f51d0d3c34af7a803b3b8d786f1ed8307b6f874f6196f282537f264fa");
    out += hex("0c") + "DVDVIDEO-VTS";
    out += hex("0c") + "VTS_03_0.IFO";
    out += hex("6d590ff68cc98b69df758592c18846533fd65eb67559315e6241db8221baf6cc");
    out += hex("8001") + "DVDVIDEO-VTS" + QByteArray(116, '\x33');

    out += "VTS " + hex("0001 0000 0000000000000024") + hex("02");
    out += hex("01 02d0 0240 01");
    out += hex("02") + hex("01656e00 00 05 00") + hex("00000000 06 01 03");
    out += hex("01") + hex("01646500 01");
    out += hex("03 0160 00f0 00") + hex("00") + hex("00");

    out += "TITL" + hex("0001 0000 0000000000000031") + hex("02");
    out += hex("00000001 0000000c 00000000005267a0 0000000123450000");
    out += hex("00000002 00000000 000000000000f20f 0000000000006800");
    return out;
}

// SHA-256 of the whole, its length field included.
constexpr char kSampleSha256[] = "4bb8c54f8fe549286fbde20d8770331b17255cb758034351522a568b258f364f";

struct Built {
    QByteArray bytes;
    QByteArray digest = "untouched";
    QString error = QStringLiteral("from before");
};

Built build(const DvdDisc& disc)
{
    Built built;
    const DvdDiscTotals totals = package::sumDvdTitles(disc);
    built.bytes = package::buildDvdPackage(&disc, &totals, &built.digest, &built.error);
    return built;
}

TEST(DvdPackage, IsByteForByteAsTheFormatSays)
{
    const Built built = build(sampleDisc());
    EXPECT_EQ(built.bytes.toHex(), samplePackage().toHex());
    EXPECT_EQ(built.digest.toHex(), kSampleSha256);
    EXPECT_TRUE(built.error.isEmpty());
    EXPECT_EQ(built.bytes.size(), 0x32F);

    const DvdDisc disc = sampleDisc();
    const DvdDiscTotals totals = package::sumDvdTitles(disc);
    EXPECT_EQ(package::buildDvdPackage(&disc, &totals), built.bytes) << "digest and text need not be wanted";
}

TEST(DvdPackage, EveryRetainedByteChangesTheDigest)
{
    const QByteArray digest = build(sampleDisc()).digest;
    for (std::size_t file = 0; file < 3; ++file) {
        DvdDisc disc = sampleDisc();
        disc.rawIfos[file].bytes.push_back(0);
        EXPECT_NE(build(disc).digest, digest);
        disc = sampleDisc();
        disc.providerRaw[31 - file] ^= 1;
        EXPECT_NE(build(disc).digest, digest);
    }
}

TEST(DvdPackage, LanguageBlockNeedsBothCharacters)
{
    const std::vector<std::pair<dvdmeta::DvdLanguage, const char*>> cases = {
        {{'f', 'r'}, "01667200"}, {{'\0', 'r'}, "00000000"}, {{'f', '\0'}, "00000000"}, {{}, "00000000"}};
    for (const auto& [language, block] : cases) {
        DvdDisc disc = sampleDisc();
        disc.titleSets.resize(1);
        disc.titleSets[0].streams.audio = {{language, {}, {}, {}, 4, 1, 2}};
        disc.titleSets[0].streams.subpicture = {{language, {}, 7}};
        QByteArray body;
        ASSERT_TRUE(package::writeTitleSetChunk(disc, body, nullptr));
        EXPECT_EQ(body.toHex(), QByteArray("01"
                                           "01"
                                           "02d0"
                                           "0240"
                                           "01"
                                           "01") +
                                    block +
                                    "040102"
                                    "01" +
                                    block + "07");
    }
}

TEST(DvdPackage, TotalsAreSumsAndStandAsGiven)
{
    DvdDisc disc = sampleDisc();
    const DvdDiscTotals sums = package::sumDvdTitles(disc);
    EXPECT_EQ(sums.titleCount, 2U);
    EXPECT_EQ(sums.durationMs, 5'462'447U);
    EXPECT_EQ(sums.playbackSizeBytes, 0x1'2345'6800U);
    const DvdDiscTotals given = {7, 0xFFEEDDCCBBAA9988, 1};
    const QByteArray bytes = package::buildDvdPackage(&disc, &given);
    EXPECT_EQ(bytes.mid(32 + 16 + 33, 20).toHex(), "00000007"
                                                   "ffeeddccbbaa9988"
                                                   "0000000000000001");
}

constexpr char kIncomplete[] = "DVD package input is incomplete.";
constexpr char kNoManager[] = "DVD package requires VIDEO_TS.IFO as its first raw file.";
constexpr char kInvalidIfo[] = "DVD package contains an invalid raw IFO file.";
constexpr char kSignature[] = "DVD package contains an IFO with an unexpected signature.";
constexpr char kNoTitleSets[] = "DVD package contains no VTS metadata.";
constexpr char kStreams[] = "DVD package contains invalid VTS stream metadata.";
constexpr char kOrder[] = "DVD title metadata is not in canonical order.";

using Spoiler = std::pair<std::function<void(DvdDisc&)>, const char*>;

// Spoils an otherwise right disc in each way; no package may come of it, but the sentence.
void expectFailures(const std::vector<Spoiler>& spoilers)
{
    for (const auto& [spoil, sentence] : spoilers) {
        DvdDisc disc = sampleDisc();
        spoil(disc);
        const Built built = build(disc);
        EXPECT_TRUE(built.bytes.isEmpty()) << sentence;
        EXPECT_EQ(built.error.toStdString(), sentence);
        EXPECT_EQ(built.digest, "untouched");
    }
}

TEST(DvdPackage, RawFilesThatBreakARule)
{
    expectFailures({
        {[](DvdDisc& disc) { disc.rawIfos.clear(); }, kNoManager},
        {[](DvdDisc& disc) { disc.rawIfos[0].name = "video_ts.ifo"; }, kNoManager},
        {[](DvdDisc& disc) { std::swap(disc.rawIfos[0], disc.rawIfos[1]); }, kNoManager},
        {[](DvdDisc& disc) { disc.rawIfos[1].name = "VTS_1_0.IFO"; }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[1].name = "VTS_100_0.IFO"; }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[1].name = "VTS_0A_0.IFO"; }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[1].name = "VTS_01_0.ifo"; }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[1].name = "VTS_01_1.IFO"; }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[1].bytes.pop_back(); }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[0].bytes.clear(); }, kInvalidIfo},
        {[](DvdDisc& disc) { disc.rawIfos[0].bytes = disc.rawIfos[1].bytes; }, kSignature},
        {[](DvdDisc& disc) { disc.rawIfos[2].bytes = disc.rawIfos[0].bytes; }, kSignature},
        {[](DvdDisc& disc) { disc.rawIfos[1] = disc.rawIfos[0]; }, kSignature},
    });
}

TEST(DvdPackage, MetadataThatBreaksARule)
{
    expectFailures({
        {[](DvdDisc& disc) { disc.titles.clear(); }, kIncomplete},
        {[](DvdDisc& disc) { disc.titleSets.clear(); }, kNoTitleSets},
        {[](DvdDisc& disc) { disc.titleSets[0].number = 0; }, kStreams},
        {[](DvdDisc& disc) { disc.titleSets[1].number = 100; }, kStreams},
        {[](DvdDisc& disc) { disc.titleSets[1].streams.audio.resize(9); }, kStreams},
        {[](DvdDisc& disc) { disc.titleSets[1].streams.subpicture.resize(33); }, kStreams},
        {[](DvdDisc& disc) { disc.titles[0].titleNumber = 0; }, kOrder},
        {[](DvdDisc& disc) { disc.titles[1].titleNumber = 3; }, kOrder},
        {[](DvdDisc& disc) { std::swap(disc.titles[0], disc.titles[1]); }, kOrder},
    });
}

TEST(DvdPackage, MissingArguments)
{
    const DvdDisc disc = sampleDisc();
    const DvdDiscTotals totals;
    QString error;
    EXPECT_TRUE(package::buildDvdPackage(nullptr, &totals, nullptr, &error).isEmpty());
    EXPECT_EQ(error.toStdString(), "DVD package input is incomplete.");
    error.clear();
    EXPECT_TRUE(package::buildDvdPackage(&disc, nullptr, nullptr, &error).isEmpty());
    EXPECT_EQ(error.toStdString(), "DVD package input is incomplete.");
    EXPECT_TRUE(package::buildDvdPackage(nullptr, nullptr).isEmpty());

    QByteArray body;
    EXPECT_FALSE(package::writeTitleChunk(DvdDisc(), body, &error));
    EXPECT_EQ(error.toStdString(), "DVD package contains no title metadata.");
}

TEST(DvdPackage, LimitsThemselvesAreAllowed)
{
    DvdDisc disc = sampleDisc();
    disc.titleSets[1].number = 99;
    disc.titleSets[1].streams.audio.resize(8);
    disc.titleSets[1].streams.subpicture.resize(32);
    disc.rawIfos[1].name = "VTS_99_0.IFO";
    EXPECT_FALSE(build(disc).bytes.isEmpty());
}

}  // namespace
