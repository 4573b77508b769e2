// Reports of discs: golden texts, and the examples of the documents.
#include "report/json_report.h"
#include "report/text_report.h"
#include "scan/disc_reader.h"
#include "tests/support/golden.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scopes.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <fstream>

using namespace testsupport;
using namespace Qt::StringLiterals;

namespace {

// Streams of every role and without names, texts with control characters, a clip without entry points, one that is not
// there, a playlist without PlayItems, and neither identity nor a readable index.
DiscTree oddBluray()
{
    MplsSpec empty;
    empty.playItems.clear();
    MplsSpec film;
    film.playItems = {sampleItem("00001", 60), sampleItem("00002", 60),
                      PlayItemSpec{.clipName = "\x1b[2\nJ"}};
    film.playItems[0].furtherAngles = {AngleSpec{.clipName = "00003"}, AngleSpec{.clipName = "00003"}};
    film.playItems[1].stn = {};
    StnTableSpec& stn = film.playItems[0].stn;
    stn.secondaryVideo = {StnStreamSpec{.pid = 0x1B00, .attributes = videoAttributes(0x1B, 15, 15)}};
    stn.dolbyVision = {StnStreamSpec{.pid = 0x1015, .attributes = videoAttributes(0x24, 8, 2)}};
    stn.primaryAudio[0].attributes = audioAttributes("\n\x1b\x07", 0x81, 15, 15);
    stn.graphics[0].attributes = graphicsAttributes("\xc2\x9b!");
    stn.graphics[1].attributes = textAttributes("jpn", 3);
    stn.interactiveGraphics = {StnStreamSpec{.pid = 0x1400, .attributes = graphicsAttributes("eng", 0x91)}};
    film.marks = {MarkSpec{}, MarkSpec{.markType = 2}, MarkSpec{.refToPlayItemId = 1}};
    return sampleBluray()
        .remove("CERTIFICATE/id.bdmv")
        .remove("BDMV/index.bdmv")
        .add("BDMV/index.bdmv/in it", {})
        .remove("BDMV/PLAYLIST/00801.mpls")
        .add("BDMV/PLAYLIST/00000.mpls", empty.build())
        .add("BDMV/PLAYLIST/00800.mpls", film.build())
        .add("BDMV/CLIPINF/00002.clpi", ClpiSpec().build());
}

// Audio of rare codings, streams without a language or of an unknown one, and a title whose size is an estimate.
DiscTree oddDvd()
{
    VmgSpec manager;
    manager.provider = "SAMPLE";
    manager.titles = {{.chapters = 3, .vtsn = 1}, {.angles = 2, .vtsn = 2}};
    VtsSpec odd;
    odd.video.system = 0;
    odd.pgcs[0].cells = {{0, 9, 0x50}, {10, 19, 0xD0}, {20, 29}};
    odd.audio = {{.codingMode = 4, .sampleRate = 1, .channels = 1, .language = "ja"},
                 {.codingMode = 5, .language = "zq"},
                 {.codingMode = 6, .languageType = 0, .channels = 8},
                 {.codingMode = 1}};
    odd.subpicture = {{.languageType = 0}, {.codingMode = 1, .language = "fr"}};
    return sampleDvd()
        .add("VIDEO_TS/VIDEO_TS.IFO", manager.build())
        .add("VIDEO_TS/VTS_02_0.IFO", odd.build());
}

TEST(Reports, OfOddDiscs)
{
    const TemporaryFolder folder;
    const QString path =
        u"/~\u007F\u0080\u009B\u00A0\u00E9\b\t\n\r\u061C\u2028\u202E\u2066\u200B\U000E0001\U0001F002"_s +
        QChar(u'\0') + QChar(0xD83C) + u'b' + QChar(0xDC02);
    for (const std::string kind : {"bluray", "dvd"}) {
        const std::string image = (kind == "dvd" ? oddDvd() : oddBluray()).write(DiscForm::Iso, folder);
        std::fstream(image, std::ios::in | std::ios::out | std::ios::binary).seekp(16 * 2048 + 40)
            << (kind == "dvd" ? "FIL\xC9 2        " : "A\x1b]0;\a\nB\xC9 ");  // the volume identifier
        const CapturedLog log;
        const scan::ParsedDisc disc = scan::readDisc(QByteArray::fromStdString(image));
        DiscScanResult result = scan::describeDisc(disc);
        std::string text;
        for (const std::string& line : log.lines()) {
            text += line + '\n';
        }
        text += report::textReport(path, disc, result).toStdString();
        EXPECT_EQ(goldenDifference(text, "report/golden/" + kind + ".txt"), "");

        if (kind == "dvd") {  // the largest number that every reader of JSON represents exactly, and the next
            result.dvdTitles[0].durationMs = 9'007'199'254'740'991;
            result.dvdTitles[1].durationMs = 9'007'199'254'740'992;
        }
        QString json = QString::fromUtf8(report::jsonReport(path, disc, result));
        json.replace(QRegularExpression(u"\n {17,}"_s), u" "_s);  // a line for each stream
        json.replace(u"\n                }"_s, u" }"_s);
        EXPECT_EQ(goldenDifference(json.toStdString(), "report/golden/" + kind + ".json"), "");
    }
}

// The film of the sample disc alone is the example of docs/REPORT.md.
TEST(Reports, OfTheDocumentedDisc)
{
    const TemporaryFolder folder;
    DiscTree film = sampleBluray().remove("BDMV/PLAYLIST/00000.mpls").remove("BDMV/PLAYLIST/00801.mpls");
    const scan::ParsedDisc disc =
        scan::readDisc(QByteArray::fromStdString(film.write(DiscForm::Directory, folder)));
    const DiscScanResult result = scan::describeDisc(disc);
    const std::string text = report::textReport(u"/discs/film"_s, disc, result).toStdString();
    const std::string json = report::jsonReport(u"/discs/film"_s, disc, result).toStdString();
    std::ifstream file(DOCUMENTS_DIR "/REPORT.md");
    std::string document{std::istreambuf_iterator<char>(file), {}};
    for (const std::string& example : {"```text\n" + text, "```json\n" + json}) {
        const std::size_t begin = document.find(example.substr(0, 8));
        document.replace(begin, document.find("```", begin + 8) - begin, example);
    }
    EXPECT_EQ(goldenDifference(document, "../docs/REPORT.md"), "");
}

}  // namespace
