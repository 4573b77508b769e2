// The whole program without a mouse: where the focus goes, and every way through the pages.
#include "tests/support/sample_bluray.h"
#include "tests/ui/window_fixture.h"

#include <QDesktopServices>
#include <QListWidget>
#include <QMenuBar>
#include <QUrl>

using testsupport::DiscForm;

class KeyboardTest : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void openUrl(const QUrl& url) { m_opened = url; }

private Q_SLOTS:
    void aDiscOpensAndItsTitlesAreRead();
    void aConfigurationIsReadAndTheListRefreshed();
    void theMonitorStartsAndStops();
    void theTabKeyGoesThroughEachPage();
    void theKeyIsEnteredFromThePlaceholder();

private:
    QUrl m_opened;
};

namespace {

constexpr char kBlurayReply[] = R"({"Disc ID": 17, "Configurations": [
    {"UID": 1, "Language Code": "en", "Added By Username": "ada", "Data": "{\"disc_name\": \"Extras\"}"},
    {"UID": 2, "Language Code": "de", "Added By Username": "bert", "Data": "{\"disc_name\": \"The Movie\",
      \"titles\": [{\"id\": 800, \"name\": \"Film\"}, {\"id\": 0, \"name\": \"Menu\"}]}"}]})";

enum Menu { kFile, kView };  // their places in the menu bar

// The window, with keys going to whatever would get them.
struct KeyboardFixture : WindowFixture {
    KeyboardFixture()
        : WindowFixture(QStringLiteral("key"))
    {
        server.playFor("/api/tessera/bluray/find/", {.body = kBlurayReply});
        if (!startWithKey()) { qFatal("the window does not start"); }
    }

    // Where a key goes. Without a desktop nobody makes the window active again when a dialog has closed.
    [[nodiscard]] QWidget* focus() const
    {
        if (QWidget* popup = QApplication::activePopupWidget(); popup != nullptr) { return popup; }
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get())) { qFatal("the window is not active"); }
        QWidget* focused = QApplication::focusWidget();
        return focused == nullptr ? window.get() : focused;
    }
    [[nodiscard]] QString focused() const { return focus()->objectName(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(focus(), key, modifiers);
    }

    // Chooses an entry by its place in a menu.
    void choose(Menu menu, int entry) const
    {
        QWidget* target = focus();
        QTest::keyPress(target, Qt::Key_Alt, Qt::AltModifier);
        QTest::keyRelease(target, Qt::Key_Alt);
        for (int i = 0; i < menu; ++i) {
            press(Qt::Key_Right);
        }
        for (int i = 0; i <= entry; ++i) {
            press(Qt::Key_Down);
        }
        press(Qt::Key_Return);
    }

    void openBluray()
    {
        driver.expectFileDialog(
            QStringLiteral("Open Disc Directory"),
            QString::fromStdString(testsupport::sampleBluray().write(DiscForm::Directory, folder)));
        choose(kFile, 1);
    }

    // Where the focus goes by the Tab key until it is back where it was; the same must hold backwards.
    [[nodiscard]] QStringList round() const
    {
        QStringList there = {focused()};
        do {
            press(Qt::Key_Tab);
            there.append(focused());
        } while (there.last() != there.first() && there.size() < 20);
        QStringList back = {focused()};
        do {
            press(Qt::Key_Backtab, Qt::ShiftModifier);
            back.prepend(focused());
        } while (back.first() != back.last() && back.size() < 20);
        if (back != there) { there.append(QStringLiteral("backwards: ") + back.join(QLatin1Char(' '))); }
        return there;
    }

    [[nodiscard]] QString status() const { return part<QLabel>("monitorStatusLabel")->text(); }
};

}  // namespace

