// The configurations page: what it shows of a disc, refreshing it, and odd data of the service.
#include "tests/support/sample_bluray.h"
#include "tests/ui/lag_meter.h"
#include "tests/ui/window_fixture.h"
#include "ui/configuration_text.h"

#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSplitter>

using service::ConfigurationTitle;
using service::DiscConfiguration;
using testsupport::DiscForm;

class ConfigurationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theHeaderSaysWhatTheServiceKnows();
    void theListOpensConfigurations();
    void aTitleShowsItsDetailsAndTheDiscs();
    void aBlurayTitleIsMatchedByItsPlaylist();
    void everyTypeHasItsName();
    void chapterRangesAndOddTextsAreShown();
    void aDiscThatIsNotThereHasNothingToRefresh();
    void aRefreshKeepsSortingSelectionAndCurrentRow();
    void aFailedRefreshKeepsEverything();
    void aMessageOfTheServiceIsShown();
    void aLongErrorMakesNoWindowWider();
    void markupIsShownAsItIs();
    void largeRepliesDoNotHoldTheWindowUp_data();
    void largeRepliesDoNotHoldTheWindowUp();
};

namespace {

constexpr char kGetPath[] = "/api/tessera/dvd/configurations/get/";
constexpr char kBlurayFindPath[] = "/api/tessera/bluray/find/";
const QString kRefreshing =
    QStringLiteral("Refreshing Configurations: Downloading configurations from Tessera");

QJsonObject configuration(qint64 uid, const QString& name, const QString& user, const QJsonArray& titles = {},
                          const QJsonArray& paths = {})
{
    const QJsonObject data{{QStringLiteral("disc_name"), name},
                           {QStringLiteral("paths"), paths},
                           {QStringLiteral("titles"), titles}};
    return {{QStringLiteral("UID"), uid},
            {QStringLiteral("Language Code"), QStringLiteral("en")},
            {QStringLiteral("Added By Username"), user},
            {QStringLiteral("Added By UID"), 7},
            {QStringLiteral("Data"), QString::fromUtf8(QJsonDocument(data).toJson())}};
}

std::string json(const QJsonArray& array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
}

std::string findReply(const QJsonArray& configurations)
{
    return R"({"Disc ID": 17, "Configurations": )" + json(configurations) + "}";
}

const QJsonArray kThree = {
    configuration(1, QStringLiteral("beta"), QStringLiteral("cleo")),
    configuration(2, QStringLiteral("alpha"), QStringLiteral("bert")),
    configuration(3, QStringLiteral("beta"), QString()),
};

// The window with the sample disc open and the configurations view chosen.
struct ConfigurationsFixture : WindowFixture {
    explicit ConfigurationsFixture(const QJsonArray& configurations, bool isBluray = false)
        : WindowFixture(QStringLiteral("key"))
    {
        server.playFor(isBluray ? kBlurayFindPath : kFindPath, {.body = findReply(configurations)});
        if (!startWithKey()) { qFatal("the window does not start"); }
        const auto disc = isBluray ? testsupport::sampleBluray() : testsupport::sampleDvd();
        openDirectory(disc.write(DiscForm::Directory, folder));
        trigger("configurationsAction");
    }

    [[nodiscard]] QTreeWidget* list() const { return part<QTreeWidget>("configurationList"); }
    [[nodiscard]] QTreeWidget* titles() const { return part<QTreeWidget>("configurationTree"); }
    [[nodiscard]] QString shownDetails() const
    {
        return part<QTextEdit>("configurationDetails")->toPlainText();
    }
    [[nodiscard]] QString shownPage() const
    {
        return part<QStackedWidget>("configurationsPage")->currentWidget()->objectName();
    }
    [[nodiscard]] QStringList rows() const
    {
        QStringList texts;
        for (int i = 0; i < list()->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* row = list()->topLevelItem(i);
            texts.append(row->text(0) + QLatin1Char('|') + row->text(1) + QLatin1Char('|') + row->text(2));
        }
        return texts;
    }
    void refresh(const std::string& body)
    {
        server.play({.body = body});
        click("refreshConfigurationsButton");
    }
};

}  // namespace

