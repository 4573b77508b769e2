// The first start, the key dialog, and what becomes of the key.
#include "tests/ui/window_fixture.h"

#include <QFile>
#include <QHeaderView>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QTabWidget>

class StartAndKeyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theWholeTreeAndAllMenusStandFromTheStart();
    void everyPartIsAsItShouldBe_data();
    void everyPartIsAsItShouldBe();
    void headersSplittersAndLayoutsAreAsTheyShouldBe();
    void everyInteractivePartIsNamedAndReachedInReadingOrder();
    void aFirstStartAsksForAKeyAndKeepsAnAcceptedOne();
    void cancellingAtStartLeavesThePlaceholder();
    void aStoredKeyIsCheckedAtStart();
    void aStoredKeyKeepsWorkingWithoutTheService();
    void aRejectedKeyLeavesTheFormerOneWorking();
    void aNewerVersionIsAnnounced_data();
    void aNewerVersionIsAnnounced();
    void aKeyThatCannotBeSentIsRefusedWithoutARequest();
    void aKeyThatCannotBeStoredIsNotAccepted();
    void thePlaceholderKeyIsNoKey();
    void aKeyFileOpenToOthersIsReported();
    void aRefusedServiceAddressIsSaidAndTouchesNoKey();
    void checkingAKeyBringsTheOpenDiscBack();
    void aCloseRequestDuringWorkIsCarriedOutAfterIt();
};

namespace {

const QString kNotConfigured = QStringLiteral("Tessera API key is not configured.");
const QString kSecurity = QStringLiteral("API Key Security");
const QString kAuthenticationFailed = QStringLiteral("Tessera Authentication Failed");

QString storedKey()
{
    QString key;
    return service::loadApiKey(&key) ? key : QString();
}

}  // namespace

void StartAndKeyTest::theWholeTreeAndAllMenusStandFromTheStart()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    QStringList menus;
    for (const QAction* menu : fixture.window->menuBar()->actions()) {
        QStringList texts;
        for (const QAction* action : menu->menu()->actions()) {
            QCOMPARE(action->menuRole(), QAction::NoRole);
            QVERIFY(action->shortcut().isEmpty());
            texts.append(action->text() + (action->isCheckable() ? QStringLiteral("*") : QString()));
        }
        menus.append(menu->text() + QStringLiteral(": ") + texts.join(QStringLiteral(", ")));
    }
    QCOMPARE(menus, (QStringList{QStringLiteral("File: Open Disc ISO, Open Disc Directory, Quit"),
                                 QStringLiteral("View: Titles*, Configurations*, Blu-ray Access Monitor*"),
                                 QStringLiteral("Help: API Key, Configuration Library, About")}));

    const auto* pages = fixture.part<QStackedWidget>("pages");
    QStringList names;
    for (int i = 0; i < pages->count(); ++i) {
        names.append(pages->widget(i)->objectName());
    }
    QCOMPARE(names, (QStringList{QStringLiteral("placeholderPage"), QStringLiteral("titlesPage"),
                                 QStringLiteral("configurationsPage"), QStringLiteral("monitorPage")}));
}

void StartAndKeyTest::everyPartIsAsItShouldBe_data()
{
    QTest::addColumn<QString>("part");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* part, const char* property, const QVariant& value) {
        QTest::addRow("%s %s", part, property)
            << QString::fromLatin1(part) << QString::fromLatin1(property) << value;
    };
    row("enterKeyButton", "text", QStringLiteral("Enter My API Key"));
    row("titlesPage", "childrenCollapsible", false);
    row("titlesTree", "rootIsDecorated", true);
    row("titleDetails", "readOnly", true);
    row("newConfigurationLink", "openExternalLinks", true);
    row("viewConfigurationButton", "text", QStringLiteral("View"));
    row("viewConfigurationButton", "toolTip", QStringLiteral("View the selected configuration"));
    row("viewConfigurationButton", "enabled", false);
    row("refreshConfigurationsButton", "text", QStringLiteral("Refresh"));
    row("refreshConfigurationsButton", "toolTip",
        QStringLiteral("Reload configurations from Tessera after updating them on the website"));
    row("refreshConfigurationsButton", "enabled", false);
    row("configurationList", "rootIsDecorated", false);
    row("configurationList", "sortingEnabled", true);
    row("configurationListButton", "text", QStringLiteral("Configuration List"));
    row("configurationSplitter", "childrenCollapsible", false);
    row("configurationTree", "rootIsDecorated", true);
    row("configurationDetails", "readOnly", true);
    for (const char* tabs : {"eventTabs", "openFileTabs"}) {
        row(tabs, "currentIndex", 0);
        row(tabs, "count", 2);
    }
    row("startMonitoringButton", "text", QStringLiteral("Start"));
    row("startMonitoringButton", "enabled", false);
    row("stopMonitoringButton", "text", QStringLiteral("Stop"));
    row("stopMonitoringButton", "enabled", false);
    row("clearMonitorButton", "text", QStringLiteral("Clear All"));
    row("clearMonitorButton", "enabled", false);
    row("monitorStatusLabel", "text", QStringLiteral("Idle"));
}

