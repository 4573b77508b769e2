// What the window shows: after the steps of the scripts, of others' texts, in the user's language, and on the titles page.
#include "app/translation.h"
#include "base/message.h"
#include "tests/support/golden.h"
#include "tests/ui/window_fixture.h"
#include "text/title_text.h"
#include "ui/configuration_text.h"
#include "ui/message_box.h"
#include "ui/plain_text.h"
#include "ui/titles_page.h"

#include <QHeaderView>
#include <QTranslator>

#include <gtest/gtest.h>

#include <filesystem>

namespace {

void expectGolden(const QString& text, const std::string& name)
{
    EXPECT_EQ(testsupport::goldenDifference(text.toStdString(), "ui/golden/" + name), "");
}

TEST(Window, ShowsWhatTheScriptsDid)
{
    for (const auto& entry : std::filesystem::directory_iterator(PLATTERSCOPE_UI_SCRIPTS)) {
        const std::string name = entry.path().stem();
        expectGolden(WindowFixture().play(name), "scripts/" + name + ".txt");
    }
}

TEST(Texts, OfOthersAreCutToTheirPlace)
{
    const struct {
        QString text;
        qsizetype characters, lines;
        QString shown;
    } rows[] = {{u"a\nb\nc"_s, 5, 3, u"a\nb\nc"_s},
                {u"a\nb\nc"_s, 5, 2, u"a\nb\u2026"_s},
                {u"a\nb\nc"_s, 3, 3, u"a\nb\u2026"_s},
                {u"a\U0001F4BF"_s, 2, 1, u"a\u2026"_s},  // no half character
                {u"a\U0001F4BF"_s, 3, 1, u"a\U0001F4BF"_s},
                {u"a\r\nb"_s, 9, 2, u"a\nb"_s},
                {u"a\u202Eb\u2066c\u200F"_s, 9, 1, u"a\uFFFDb\uFFFDc\u200F"_s},
                {u"\u202A\u2029\u2069\u206A"_s, 9, 2, u"\uFFFD\n\uFFFD\u206A"_s},
                {u"\t\n\v\f\r\u0085\u2028\u000E"_s, 9, 9, u"\t\n\n\n\n\n\n\u000E"_s}};
    for (const auto& row : rows) {
        EXPECT_EQ(plaintext::bounded(row.text, row.characters, row.lines), row.shown);
    }
    EXPECT_EQ(plaintext::oneLine(u" a\n\tb\u2028\u00A0c "_s, 9), u" a  b \u00A0c "_s);
    EXPECT_EQ(plaintext::oneLine(u"abcd"_s, 3), u"abc\u2026"_s);
}

TEST(Texts, OfConfigurationsAreShownWhateverTheyHold)
{
    service::DiscConfiguration configuration;
    configuration.paths = QStringList{u"one\nType: Movie"_s, {}};
    DiscScanResult disc{.discType = DiscType::Dvd, .dvdTitles = {{.titleNumber = 5}}};
    QString text;
    for (int i = -1; i < 20; ++i) {
        text += configurationtext::details(
            {.id = i, .type = i, .pathIndex = i - 7, .firstChapter = i % 2, .lastChapter = i % 3},
            configuration, disc);
    }
    disc.error = Message::verbatim(u"Two lines\nof <i>news</i>."_s);
    text += configurationtext::header(disc) + u'\n';
    disc.ok = 1;
    disc.discId = -9223372036854775807 - 1;
    text += configurationtext::header(disc) + u'\n';
    disc.error = Message::verbatim(QString(201, u'x') + QString(9, u'\n'));
    expectGolden(text + configurationtext::header(disc), "configuration_texts.txt");
}

TEST(Texts, OfTheServiceAreShownOnceAndMakeNoWindowWider)
{
    WindowFixture fixture(u"stored key ; start"_s);
    DiscScanResult disc{.ok = 1, .discType = DiscType::Dvd, .discId = 17, .inDatabase = true};
    disc.error = Message::verbatim(u"News."_s);
    fixture.window->populate(u"/disc"_s, disc);
    const QString text = fixture.seen(u"a message"_s);
    fixture.server.play({.body = "[]"});
    expectGolden(text + fixture.seen(u"refreshed"_s, u"call refreshConfigurations"_s), "news.txt");
    disc.error = Message::verbatim(QString(300, u'x') + QString(1000, QChar::LineSeparator));
    fixture.window->populate(u"/disc"_s, disc);
    EXPECT_LT(fixture.window->minimumSizeHint().width(), 600);
    EXPECT_LT(fixture.window->minimumSizeHint().height(), 400);
}

TEST(Texts, OfBoxesKeepTheirButtonsOnTheScreen)
{
    const QString tail(3000, u'b');
    const struct {
        QString text, details, shown;
    } rows[] = {
        {QString(2000, u'a') + tail, {}, QString(2000, u'a') + u"\u2026 (details: "_s + tail + u')'},
        {QString(2000, u'a') + tail, u"why"_s,
         QString(2000, u'a') + u"\u2026 (details: "_s + tail + u"\\nwhy)"_s},
        // A NUL hides nothing; a text of many lines and characters has an end.
        {QChar(0) + QString(40, u'\n') + QString(99'999, u'b'),
         {},
         QChar(0) + u"\\n"_s.repeated(39) + u"\u2026 (details: "_s + QString(65'535, u'b') + u"\u2026)"_s}};
    for (const auto& row : rows) {
        ModalDriver driver;
        messagebox::critical(nullptr, u"Title"_s, row.text, row.details);
        EXPECT_EQ(driver.taken().section(u": "_s, 1), row.shown + u'\n');
    }
}

TEST(Texts, AreInTheUsersLanguage)
{
    const AudioTrackInfo track{.language = u"ji"_s, .channelLayout = u"6 channels"_s};
    const Message failed("Network error: %1", {u"Timeout was reached"_s});
    installTranslations(*qApp, {u"de"_s}, QStringLiteral(PLATTERSCOPE_COMPILED_TRANSLATIONS));
    EXPECT_EQ(failed.english(), u"Network error: Timeout was reached"_s);
    EXPECT_EQ(failed.translated(), u"Netzwerkfehler: Timeout was reached"_s);
    EXPECT_EQ(Message("cannot open '%1': %2", {u"%2"_s, u"no"_s}).translated(),
              u"„%2“ lässt sich nicht öffnen: no"_s);
    EXPECT_EQ(Message::verbatim(u"%1 %2"_s).translated(), u"%1 %2"_s);
    EXPECT_EQ(titletext::summary(track), u"Jiddisch, Unbekannt, 6 Kanäle"_s);
    qDeleteAll(qApp->findChildren<QTranslator*>());
}

// The page, of the size it has in the window.
struct ShownPage : TitlesPage {
    explicit ShownPage(const DiscScanResult& result)
    {
        resize(900, 600);
        show();
        showTitles(result);
        QApplication::processEvents();
    }
    using TitlesPage::moveSplitter;
    QTreeWidget* tree = findChild<QTreeWidget*>();
};

// Each row with its tool tip and, in the line after it, its details.
QString rowsOf(const ShownPage& page)
{
    QString text;
    for (QTreeWidgetItemIterator row(page.tree); *row != nullptr; ++row) {
        page.tree->setCurrentItem(*row);
        text += cellsOf(page.tree->currentIndex()) +
                u" [%1] [%2]\n    "_s.arg((*row)->toolTip(0), (*row)->toolTip(1));
        text += page.findChild<QTextEdit*>()->toPlainText().replace(u'\n', u" / "_s) + u'\n';
    }
    return text;
}

TEST(Titles, AreListedWithTheirDetails)
{
    DiscScanResult result{.discType = DiscType::Dvd};
    for (const quint64 durationMs :
         {0ULL, 999ULL, 1000ULL, 60'000ULL, 3'600'000ULL, 7'200'000ULL, 3'661'999ULL, 3'601'000ULL, ~0ULL}) {
        result.dvdTitles.append(DvdTitleInfo{.durationMs = durationMs});
    }
    result.dvdTitles.front().isSizeEstimated = true;
    result.dvdTitles.front().videoStreams = {{.category = 26}, {.category = 6}, {.category = 7}};
    for (const char* language : {"", "de", "DE", "ger", "deu", "iw", "in", "zq", "<b>"}) {
        result.dvdTitles.front().audioTracks.append({.language = QString::fromLatin1(language)});
    }
    result.dvdTitles.front().subtitleTracks = {{}};
    result.dvdTitles[3].distinctDurationMs = 2;
    result.dvdTitles[5].distinctDurationMs = 2;
    const ShownPage odd(result);
    EXPECT_EQ(odd.tree->currentIndex().row(), 3);  // the first of those with the most distinct play time
    const ShownPage markup({.discType = DiscType::Bluray,
                            .blurayTitles = {{.isSizeEstimated = true,
                                              .angleCount = 1,
                                              .subtitleTracks = {{.language = u"eng"_s, .pid = 0x12A0}},
                                              .name = u"#1 <b>AB"_s}}});
    expectGolden(rowsOf(odd) + rowsOf(markup), "odd_titles.txt");
}

TEST(Titles, TakeTheWidthOfTheirRowsAndKeepTheUsersOwn)
{
    DiscScanResult result{.discType = DiscType::Dvd};
    ShownPage page(result);
    EXPECT_EQ(qRound(10.0 * page.sizes().at(1) / page.sizes().at(0)), 20);
    result.dvdTitles = {{.audioTracks = {{.codecName = QString(300, u'x')}}}};
    page.showTitles(result);
    EXPECT_EQ(page.sizes().at(0) / 40, (page.tree->header()->length() + 20) / 40);
    page.tree->topLevelItem(0)->setExpanded(true);  // shows a row that is wider than the window
    EXPECT_TRUE(QTest::qWaitFor([&page] { return page.sizes().at(0) == 450; }));
    page.moveSplitter(350, 1);  // as the user does
    page.showTitles(result);
    EXPECT_EQ(page.sizes().at(0), 350);
}

}  // namespace
