#include "report/text_report.h"
#include "tests/report/reported_disc.h"

#include <algorithm>

namespace {

using testsupport::ReportedDisc;

QString reportOf(const ReportedDisc& read, const QString& path = QStringLiteral("/discs/film"))
{
    return report::textReport(path, read.disc, read.result);
}

TEST(TextReport, TheDocumentedExampleIsWhatTheProgramPrints)
{
    EXPECT_EQ(reportOf(testsupport::readReported(testsupport::exampleBluray())).toStdString(),
              testsupport::documentedExample("text").toStdString());
}

TEST(TextReport, NamesADvdAndEachOfItsTitles)
{
    const QString report = reportOf(testsupport::readReported(testsupport::sampleDvd()));
    EXPECT_TRUE(report.startsWith(QStringLiteral("Disc: DVD\nPath: /discs/film\nVolume identifier: Unknown\n"
                                                 "Provider: SAMPLE\nTitles: 2\n"
                                                 "Total duration: 1 Hour 1 Minute 31 Second\n")))
        << report.toStdString();
    EXPECT_TRUE(
        report.contains(QStringLiteral("\n\n#1: 3 Chapters, 1 Hour 1 Minute 1 Second\n  Title number: 1\n")));
    EXPECT_TRUE(
        report.contains(QStringLiteral("\n  Subtitle track: German, DVD subpicture\n    Language: de\n")))
        << report.toStdString();
    EXPECT_TRUE(report.contains(QStringLiteral("\n\n#2: 1 Chapters, 30 Second\n")));
}

TEST(TextReport, NothingOfADiscReachesATerminalAsACommand)
{
    testsupport::MplsSpec film;
    film.playItems = {testsupport::sampleItem("\x1b[2\nJ", 60)};
    film.playItems[0].stn.primaryAudio[0].attributes = testsupport::audioAttributes("\n\x1b\x07");
    film.playItems[0].stn.graphics[0].attributes = testsupport::graphicsAttributes("\xc2\x9b!");
    const testsupport::TemporaryFolder folder;
    const std::string path = folder / "disc.iso";
    testsupport::sampleBluray()
        .add("BDMV/PLAYLIST/00800.mpls", film.build())
        .image(testsupport::DiscForm::Iso, {.volumeId = "A\x1b]0;\a\nB"})
        .writeTo(path);
    const QString report =
        reportOf(testsupport::readReported(path), QStringLiteral("/discs/\u202eA\nB\r\U000E0001"));
    EXPECT_TRUE(std::ranges::all_of(report, [](QChar c) { return c == u'\n' || (c >= u' ' && c <= u'~'); }))
        << report.toStdString();
    for (const char* line :
         {"Path: /discs/\\u202eA\\x0aB\\x0d\\U000e0001", "Volume identifier: A\\x1b]0;\\x07\\x0aB",
          "  \\x1b[2\\x0aJ", "    Language: \\x0a\\x1b\\x07", "    Language: \\x9b!"}) {
        EXPECT_TRUE(report.contains(QLatin1Char('\n') + QString::fromLatin1(line) + QLatin1Char('\n')))
            << line;
    }
}

}  // namespace
