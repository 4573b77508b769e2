// The rows of trees and lists at the keyboard: found by typing, copied, with a menu and tool tips of their own.
#include "tests/support/sample_bluray.h"
#include "tests/ui/lag_meter.h"
#include "tests/ui/window_fixture.h"
#include "ui/monitor_page.h"
#include "ui/row_view.h"
#include "ui/titles_page.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>

using testsupport::DiscForm;

class RowsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void typingFindsARow_data();
    void typingFindsARow();
    void everyListOfTheWindowFindsAndCopies();
    void aRowHasAMenu();
    void streamsHaveToolTips();
    void aDiscOfDecoysIsSearchedAtOnce();
    void theTitlesTreeTakesTheWidthOfItsRows();
    void titlesAreSortedByTheirDuration();
};

namespace {

constexpr int kNoPauseMs = 60'000;

constexpr char kBlurayReply[] = R"({"Disc ID": 17, "Configurations": [
    {"UID": 1, "Language Code": "en", "Added By Username": "ada", "Data": "{\"disc_name\": \"Extras\"}"},
    {"UID": 2, "Language Code": "de", "Added By Username": "bert", "Data": "{\"disc_name\": \"The Movie\",
      \"titles\": [{\"id\": 800, \"name\": \"Film\"}, {\"id\": 0, \"name\": \"Menu\"}]}"}]})";

// The window with the sample Blu-ray open.
struct BlurayFixture : WindowFixture {
    BlurayFixture()
        : WindowFixture(QStringLiteral("key"))
    {
        server.playFor("/api/tessera/bluray/find/", {.body = kBlurayReply});
        if (!startWithKey()) { qFatal("the window does not start"); }
        openDirectory(testsupport::sampleBluray().write(DiscForm::Directory, folder));
    }
};

QString currentRow(const QTreeWidget& tree)
{
    const QTreeWidgetItem* row = tree.currentItem();
    return row == nullptr ? QString() : row->text(0) + QLatin1Char('|') + row->text(1);
}

// What Ctrl+C leaves on the clipboard.
QString copied(QWidget* widget)
{
    QGuiApplication::clipboard()->clear();
    QTest::keySequence(widget, QKeySequence::Copy);
    return QGuiApplication::clipboard()->text();
}

// Types a text, after a pause.
void type(QWidget* widget, const QString& text)
{
    QApplication::setKeyboardInputInterval(0);
    QTest::keyClick(widget, text.front().toLatin1());
    QApplication::setKeyboardInputInterval(kNoPauseMs);
    QTest::keyClicks(widget, text.mid(1));
}

// Chooses an entry of the menu that stands open, by the keyboard; what that leaves on the clipboard.
QString chosen(int entry)
{
    QGuiApplication::clipboard()->clear();
    for (int i = 0; i <= entry; ++i) {
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
    }
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
    return QGuiApplication::clipboard()->text();
}

}  // namespace

void RowsTest::init()
{
    QApplication::setKeyboardInputInterval(kNoPauseMs);  // a slow machine makes no pauses
}

void RowsTest::typingFindsARow_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("found");
    const auto row = [](const char* name, const char* from, const char* typed, const char* found) {
        QTest::newRow(name) << QString::fromLatin1(from) << QString::fromLatin1(typed)
                            << QString::fromLatin1(found);
    };
    row("a label, going round", "Beta", "800", "Alpha|one");
    row("any column, any case", "Alpha", "TWO", "Beta|two");
    row("the current row first", "Beta", "b", "Beta|two");
    row("again", "Alpha", "bb", "Gamma|beta three");
    row("and again", "Alpha", "bbb", "Beta|two");
    row("a text that goes on", "Alpha", "beta t", "Gamma|beta three");
    row("a blank first", "Alpha", " ga", "Gamma|beta three");
    row("open branches first", "Alpha", "audio", "Audio|French");
    row("then closed ones", "Beta", "deu", "Audio|German");
    row("from none", "", "gam", "Gamma|beta three");
    row("nowhere", "Beta", "zz", "Beta|two");
    row("a pause between", "Alpha", "b~g", "Gamma|beta three");
    row("no pause between", "Alpha", "bg", "Beta|two");
    row("the same after a pause", "Alpha", "b~b", "Gamma|beta three");
}

