// The first start, the key dialog, and what becomes of the key.
#include "tests/ui/window_fixture.h"

#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

class StartAndKeyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theWholeTreeAndAllMenusStandFromTheStart();
    void aFirstStartAsksForAKeyAndKeepsAnAcceptedOne();
    void cancellingAtStartLeavesThePlaceholder();
    void aStoredKeyIsCheckedAtStart();
    void aStoredKeyKeepsWorkingWithoutTheService();
    void aRejectedKeyLeavesTheFormerOneWorking();
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
    QCOMPARE(fixture.window->size(), QSize(900, 600));
    for (const QAbstractButton* button : fixture.window->findChildren<QPushButton*>()) {
        QVERIFY2(!button->objectName().isEmpty() && !button->accessibleName().isEmpty(),
                 qPrintable(button->text()));
    }
    // Trees, lists and text fields; a header view is part of its tree.
    for (const QAbstractScrollArea* area : fixture.window->findChildren<QAbstractScrollArea*>()) {
        if (qobject_cast<const QHeaderView*>(area) != nullptr) { continue; }
        QVERIFY2(!area->objectName().isEmpty() && !area->accessibleName().isEmpty(),
                 qPrintable(area->objectName()));
    }
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
    QCOMPARE(storedKey(), QStringLiteral("good"));
    QVERIFY(fixture.isEnabled("openDiscIsoAction"));

    fixture.openDirectory(testsupport::sampleDvd().write(testsupport::DiscForm::Directory, fixture.folder));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.server.requests().back().header("apiKey"), std::string("good"));
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
    QCOMPARE(service::apiKeyFileProblem(), QString());
}

void StartAndKeyTest::aRefusedServiceAddressIsSaidAndTouchesNoKey()
{
    WindowFixture fixture(QStringLiteral("stored"));
    const testsupport::ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "http://192.0.2.1");
    fixture.driver.expectBox(QStringLiteral("Tessera Service Address"), QString());
    QVERIFY(fixture.start([&] { return fixture.driver.problems().isEmpty(); }));
    QVERIFY(!fixture.isEnabled("openDiscIsoAction"));
    QVERIFY(fixture.driver.busyDialogs().isEmpty());
    QVERIFY(!QFile::exists(QString::fromStdString(fixture.folder / ".192.0.2.1")));
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