void StartAndKeyTest::everyPartIsAsItShouldBe()
{
    QFETCH(QString, part);
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    const WindowFixture fixture;
    const MainWindow window;
    const auto* widget = window.findChild<QWidget*>(part);
    QVERIFY(widget != nullptr);
    QCOMPARE(widget->property(property.toLatin1().constData()), value);
}

void StartAndKeyTest::headersSplittersAndLayoutsAreAsTheyShouldBe()
{
    const WindowFixture fixture;
    const MainWindow window;
    const auto headers = [&window](const char* tree) {
        const auto* item = window.findChild<QTreeWidget*>(QString::fromLatin1(tree))->headerItem();
        QStringList texts;
        for (int i = 0; i < item->columnCount(); ++i) {
            texts.append(item->text(i));
        }
        return texts.join(QLatin1Char('|'));
    };
    QCOMPARE(headers("titlesTree"), QStringLiteral("Type|Description"));
    QCOMPARE(headers("configurationList"), QStringLiteral("Name|Language|Added By"));
    QCOMPARE(headers("configurationTree"), QStringLiteral("File|Title Number"));
    const auto* listHeader = window.findChild<QTreeWidget*>(QStringLiteral("configurationList"))->header();
    QVERIFY(!listHeader->stretchLastSection());
    QCOMPARE(listHeader->sectionResizeMode(0), QHeaderView::Stretch);
    QCOMPARE(listHeader->sectionResizeMode(2), QHeaderView::ResizeToContents);
    for (const char* splitter : {"titlesPage", "configurationSplitter"}) {
        const auto* found = window.findChild<QSplitter*>(QString::fromLatin1(splitter));
        QCOMPARE(found->orientation(), Qt::Horizontal);
        QCOMPARE(found->widget(0)->sizePolicy().horizontalStretch(), 1);
        QCOMPARE(found->widget(1)->sizePolicy().horizontalStretch(), 2);
    }
    for (const char* page : {"placeholderPage", "configurationListPage", "configurationDetailPage"}) {
        QCOMPARE(window.findChild<QWidget*>(QString::fromLatin1(page))->layout()->contentsMargins(),
                 QMargins());
    }
    for (const char* tabs : {"eventTabs", "openFileTabs"}) {
        const auto* found = window.findChild<QTabWidget*>(QString::fromLatin1(tabs));
        QCOMPARE(found->tabText(0), QStringLiteral("Playlists (.mpls)"));
        QCOMPARE(found->tabText(1), QStringLiteral("Segments (.m2ts)"));
    }
    QCOMPARE(window.findChild<QLabel*>(QStringLiteral("configurationDiscLabel"))->textFormat(),
             Qt::PlainText);
}

void StartAndKeyTest::everyInteractivePartIsNamedAndReachedInReadingOrder()
{
    const WindowFixture fixture;
    const MainWindow window;
    QStringList order;
    const QWidget* widget = &window;
    while ((widget = widget->nextInFocusChain()) != &window) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0 || qobject_cast<const QMenuBar*>(widget) != nullptr ||
            widget->objectName().startsWith(QLatin1StringView("qt_"))) {
            continue;
        }
        QVERIFY2(!widget->objectName().isEmpty() && !widget->accessibleName().isEmpty(),
                 qPrintable(QString::fromLatin1(widget->metaObject()->className()) + widget->objectName()));
        order.append(widget->objectName());
    }
    const auto isBefore = [&order](const char* first, const char* second) {
        const auto at = order.indexOf(QString::fromLatin1(first));
        return at >= 0 && at < order.indexOf(QString::fromLatin1(second));
    };
    QVERIFY(isBefore("titlesTree", "titleDetails"));
    QVERIFY(isBefore("viewConfigurationButton", "refreshConfigurationsButton"));
    QVERIFY(isBefore("refreshConfigurationsButton", "configurationList"));
    QVERIFY(isBefore("configurationListButton", "configurationTree"));
    QVERIFY(isBefore("configurationTree", "configurationDetails"));
    QVERIFY(isBefore("startMonitoringButton", "stopMonitoringButton"));
    QVERIFY(isBefore("clearMonitorButton", "eventPlaylistList"));
    QVERIFY(isBefore("eventPlaylistList", "openFilePlaylistList"));
}