void RowsTest::typingFindsARow()
{
    QFETCH(QString, from);
    QFETCH(QString, typed);
    QFETCH(QString, found);
    RowView<QTreeWidget> tree;
    tree.setColumnCount(2);
    auto* alpha = new QTreeWidgetItem(&tree, {QStringLiteral("Alpha"), QStringLiteral("one")});
    alpha->setData(0, kFindRole, QStringLiteral("#1 00800"));
    auto* german = new QTreeWidgetItem(alpha, {QStringLiteral("Audio"), QStringLiteral("German")});
    german->setData(0, kFindRole, QStringLiteral("deu"));
    auto* beta = new QTreeWidgetItem(&tree, {QStringLiteral("Beta"), QStringLiteral("two")});
    new QTreeWidgetItem(beta, {QStringLiteral("Audio"), QStringLiteral("French")});
    new QTreeWidgetItem(&tree, {QStringLiteral("Gamma"), QStringLiteral("beta three")});
    beta->setExpanded(true);
    tree.show();
    tree.setCurrentItem(tree.findItems(from, Qt::MatchExactly).value(0));
    for (const QChar key : std::as_const(typed)) {
        if (key == QLatin1Char('~')) {
            QApplication::setKeyboardInputInterval(0);
        } else {
            QTest::keyClick(&tree, key.toLatin1());
        }
    }
    QCOMPARE(currentRow(tree), found);
    QCOMPARE(alpha->isExpanded(), found == QLatin1StringView("Audio|German"));
}