void ConfigurationsTest::theHeaderSaysWhatTheServiceKnows()
{
    const ConfigurationsFixture fixture(kThree);
    QCOMPARE(fixture.page(), QStringLiteral("configurationsPage"));
    QVERIFY(fixture.part<QAction>("configurationsAction")->isChecked());
    QVERIFY(!fixture.part<QAction>("titlesAction")->isChecked());
    QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
             QStringLiteral("Type: DVD\nDisc ID: 17"));
    QCOMPARE(fixture.part<QLabel>("newConfigurationLink")->text(),
             QStringLiteral("<a href=\"%1/tessera/dvd/new/?uid=17\">New Configuration</a>")
                 .arg(QString::fromStdString(fixture.server.url())));

    DiscScanResult result;
    QCOMPARE(configurationtext::header(result), QStringLiteral("Type: Unknown\nDisc ID: (none)"));
    result.discType = DiscType::Bluray;
    result.discId = -9223372036854775807 - 1;
    result.error = Message::verbatim(QStringLiteral("<i>No</i>"));
    QCOMPARE(configurationtext::header(result),
             QStringLiteral("Type: Blu-ray\nDisc ID: -9223372036854775808\nError: <i>No</i>"));
    result.ok = 1;
    result.error = Message::verbatim(QString(60, QLatin1Char('x')) + QStringLiteral(" and more"));
    QCOMPARE(configurationtext::header(result),
             QStringLiteral("Type: Blu-ray\nDisc ID: -9223372036854775808\nNote: ") + result.error.english());
}

void ConfigurationsTest::theListOpensConfigurations()
{
    ConfigurationsFixture fixture(kThree);
    QCOMPARE(fixture.rows(), (QStringList{QStringLiteral("alpha|en|bert"), QStringLiteral("beta|en|cleo"),
                                          QStringLiteral("beta|en|7")}));
    auto* view = fixture.part<QPushButton>("viewConfigurationButton");
    QVERIFY(!view->isEnabled());

    QTreeWidget* list = fixture.list();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->topLevelItem(1)).center());
    QVERIFY(view->isEnabled());
    fixture.click("viewConfigurationButton");
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationDetailPage"));
    QCOMPARE(fixture.titles()->topLevelItemCount(), 0);
    QCOMPARE(fixture.shownDetails(), QString());
    QCOMPARE(fixture.part<QPushButton>("configurationListButton")->width(), fixture.window->width());
    fixture.click("configurationListButton");
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationListPage"));
    QCOMPARE(list->currentItem(), list->topLevelItem(1));

    const QPoint firstRow = list->visualItemRect(list->topLevelItem(0)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, firstRow);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, firstRow);
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationDetailPage"));
    fixture.click("configurationListButton");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationDetailPage"));
    // Another disc, or the same again, begins at the list.
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationListPage"));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void ConfigurationsTest::aTitleShowsItsDetailsAndTheDiscs()
{
    const QJsonArray titles = {
        QJsonObject{{QStringLiteral("id"), 2},
                    {QStringLiteral("type"), 6},
                    {QStringLiteral("path"), 1},
                    {QStringLiteral("name"), QStringLiteral("Making of")},
                    {QStringLiteral("note"), QStringLiteral("a note\nof two lines")},
                    {QStringLiteral("first_chapter"), 1},
                    {QStringLiteral("last_chapter"), 4}},
        QJsonObject{{QStringLiteral("id"), 3}, {QStringLiteral("path"), QJsonValue()}},
    };
    ConfigurationsFixture fixture({configuration(1, QStringLiteral("A"), QStringLiteral("a"), titles,
                                                 {QStringLiteral("x"), QStringLiteral("b/c.mkv")})});
    fixture.list()->setCurrentItem(fixture.list()->topLevelItem(0));
    fixture.click("viewConfigurationButton");
    QTreeWidget* tree = fixture.titles();
    QCOMPARE(tree->headerItem()->text(1), QStringLiteral("Title Number"));
    QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("Making of"));
    QCOMPARE(tree->topLevelItem(0)->text(1), QStringLiteral("2"));
    QCOMPARE(fixture.shownDetails(),
             QStringLiteral("Type: Movie Extra\nFile: b/c.mkv\nNote: a note\nof two lines\nChapters: 1-4\n"
                            "Title Number: 2\nResolution: 720x480\nVideo codec: MPEG-2 Video\n"
                            "Duration: 30 Second\nPlayback size (angle 1): 102400 bytes\nChapters: 1\n"
                            "Angles: 1\nAudio tracks: 1\nSubtitle tracks: 0\n"));
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(tree->currentItem()->text(0), QStringLiteral("(unnamed title)"));
    QCOMPARE(fixture.shownDetails(), QStringLiteral("Type: Unknown\n(no path information)\n"
                                                    "Matching disc title information is unavailable.\n"));
}