void KeyboardTest::aDiscOpensAndItsTitlesAreRead()
{
    KeyboardFixture fixture;
    fixture.openBluray();
    QCOMPARE(fixture.focused(), QStringLiteral("titlesTree"));
    QVERIFY(fixture.details().startsWith(QStringLiteral("Playlist ID: 800\n")));
    fixture.press(Qt::Key_Down);
    fixture.press(Qt::Key_Right);
    fixture.press(Qt::Key_Down);
    QVERIFY(fixture.details().startsWith(QStringLiteral("Video track\n")));

    // Another disc begins at its titles again; the last entry of the File menu ends the program.
    fixture.openBluray();
    QCOMPARE(fixture.focused(), QStringLiteral("titlesTree"));
    fixture.choose(kFile, 2);
    QVERIFY(!fixture.window->isVisible());
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void KeyboardTest::aConfigurationIsReadAndTheListRefreshed()
{
    KeyboardFixture fixture;
    fixture.openBluray();
    fixture.choose(kView, 1);
    QCOMPARE(fixture.page(), QStringLiteral("configurationsPage"));
    QCOMPARE(fixture.focused(), QStringLiteral("configurationList"));
    QVERIFY(fixture.part<QTreeWidget>("configurationList")->topLevelItem(0)->isSelected());
    fixture.press(Qt::Key_End);
    fixture.press(Qt::Key_Return);
    QCOMPARE(fixture.focused(), QStringLiteral("configurationTree"));
    fixture.press(Qt::Key_Down);
    QVERIFY(fixture.part<QTextEdit>("configurationDetails")
                ->toPlainText()
                .contains(QStringLiteral("Playlist ID: 0\n")));
    fixture.press(Qt::Key_Tab);
    fixture.press(Qt::Key_Escape);  // from the details, too
    QCOMPARE(fixture.focused(), QStringLiteral("configurationList"));
    for (int i = 0; i < 9 && fixture.focused() != QStringLiteral("refreshConfigurationsButton"); ++i) {
        fixture.press(Qt::Key_Backtab, Qt::ShiftModifier);
    }
    fixture.server.play({.body = "[]"});
    fixture.press(Qt::Key_Return);
    QCOMPARE(fixture.part<QTreeWidget>("configurationList")->topLevelItemCount(), 0);
}

void KeyboardTest::theMonitorStartsAndStops()
{
    KeyboardFixture fixture;
    fixture.openBluray();
    fixture.choose(kView, 2);
    QCOMPARE(fixture.focused(), QStringLiteral("startMonitoringButton"));
    fixture.press(Qt::Key_Return);
    QVERIFY(fixture.status().startsWith(QStringLiteral("Monitoring: ")));
    QCOMPARE(fixture.focused(), QStringLiteral("stopMonitoringButton"));
    fixture.press(Qt::Key_Space);
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    QCOMPARE(fixture.focused(), QStringLiteral("startMonitoringButton"));
    fixture.window->onMplsEvent(QStringLiteral("/disc/00800.mpls"), QStringLiteral("OPEN"));
    const auto* events = fixture.part<QListWidget>("eventPlaylistList");
    QCOMPARE(events->count(), 1);
    fixture.press(Qt::Key_Tab);
    QCOMPARE(fixture.focused(), QStringLiteral("clearMonitorButton"));
    fixture.press(Qt::Key_Return);
    QCOMPARE(events->count(), 0);
    fixture.press(Qt::Key_Tab);
    fixture.press(Qt::Key_Right);
    fixture.press(Qt::Key_Tab);
    QCOMPARE(fixture.focused(), QStringLiteral("eventSegmentList"));
}

void KeyboardTest::theTabKeyGoesThroughEachPage()
{
    KeyboardFixture fixture;
    fixture.openBluray();
    QCOMPARE(fixture.round().join(QLatin1Char(' ')), QStringLiteral("titlesTree titleDetails titlesTree"));
    fixture.choose(kView, 1);
    fixture.press(Qt::Key_Home);
    QCOMPARE(fixture.round().join(QLatin1Char(' ')),
             QStringLiteral("configurationList newConfigurationLink viewConfigurationButton "
                            "refreshConfigurationsButton configurationList"));
    fixture.press(Qt::Key_Tab);
    QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "openUrl");
    fixture.press(Qt::Key_Return);
    QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
    QVERIFY(m_opened.path().endsWith(QStringLiteral("/new/")));
    fixture.press(Qt::Key_Backtab, Qt::ShiftModifier);
    fixture.press(Qt::Key_Return);
    QCOMPARE(
        fixture.round().join(QLatin1Char(' ')),
        QStringLiteral("configurationTree configurationDetails configurationListButton configurationTree"));
    fixture.choose(kView, 2);
    QCOMPARE(fixture.round().join(QLatin1Char(' ')),
             QStringLiteral("startMonitoringButton clearMonitorButton eventTabBar eventPlaylistList "
                            "openFileTabBar openFilePlaylistList startMonitoringButton"));
}

void KeyboardTest::theKeyIsEnteredFromThePlaceholder()
{
    WindowFixture fixture;
    fixture.driver.expectBox(QStringLiteral("API Key Security"), QString(), Qt::Key_Return);
    fixture.driver.expectKeyDialog({});
    QVERIFY(fixture.start([&] { return fixture.driver.problems().isEmpty(); }));
    QTRY_VERIFY(fixture.window->focusWidget() != nullptr);
    QCOMPARE(fixture.window->focusWidget()->objectName(), QStringLiteral("enterKeyButton"));
    fixture.driver.expectKeyDialog(QStringLiteral("key"));
    QTest::keyClick(fixture.window->focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(fixture.isEnabled("openDiscDirectoryAction"));
    QCOMPARE(fixture.driver.problems(), QStringList());
}

QTEST_MAIN(KeyboardTest)
#include "keyboard_test.moc"