void RowsTest::everyListOfTheWindowFindsAndCopies()
{
    BlurayFixture fixture;
    QTreeWidget* titles = fixture.tree();
    type(titles, QStringLiteral("800"));
    QCOMPARE(titles->currentItem(), titles->topLevelItem(1));
    type(titles, QStringLiteral("german"));
    QCOMPARE(copied(titles), QStringLiteral("Audio\tGerman, AC-3, Stereo, 48 kHz"));
    auto* details = fixture.part<QTextEdit>("titleDetails");
    details->selectAll();
    QCOMPARE(copied(details), fixture.details());

    fixture.trigger("configurationsAction");
    auto* list = fixture.part<QTreeWidget>("configurationList");
    QTest::keyClicks(list, QStringLiteral("movie"));
    QCOMPARE(copied(list), QStringLiteral("The Movie\tde\tbert"));
    QTest::keyClick(list, Qt::Key_Return);
    auto* tree = fixture.part<QTreeWidget>("configurationTree");
    QTest::keyClicks(tree, QStringLiteral("menu"));
    QCOMPARE(copied(tree), QStringLiteral("Menu\t0"));

    auto* page = fixture.part<MonitorPage>("monitorPage");
    page->addEvent(MonitorPage::Files::Playlists, QStringLiteral("OPEN: 00800.mpls"));
    page->addEvent(MonitorPage::Files::Playlists, QStringLiteral("CLOSE: 00800.mpls"));
    auto* events = fixture.part<QListWidget>("eventPlaylistList");
    QTest::keyClicks(events, QStringLiteral("close"));
    QCOMPARE(copied(events), QStringLiteral("CLOSE: 00800.mpls"));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void RowsTest::aRowHasAMenu()
{
    const testsupport::CapturedLog log;
    BlurayFixture fixture;
    QTreeWidget* tree = fixture.tree();
    tree->topLevelItem(1)->setExpanded(true);
    tree->setCurrentItem(tree->topLevelItem(1)->child(1));
    const auto place = [tree] {
        return tree->viewport()->mapToGlobal(tree->visualItemRect(tree->currentItem()).bottomLeft());
    };
    QTest::keyClick(tree, Qt::Key_F10, Qt::ShiftModifier);
    QWidget* menu = QApplication::activePopupWidget();
    QVERIFY(menu != nullptr);
    QCOMPARE(menu->pos(), place());
    QCOMPARE(chosen(0), QStringLiteral("Audio\tEnglish, TrueHD, Multi-channel, 48 kHz"));
    // The Menu key, as platforms send it: with the place of the mouse.
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
    QApplication::sendEvent(tree, &menuKey);
    QVERIFY(QApplication::activePopupWidget() != nullptr);
    QCOMPARE(QApplication::activePopupWidget()->pos(), place());
    QCOMPARE(chosen(1), fixture.details());
    QVERIFY(fixture.details().startsWith(QStringLiteral("Audio track\n")));
    QTest::keyClick(tree, Qt::Key_F10, Qt::ShiftModifier);
    const std::string signature = chosen(2).toStdString();
    QVERIFY2(log.lines().back().ends_with(" package SHA-256 " + signature), signature.c_str());

    const auto rightClick = [tree](const QPoint& at) {
        QContextMenuEvent click(QContextMenuEvent::Mouse, at, tree->viewport()->mapToGlobal(at));
        QApplication::sendEvent(tree->viewport(), &click);
    };
    rightClick(tree->viewport()->rect().bottomRight());
    QVERIFY(QApplication::activePopupWidget() == nullptr);
    rightClick(tree->visualItemRect(tree->topLevelItem(0)).center());
    QVERIFY(QApplication::activePopupWidget() != nullptr);
    QCOMPARE(chosen(0), QStringLiteral("Title\t0 Chapters, 30 Second"));
    tree->clear();
    QTest::keyClick(tree, Qt::Key_F10, Qt::ShiftModifier);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
    QCOMPARE(copied(tree), QString());
}

void RowsTest::streamsHaveToolTips()
{
    DiscScanResult result;
    const auto toolTips = [&result](DiscType type) {
        result.discType = type;
        TitlesPage page;
        page.showTitles(result);
        QStringList texts;
        for (QTreeWidgetItemIterator row(page.findChild<QTreeWidget*>()); *row != nullptr; ++row) {
            if ((*row)->toolTip(0) != (*row)->toolTip(1)) { texts.append(QStringLiteral("not the same")); }
            texts.append((*row)->toolTip(0));
        }
        return texts;
    };
    BlurayTitleInfo bluray;
    bluray.label = QStringLiteral("#1 00800 (1 angles)");
    bluray.videoStreams.resize(1);
    bluray.videoStreams.front().pid = 0x1011;
    bluray.audioTracks = {{QStringLiteral("deu"), {}, {}, {}, 0x1100}};
    bluray.subtitleTracks = {{QStringLiteral("<b>"), {}, {}, 0xE0}};
    result.blurayTitles = {bluray};
    QCOMPARE(toolTips(DiscType::Bluray),
             (QStringList{bluray.label, QStringLiteral("PID 0x1011 (4113)"),
                          QStringLiteral("German, PID 0x1100 (4352)"),
                          QStringLiteral("<span>&lt;b&gt;, PID 0xE0 (224)</span>")}));
    DvdTitleInfo dvd;
    dvd.audioTracks = {{{}, {}, {}, {}, 0x80}};
    result.blurayTitles.clear();
    result.dvdTitles = {dvd};
    QCOMPARE(toolTips(DiscType::Dvd),
             (QStringList{QString(), QStringLiteral("Unknown, stream ID 0x80 (128)")}));
}

void RowsTest::aDiscOfDecoysIsSearchedAtOnce()
{
    DiscScanResult result;
    result.discType = DiscType::Bluray;
    BlurayTitleInfo title;
    title.videoStreams.resize(1);
    title.audioTracks.resize(8);
    title.subtitleTracks.resize(8);
    for (int i = 0; i < 1500; ++i) {
        title.label = QStringLiteral("#%1 %2").arg(i + 1).arg(10'000 + i);
        title.durationMs = i < 1400 ? 60'000 : 36'610'000;  // the longest row is far from the first
        result.blurayTitles.append(title);
    }
    TitlesPage page;
    page.resize(900, 600);
    page.show();
    const LagMeter lag;
    page.showTitles(result);
    QApplication::processEvents();
    auto* tree = page.findChild<QTreeWidget*>();
    QVERIFY(tree->columnWidth(1) >= tree->fontMetrics().horizontalAdvance(tree->topLevelItem(1400)->text(1)));
    type(tree, QStringLiteral("11499"));
    QCOMPARE(tree->currentItem(), tree->topLevelItem(1499));
    QApplication::processEvents();
    tree->expandAll();
    QApplication::processEvents();
    type(tree, QStringLiteral("nowhere"));
    const qint64 longestMs = lag.longestMs();
    qInfo("longest lag %lld ms", longestMs);
    QVERIFY2(longestMs < kLagLimitMs, qPrintable(QString::number(longestMs)));
}

void RowsTest::theTitlesTreeTakesTheWidthOfItsRows()
{
    DiscScanResult result;
    result.discType = DiscType::Dvd;
    result.dvdTitles.resize(1);
    result.dvdTitles.front().audioTracks = {{{}, QString(300, QLatin1Char('x')), {}, {}, 0x80}};
    TitlesPage page;
    page.resize(900, 600);
    page.show();
    QCOMPARE(qRound(10.0 * page.sizes().at(1) / page.sizes().at(0)), 20);
    page.showTitles(result);
    auto* tree = page.findChild<QTreeWidget*>();
    QCOMPARE(page.sizes().at(0) / 40, (tree->header()->length() + 20) / 40);
    tree->topLevelItem(0)->setExpanded(true);  // shows a row that is wider than the window
    QTRY_COMPARE(page.sizes().at(0), 450);
    QTest::mousePress(page.handle(1), Qt::LeftButton, {}, QPoint(1, 9));
    QTest::mouseMove(page.handle(1), QPoint(-99, 9));
    QTest::mouseRelease(page.handle(1), Qt::LeftButton, {}, QPoint(1, 9));
    const QList<int> chosen = page.sizes();
    QCOMPARE(chosen.at(0), 350);
    page.showTitles(result);
    QCOMPARE(page.sizes(), chosen);
}

void RowsTest::titlesAreSortedByTheirDuration()
{
    DiscScanResult result;
    result.discType = DiscType::Dvd;
    result.dvdTitles.resize(4);
    const QList<quint64> minutes = {9, 60, 9, 100};
    const QList<quint64> distinctMinutes = {9, 30, 30, 1};
    for (qsizetype i = 0; i < minutes.size(); ++i) {
        DvdTitleInfo& title = result.dvdTitles[i];
        title.chapterCount = static_cast<quint32>(i);
        title.durationMs = minutes.at(i) * 60'000;
        title.distinctDurationMs = distinctMinutes.at(i) * 60'000;
        title.audioTracks.resize(2);
        title.audioTracks.front().language = QStringLiteral("zh");
    }
    TitlesPage page;
    page.resize(900, 600);
    page.show();
    page.showTitles(result);
    auto* tree = page.findChild<QTreeWidget*>();
    const auto order = [tree] {
        QString text;
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            text += tree->topLevelItem(i)->text(1).first(1);
        }
        return text;
    };
    const auto clickDescription = [tree] {
        QTest::mouseClick(tree->header()->viewport(), Qt::LeftButton, {},
                          QPoint(tree->header()->sectionViewportPosition(1) + 20, 5));
    };
    QCOMPARE(order(), QStringLiteral("0123"));
    QCOMPARE(tree->currentItem(), tree->topLevelItem(1));
    const QTreeWidgetItem* selected = tree->currentItem();
    for (const char* expected : {"0213", "3102", "0123", "0213"}) {
        clickDescription();
        QCOMPARE(order(), QString::fromLatin1(expected));
        QCOMPARE(tree->currentItem(), selected);
        QVERIFY(selected->child(0)->text(1).startsWith(QStringLiteral("Chinese")));
    }
    page.showTitles(result);
    QCOMPARE(order(), QStringLiteral("0123"));
}

QTEST_MAIN(RowsTest)
#include "rows_test.moc"