void ConfigurationsTest::aBlurayTitleIsMatchedByItsPlaylist()
{
    const QJsonArray titles = {QJsonObject{{QStringLiteral("id"), 800}, {QStringLiteral("type"), 1}}};
    ConfigurationsFixture fixture({configuration(1, QString(), QStringLiteral("a"), titles)}, true);
    QCOMPARE(fixture.rows(), QStringList{QStringLiteral("(unnamed disc)|en|a")});
    QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
             QStringLiteral("Type: Blu-ray\nDisc ID: 17"));
    fixture.list()->setCurrentItem(fixture.list()->topLevelItem(0));
    fixture.click("viewConfigurationButton");
    QCOMPARE(fixture.titles()->headerItem()->text(1), QStringLiteral("Playlist ID"));
    QCOMPARE(fixture.shownDetails(),
             QStringLiteral("Type: Movie\n(no path information)\nPlaylist ID: 800\nResolution: 1920x1080\n"
                            "Duration: 2 Minute\nPlayback size (angle 1, approx): 2304000 bytes\nClips: 2\n"
                            "Angles: 2\nAlternate-angle PlayItems: 1\nChapters: 3\nPlaymarks: 3\n"
                            "Video streams: 2\nVideo codecs: H.264\nPrimary audio tracks: 4\n"
                            "Primary subtitle tracks: 4\nIG (menu) streams: 0\nSecondary video: 0\n"
                            "Segment map (clip IDs): 00001, 00002\n"));
}

void ConfigurationsTest::everyTypeHasItsName()
{
    const QStringList names =
        QStringLiteral("Unknown,Movie,Episode,Video,Music Video,Concert,Movie Extra,Series Extra,"
                       "Season Extra,Video Extra,Movie Trailer,Series Trailer,Season Trailer,"
                       "Game Trailer,Other,Unknown")
            .split(QLatin1Char(','));
    for (int type = -1; type < 20; ++type) {
        ConfigurationTitle title;
        title.type = type;
        const QString expected =
            QStringLiteral("Type: %1\n").arg(names.value(type, QStringLiteral("Unknown")));
        QVERIFY2(configurationtext::details(title, {}, {}).startsWith(expected), qPrintable(expected));
    }
}

void ConfigurationsTest::chapterRangesAndOddTextsAreShown()
{
    const auto lines = [](const ConfigurationTitle& title) {
        DiscConfiguration configuration;
        configuration.paths = QStringList{QStringLiteral("one\nType: Movie"), QString()};
        return configurationtext::details(title, configuration, {}).split(QLatin1Char('\n')).mid(1, 2);
    };
    ConfigurationTitle title;
    title.firstChapter = 3;
    QCOMPARE(lines(title).at(1), QStringLiteral("Chapters: from 3"));
    title.lastChapter = 9;
    QCOMPARE(lines(title).at(1), QStringLiteral("Chapters: 3-9"));
    title.firstChapter = 0;
    QCOMPARE(lines(title).at(1), QStringLiteral("Chapters: up to 9"));
    for (const int outside : {-1, 1, 2, 2147483647, -2147483647 - 1}) {
        title.pathIndex = outside;
        QCOMPARE(lines(title).at(0), QStringLiteral("(no path information)"));
    }
    title.pathIndex = 0;  // a line break in a path makes no line of its own
    QCOMPARE(lines(title).at(0), QStringLiteral("File: one Type: Movie"));
}