void StartAndKeyTest::aFirstStartAsksForAKeyAndKeepsAnAcceptedOne()
{
    WindowFixture fixture;
    fixture.driver.expectBox(kSecurity, kNotConfigured);
    fixture.driver.expectKeyDialog(QStringLiteral("  my-key "), [&fixture] {
        QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
        QCOMPARE(fixture.part<QLabel>("placeholderLabel")->text(),
                 QStringLiteral("Tessera API key is required.\nPlease enter your API key to continue."));
        QVERIFY(fixture.part<QPushButton>("enterKeyButton")->isVisible());
        for (const char* action : {"openDiscIsoAction", "openDiscDirectoryAction", "titlesAction"}) {
            QVERIFY(!fixture.isEnabled(action));
        }
        QVERIFY(fixture.isEnabled("apiKeyAction"));
    });
    QVERIFY(
        fixture.start([&] { return fixture.window->isVisible() && fixture.isEnabled("openDiscIsoAction"); }));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs(),
             QStringList(QStringLiteral("Connecting to Tessera: Authenticating with Tessera")));
    QCOMPARE(fixture.part<QLabel>("placeholderLabel")->text(), QStringLiteral("Please Open A Disc"));
    QVERIFY(!fixture.part<QPushButton>("enterKeyButton")->isVisible());
    QCOMPARE(storedKey(), QStringLiteral("my-key"));
    QCOMPARE(fixture.server.requests().at(0).header("apiKey"), std::string("my-key"));
}

void StartAndKeyTest::cancellingAtStartLeavesThePlaceholder()
{
    WindowFixture fixture;
    bool wasAsked = false;
    fixture.driver.expectBox(kSecurity, kNotConfigured);
    fixture.driver.expectKeyDialog(QString(), [&wasAsked] { wasAsked = true; });
    QVERIFY(fixture.start([&] { return wasAsked && QApplication::activeModalWidget() == nullptr; },
                          QStringLiteral("/a/disc")));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
    QVERIFY(fixture.server.requests().empty());

    // The button on the page opens the dialog again.
    fixture.driver.expectKeyDialog(QStringLiteral("late"));
    QTest::mouseClick(fixture.part<QPushButton>("enterKeyButton"), Qt::LeftButton);
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(storedKey(), QStringLiteral("late"));
}

void StartAndKeyTest::aStoredKeyIsCheckedAtStart()
{
    WindowFixture fixture(QStringLiteral("stored"));
    QVERIFY(fixture.startWithKey());
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.server.requests().at(0).header("apiKey"), std::string("stored"));
}

void StartAndKeyTest::aStoredKeyKeepsWorkingWithoutTheService()
{
    WindowFixture fixture(QStringLiteral("stored"));
    fixture.server.playFor(kUserPath, {.status = 503});
    fixture.driver.expectBox(kAuthenticationFailed, QStringLiteral("Tessera returned HTTP 503."));
    QVERIFY(fixture.startWithKey());
    QTRY_COMPARE(fixture.driver.problems(), QStringList());
    QVERIFY(fixture.isEnabled("openDiscDirectoryAction"));
    QCOMPARE(storedKey(), QStringLiteral("stored"));
}

