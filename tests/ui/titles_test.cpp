// The titles page: rows, tool tips, details, and its width.
#include "tests/ui/window_text.h"
#include "ui/titles_page.h"

#include <QApplication>
#include <QHeaderView>
#include <QTest>
#include <QTextEdit>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// The page, of the size it has in the window.
struct ShownPage : TitlesPage {
    explicit ShownPage(const DiscScanResult& result)
    {
        resize(900, 600);
        show();
        showTitles(result);
        QApplication::processEvents();
    }
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
                                              .subtitleTracks = {{.language = u"eng"_s, .pid = 0x12A0}},
                                              .label = u"#1 <b>AB (1 angles)"_s},
                                             {.label = u" (angles)"_s}}});
    EXPECT_EQ(difference(rowsOf(odd) + rowsOf(markup), "odd_titles"), "");
}

TEST(Titles, TakeTheWidthOfTheirRowsAndKeepTheUsersOwn)
{
    DiscScanResult result{.discType = DiscType::Dvd};
    ShownPage page(result);
    EXPECT_EQ(qRound(10.0 * page.sizes().at(1) / page.sizes().at(0)), 20);
    result.dvdTitles.resize(1);
    result.dvdTitles.front().audioTracks = {{.codecName = QString(300, u'x')}};
    page.showTitles(result);
    EXPECT_EQ(page.sizes().at(0) / 40, (page.tree->header()->length() + 20) / 40);
    page.tree->topLevelItem(0)->setExpanded(true);  // shows a row that is wider than the window
    EXPECT_TRUE(QTest::qWaitFor([&page] { return page.sizes().at(0) == 450; }));
    QTest::mousePress(page.handle(1), Qt::LeftButton, {}, QPoint(1, 9));
    QTest::mouseMove(page.handle(1), QPoint(-99, 9));
    QTest::mouseRelease(page.handle(1), Qt::LeftButton, {}, QPoint(1, 9));
    const QList<int> chosen = page.sizes();
    EXPECT_EQ(chosen.at(0), 350);
    page.showTitles(result);
    EXPECT_EQ(page.sizes(), chosen);
}

}  // namespace