void ConfigurationsTest::aDiscThatIsNotThereHasNothingToRefresh()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor(kFindPath, {.body = R"({"Disc ID": null})"});
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder),
                          [&] { fixture.driver.expectBox(kAddTitle, kAddQuestion, QMessageBox::No); });
    QVERIFY(fixture.isEnabled("configurationsAction"));
    QVERIFY(!fixture.part<QPushButton>("refreshConfigurationsButton")->isEnabled());
    QCOMPARE(fixture.part<QLabel>("newConfigurationLink")->text(),
             QStringLiteral("(No Tessera URL available)"));
    QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
             QStringLiteral("Type: DVD\nDisc ID: (none)"));
    // A path that is no disc leaves nothing to look at.
    fixture.openDirectory(fixture.folder.path(), [&] {
        fixture.driver.expectBox(QStringLiteral("Tessera Error"),
                                 QStringLiteral("Path is not a valid Blu-ray or DVD."));
    });
    QVERIFY(!fixture.isEnabled("configurationsAction"));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void ConfigurationsTest::aRefreshKeepsSortingSelectionAndCurrentRow()
{
    ConfigurationsFixture fixture(kThree);
    QTreeWidget* list = fixture.list();
    list->sortByColumn(0, Qt::DescendingOrder);
    QCOMPARE(fixture.rows(),  // the service's order holds among equals, whichever way the list is sorted
             (QStringList{QStringLiteral("beta|en|cleo"), QStringLiteral("beta|en|7"),
                          QStringLiteral("alpha|en|bert")}));
    list->setCurrentItem(list->topLevelItem(1));

    QJsonArray more = kThree;
    more.removeFirst();
    more.append(configuration(9, QStringLiteral("gamma"), QStringLiteral("dora")));
    fixture.refresh(json(more));
    QCOMPARE(fixture.driver.busyDialogs().last(), kRefreshing);
    QCOMPARE(fixture.rows(), (QStringList{QStringLiteral("gamma|en|dora"), QStringLiteral("beta|en|7"),
                                          QStringLiteral("alpha|en|bert")}));
    QCOMPARE(list->currentItem(), list->topLevelItem(1));
    QCOMPARE(list->selectedItems(), QList<QTreeWidgetItem*>{list->topLevelItem(1)});
    QVERIFY(fixture.part<QPushButton>("viewConfigurationButton")->isEnabled());
    fixture.click("viewConfigurationButton");
    QCOMPARE(fixture.shownPage(), QStringLiteral("configurationDetailPage"));
    fixture.click("configurationListButton");

    // The current row's configuration is gone: no row takes its place.
    fixture.refresh(json({kThree.at(1)}));
    QCOMPARE(fixture.rows(), QStringList{QStringLiteral("alpha|en|bert")});
    QVERIFY(list->currentItem() == nullptr);
    QVERIFY(!fixture.part<QPushButton>("viewConfigurationButton")->isEnabled());
    QVERIFY(fixture.part<QPushButton>("refreshConfigurationsButton")->isEnabled());
    QCOMPARE(fixture.server.requests().back().target, std::string(kGetPath) + "?discId=17");
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void ConfigurationsTest::aFailedRefreshKeepsEverything()
{
    ConfigurationsFixture fixture(kThree);
    QTreeWidget* list = fixture.list();
    list->setCurrentItem(list->topLevelItem(2));
    const QStringList before = fixture.rows();
    for (const char* body : {"", "{}", "[{}"}) {
        fixture.driver.expectBox(QStringLiteral("Tessera Error"),
                                 QStringLiteral("Tessera returned an invalid configurations response."));
        fixture.refresh(body);
        QCOMPARE(fixture.driver.problems(), QStringList());
        QCOMPARE(fixture.rows(), before);
        QCOMPARE(list->currentItem(), list->topLevelItem(2));
        QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
                 QStringLiteral("Type: DVD\nDisc ID: 17"));
        QVERIFY(fixture.part<QPushButton>("refreshConfigurationsButton")->isEnabled());
    }
    // Without a key the button asks for one and nothing else.
    fixture.window->findChild<DiscScanner*>()->setApiKey({});
    fixture.driver.expectKeyDialog({});
    const std::size_t requests = fixture.server.requests().size();
    fixture.window->refreshConfigurations();
    QCOMPARE(fixture.server.requests().size(), requests);
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void ConfigurationsTest::aMessageOfTheServiceIsShown()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    DiscScanResult result;
    result.ok = 1;
    result.discType = DiscType::Dvd;
    result.error = Message::verbatim(QStringLiteral("Two lines\nof news."));
    fixture.driver.expectBox(QStringLiteral("Tessera Message"), result.error.english());
    fixture.window->populate(QStringLiteral("/disc"), result);
    QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
             QStringLiteral("Type: DVD\nDisc ID: (none)\nNote: Two lines\nof news."));

    // It stays in the header after a refresh, and is not said again.
    result.inDatabase = true;
    result.discId = 17;
    fixture.driver.expectBox(QStringLiteral("Tessera Message"), result.error.english());
    fixture.window->populate(QStringLiteral("/disc"), result);
    fixture.trigger("configurationsAction");
    fixture.server.play({.body = "[]"});
    fixture.click("refreshConfigurationsButton");
    QCOMPARE(fixture.driver.busyDialogs().last(), kRefreshing);
    QCOMPARE(fixture.part<QLabel>("configurationDiscLabel")->text(),
             QStringLiteral("Type: DVD\nDisc ID: 17\nNote: Two lines\nof news."));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void ConfigurationsTest::aLongErrorMakesNoWindowWider()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    DiscScanResult result;
    result.discType = DiscType::Dvd;
    result.error = Message::verbatim(QString(300, QLatin1Char('x')) + QString(1000, QChar::LineSeparator));
    fixture.driver.expectBox(QStringLiteral("Tessera Error"), QString());
    fixture.window->populate(QStringLiteral("/disc"), result);
    QVERIFY(fixture.window->minimumSizeHint().width() < 600);
    QVERIFY(fixture.window->minimumSizeHint().height() < 400);
}