void StartAndKeyTest::aRejectedKeyLeavesTheFormerOneWorking()
{
    WindowFixture fixture(QStringLiteral("good"));
    QVERIFY(fixture.startWithKey());
    const std::string markup = "<b>No</b> such key.\n" + std::string(3000, 'x');
    fixture.server.play({.status = 403, .body = markup});
    fixture.driver.expectKeyDialog(QStringLiteral("bad"));
    fixture.driver.expectBox(kAuthenticationFailed,
                             QString::fromStdString(markup).first(2000) + QChar(0x2026));
    fixture.trigger("apiKeyAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.lastDetails(), QString::fromStdString(markup.substr(2000)));
    QCOMPARE(storedKey(), QStringLiteral("good"));
    QVERIFY(fixture.isEnabled("openDiscIsoAction"));

    // However many lines a text has, the box keeps its buttons on the screen; a NUL does not hide what
    // follows.
    fixture.server.play(
        {.status = 403, .body = std::string("\0a", 2) + std::string(40, '\n') + std::string(99'999, 'b')});
    fixture.driver.expectBox(kAuthenticationFailed, QChar(u'\0') + QStringLiteral("a") +
                                                        QString(39, QLatin1Char('\n')) + QChar(0x2026));
    QVERIFY(!fixture.window->authenticateAndSaveApiKey(QStringLiteral("bad")));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.lastDetails(), QString(65'535, QLatin1Char('b')) + QChar(0x2026));

    fixture.openDirectory(testsupport::sampleDvd().write(testsupport::DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.server.requests().back().header("apiKey"), std::string("good"));
}

void StartAndKeyTest::aNewerVersionIsAnnounced_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("isAnnounced");
    const auto row = [](const char* version, bool isAnnounced) {
        QTest::newRow(version) << QString::fromLatin1(version) << isAnnounced;
    };
    row("1.2.2", true);
    row("1.10.0", true);  // a number, not a text: 10 is more than 2
    row("1.3", true);
    row("2", true);
    row("1.2.1.1", true);
    row("1.2.1", false);
    row("1.2.1.0", false);
    row("1.2", false);
    row("1.1.99", false);
    row("0", false);
    row(" v1.3.0", true);
    row("1.2.2-beta", true);
    row("1.2.1-beta", false);
    for (const char* unparsable : {"", "new", "vv1.3.0", "1..3", "-2"}) {
        row(unparsable, false);
    }
}

void StartAndKeyTest::aNewerVersionIsAnnounced()
{
    QFETCH(QString, version);
    QFETCH(bool, isAnnounced);
    WindowFixture fixture(QStringLiteral("good"));
    QVERIFY(fixture.startWithKey());
    fixture.server.play(
        {.body = R"({"UID": 1, "Username": "ada", "LatestVersion": ")" + version.toStdString() + "\"}"});
    if (isAnnounced) {
        fixture.driver.expectBox(
            QStringLiteral("Platterscope Update Available"),
            QStringLiteral("A new version of Platterscope is available for download.\n\nCurrent version: "
                           "1.2.1\nAvailable version: ") +
                version);
    }
    QVERIFY(fixture.window->authenticateAndSaveApiKey(QStringLiteral("other")));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(storedKey(), QStringLiteral("other"));
}

void StartAndKeyTest::aKeyThatCannotBeSentIsRefusedWithoutARequest()
{
    WindowFixture fixture(QStringLiteral("good"));
    QVERIFY(fixture.startWithKey());
    const std::size_t before = fixture.server.requests().size();
    for (const char* key : {"a\r\nX-Evil: 1", "tab\there"}) {
        fixture.driver.expectBox(kAuthenticationFailed,
                                 QStringLiteral("The API key contains characters that are not allowed."));
        QVERIFY(!fixture.window->authenticateAndSaveApiKey(QString::fromLatin1(key)));
    }
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.server.requests().size(), before);
    QVERIFY(fixture.isEnabled("openDiscIsoAction"));
}

void StartAndKeyTest::aKeyThatCannotBeStoredIsNotAccepted()
{
    WindowFixture fixture;
    // A file stands where the key's directory belongs.
    testsupport::writeFile(fixture.folder.path() / ".127.0.0.1", {});
    fixture.driver.expectBox(kSecurity, QString());
    fixture.driver.expectKeyDialog(QStringLiteral("my-key"));
    fixture.driver.expectBox(kSecurity,
                             QStringLiteral("Failed to create configuration directory: %1/.127.0.0.1")
                                 .arg(QString::fromStdString(fixture.folder.path())));
    QVERIFY(fixture.start(
        [&] { return fixture.driver.busyDialogs().size() == 1 && fixture.driver.problems().isEmpty(); }));
    QVERIFY(!fixture.isEnabled("openDiscIsoAction"));
    QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
}

void StartAndKeyTest::thePlaceholderKeyIsNoKey()
{
    WindowFixture fixture(QStringLiteral("REPLACE_WITH_YOUR_API_KEY"));
    bool wasAsked = false;
    fixture.driver.expectBox(kSecurity, kNotConfigured);
    fixture.driver.expectKeyDialog(QString(), [&] {
        wasAsked = true;
        QCOMPARE(QApplication::activeModalWidget()->findChild<QLineEdit*>()->text(), QString());
    });
    QVERIFY(fixture.start([&] { return wasAsked && QApplication::activeModalWidget() == nullptr; }));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QVERIFY(!fixture.isEnabled("openDiscIsoAction"));
}

void StartAndKeyTest::aKeyFileOpenToOthersIsReported()
{
    WindowFixture fixture(QStringLiteral("stored"));
    QVERIFY(fixture.startWithKey());
    QFile file(service::apiKeyFilePath());
    QVERIFY(file.setPermissions(file.permissions() | QFileDevice::ReadOther));
    fixture.driver.expectKeyDialog(QStringLiteral("newer"));
    fixture.driver.expectBox(kSecurity, QStringLiteral("The API key file can be accessed by other users."));
    fixture.trigger("apiKeyAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(storedKey(), QStringLiteral("newer"));
    QVERIFY(service::apiKeyFileProblem().isEmpty());
}

void StartAndKeyTest::aRefusedServiceAddressIsSaidAndTouchesNoKey()
{
    WindowFixture fixture(QStringLiteral("stored"));
    const std::filesystem::path directory = fixture.folder.path() / ".192.0.2.1";
    std::filesystem::create_directory(directory);
    testsupport::writeFile(directory / "ApiKey.txt", {'k'});
    const auto permissions = std::filesystem::status(directory / "ApiKey.txt").permissions();
    const testsupport::ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "http://192.0.2.1");
    fixture.driver.expectBox(QStringLiteral("Tessera Service Address"), QString());
    QVERIFY(fixture.start([&] { return fixture.driver.problems().isEmpty(); }));
    QVERIFY(!fixture.isEnabled("openDiscIsoAction"));
    QVERIFY(fixture.driver.busyDialogs().isEmpty());
    QCOMPARE(std::filesystem::status(directory / "ApiKey.txt").permissions(), permissions);
}

void StartAndKeyTest::checkingAKeyBringsTheOpenDiscBack()
{
    WindowFixture fixture(QStringLiteral("good"));
    QVERIFY(fixture.startWithKey());
    fixture.openDirectory(testsupport::sampleDvd().write(testsupport::DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.page(), QStringLiteral("titlesPage"));

    bool wasPlaceholder = false;
    fixture.driver.whenBusy(QStringLiteral("Connecting to Tessera"), [&] {
        wasPlaceholder = fixture.page() == QStringLiteral("placeholderPage") &&
                         !fixture.part<QAction>("titlesAction")->isChecked() &&
                         !fixture.isEnabled("openDiscDirectoryAction");
        fixture.server.release();
    });
    fixture.server.play({.body = kUserReply, .isHeld = true});
    QVERIFY(fixture.window->authenticateAndSaveApiKey(QStringLiteral("newer")));
    QVERIFY(wasPlaceholder);
    QCOMPARE(fixture.page(), QStringLiteral("titlesPage"));
    QVERIFY(fixture.part<QAction>("titlesAction")->isChecked());
    QCOMPARE(fixture.tree()->topLevelItemCount(), 2);
}

void StartAndKeyTest::aCloseRequestDuringWorkIsCarriedOutAfterIt()
{
    WindowFixture fixture(QStringLiteral("good"));
    QVERIFY(fixture.startWithKey());
    bool stayedOpen = false;
    fixture.driver.whenBusy(QStringLiteral("Connecting to Tessera"), [&] {
        stayedOpen = !fixture.window->close() && fixture.window->isVisible();
        fixture.server.release();
    });
    fixture.server.play({.body = kUserReply, .isHeld = true});
    QVERIFY(fixture.window->authenticateAndSaveApiKey(QStringLiteral("newer")));
    QVERIFY(stayedOpen);
    QTRY_VERIFY(!fixture.window->isVisible());
    QCOMPARE(storedKey(), QStringLiteral("newer"));
}

QTEST_MAIN(StartAndKeyTest)
#include "start_and_key_test.moc"