void ConfigurationsTest::markupIsShownAsItIs()
{
    const QString name =
        QStringLiteral("<img src=x> &amp; \u202Eabc\u202C \U0001F4BF \u05E9\u05DC\u05D5\u05DD\t%1");
    const QJsonArray titles = {QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("note"), name}}};
    ConfigurationsFixture fixture({configuration(1, name, name, titles)});
    QString note = name;  // but for what would turn its direction
    note.replace(QChar(0x202E), QChar(QChar::ReplacementCharacter));
    note.replace(QChar(0x202C), QChar(QChar::ReplacementCharacter));
    QString shown = note;
    shown.replace(QLatin1Char('\t'), QLatin1Char(' '));
    QCOMPARE(fixture.rows(), QStringList{shown + QStringLiteral("|en|") + shown});
    fixture.list()->setCurrentItem(fixture.list()->topLevelItem(0));
    fixture.click("viewConfigurationButton");
    QCOMPARE(fixture.titles()->topLevelItem(0)->text(0), shown);
    QVERIFY(fixture.shownDetails().contains(QStringLiteral("Note: ") + note + QLatin1Char('\n')));
}

void ConfigurationsTest::largeRepliesDoNotHoldTheWindowUp_data()
{
    QTest::addColumn<int>("configurations");
    QTest::addColumn<int>("titles");
    QTest::addColumn<int>("noteLength");
    QTest::newRow("50 MB of configurations") << 10'000 << 1 << 2'500;
    QTest::newRow("50 MB of one text") << 1 << 1 << 25'000'000;
    QTest::newRow("as many configurations as may be") << int{service::kMaximumConfigurations} << 0 << 0;
    QTest::newRow("as many titles as may be") << 1 << int{service::kMaximumEntries} - 2 << 0;
}

void ConfigurationsTest::largeRepliesDoNotHoldTheWindowUp()
{
    QFETCH(int, configurations);
    QFETCH(int, titles);
    QFETCH(int, noteLength);
    const QString text = QStringLiteral("\u05D0\u05D1 <b>").repeated(noteLength / 6);
    QJsonArray titleList;
    for (int i = 0; i < titles; ++i) {
        titleList.append(QJsonObject{{QStringLiteral("id"), i}, {QStringLiteral("note"), text}});
    }
    QJsonArray list;
    for (int i = 0; i < configurations; ++i) {
        list.append(configuration(i + 1, QStringLiteral("Disc %1").arg(i * 7919 % configurations) + text,
                                  text, titleList, {text}));
    }
    ConfigurationsFixture fixture({});
    fixture.server.play({.body = json(list)});
    const LagMeter lag;
    fixture.click("refreshConfigurationsButton");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.list()->topLevelItemCount(), configurations);
    QCoreApplication::processEvents();
    fixture.list()->setCurrentItem(fixture.list()->topLevelItem(configurations / 2));
    fixture.list()->sortByColumn(2, Qt::DescendingOrder);
    QCoreApplication::processEvents();
    fixture.click("viewConfigurationButton");
    QCoreApplication::processEvents();
    QCOMPARE(fixture.titles()->topLevelItemCount(), titles);
    const qint64 longestMs = lag.longestMs();
    qInfo("longest lag %lld ms", longestMs);
    QVERIFY2(longestMs < kLagLimitMs, qPrintable(QString::number(longestMs)));
}

QTEST_MAIN(ConfigurationsTest)
#include "configurations_test.moc"
