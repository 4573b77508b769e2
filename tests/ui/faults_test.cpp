// The window where things go wrong around it: paths that lead nowhere, a system without threads, events that come at
// the wrong moment, results larger than any real one.
#include "tests/support/fault_table.h"
#include "tests/support/no_threads.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/unprivileged_user.h"
#include "tests/ui/lag_meter.h"
#include "tests/ui/window_fixture.h"

#include <QFile>
#include <QInputDialog>
#include <QProgressDialog>

#include <sys/stat.h>

#include <filesystem>

using testsupport::DiscForm;
using testsupport::recordFault;

class FaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pathsThatLeadNowhereAreSaid_data();
    void pathsThatLeadNowhereAreSaid();
    void aDroppedDiscMayBeGoneWhenItIsOpened();
    void aSystemWithoutThreadsKeepsTheWindowAndItsDisc();
    void nothingElseBeginsWhileWorkRuns();
    void quittingWhileWorkRunsEndsTheProgramAfterIt();
    void aDropBehindTheKeyDialogLeavesBothWorking();
    void theWindowMayGoRightAfterItsWork();
    void hugeAndEmptyResultsDoNotHoldTheWindowUp_data();
    void hugeAndEmptyResultsDoNotHoldTheWindowUp();
};

namespace {

const QString kError = QStringLiteral("Tessera Error");
const QString kNoDisc = QStringLiteral("Path is not a valid Blu-ray or DVD.");
const QString kNotDone = QStringLiteral("The system has not enough memory or threads left for this.");
const QString kLoading = QStringLiteral("Loading Disc Data");

}  // namespace

void FaultsTest::pathsThatLeadNowhereAreSaid_data()
{
    QTest::addColumn<QByteArray>("path");  // below the test's folder
    QTest::addColumn<QString>("fault");
    const auto row = [](const char* name, const QByteArray& path, const QString& fault) {
        QTest::newRow(name) << path << fault;
    };
    row("not UTF-8", "\xFF\xFE\x80.iso", QStringLiteral("a name that is not UTF-8"));
    row("5,000 bytes in one name", QByteArray(5000, 'n'), QStringLiteral("a path of 5,000 bytes"));
    row("5,000 bytes of directories", QByteArray("d/").repeated(2500),
        QStringLiteral("a path of 5,000 bytes"));
    row("vanished", "gone", QStringLiteral("nothing there"));
    row("no rights on the directory", "locked", QStringLiteral("a directory without rights"));
    row("no rights on VIDEO_TS", "inner", QStringLiteral("a directory without rights"));
    row("a pipe", "pipe.iso", QStringLiteral("a pipe"));
    row("a link to itself", "loop.iso", QStringLiteral("a link to itself"));
    row("a NUL character", QByteArray("a\0b", 3), QStringLiteral("nothing there"));
}

void FaultsTest::pathsThatLeadNowhereAreSaid()
{
    namespace fs = std::filesystem;
    QFETCH(QByteArray, path);
    QFETCH(QString, fault);
    const testsupport::UnprivilegedUser user;
    WindowFixture fixture(QStringLiteral("key"));
    const fs::path folder = fixture.folder.path();
    std::ofstream(folder / "\xFF\xFE\x80.iso") << "there is such a file";
    QCOMPARE(::mkfifo((folder / "pipe.iso").c_str(), 0600), 0);
    fs::create_symlink("loop.iso", folder / "loop.iso");
    testsupport::sampleDvd().writeDirectory(folder / "locked");
    testsupport::sampleDvd().writeDirectory(folder / "inner");
    fs::permissions(folder / "locked", fs::perms::none);
    fs::permissions(folder / "inner" / "VIDEO_TS", fs::perms::none);

    // As the executable hands on what it is started with.
    const QString disc = QFile::decodeName(QByteArray::fromStdString(folder) + '/' + path);
    fixture.driver.expectBox(kError, kNoDisc);
    QVERIFY(fixture.start([&] { return fixture.driver.problems().isEmpty(); }, disc));
    QCOMPARE(fixture.driver.busyDialogs().size(), 2);
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("Platterscope"));
    QCOMPARE(fixture.page(), QStringLiteral("placeholderPage"));
    QVERIFY(fixture.isEnabled("openDiscDirectoryAction"));
    fs::permissions(folder / "locked", fs::perms::owner_all);
    fs::permissions(folder / "inner" / "VIDEO_TS", fs::perms::owner_all);
    recordFault("Window: started with " + fault.toStdString(), "a box says that it is no disc");
}

void FaultsTest::aDroppedDiscMayBeGoneWhenItIsOpened()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    const QString title = fixture.window->windowTitle();
    const std::filesystem::path path = fixture.folder.path() / "dropped";
    testsupport::sampleDvd().writeDirectory(path);
    QVERIFY(drop(fixture.window.get(), {QString::fromStdString(path)}));
    std::filesystem::remove_all(path);
    fixture.driver.expectBox(kError, kNoDisc);
    QTRY_COMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.window->windowTitle(), title);
    recordFault("Window: a dropped disc is gone when it is opened", "a box says that it is no disc");
}

void FaultsTest::aSystemWithoutThreadsKeepsTheWindowAndItsDisc()
{
    WindowFixture fixture(QStringLiteral("key"));
    fixture.server.playFor("/api/tessera/bluray/find/", {.body = R"({"Disc ID": 17})"});
    QVERIFY(fixture.startWithKey());
    const std::string path = testsupport::sampleBluray().write(DiscForm::Directory, fixture.folder);
    fixture.openDirectory(path);
    const int titles = fixture.tree()->topLevelItemCount();
    QVERIFY(titles > 0);
    {
        const testsupport::NoThreads noThreads;
        fixture.driver.expectBox(kError, kNotDone);
        fixture.window->refreshConfigurations();
        QCOMPARE(fixture.tree()->topLevelItemCount(), titles);

        fixture.driver.expectBox(QStringLiteral("Access Monitor Error"),
                                 QStringLiteral("Unable to monitor the selected disc directory."));
        fixture.window->startMonitoring();
        QCOMPARE(fixture.part<QLabel>("monitorStatusLabel")->text(), QStringLiteral("Idle"));

        fixture.driver.expectBox(QStringLiteral("Tessera Authentication Failed"), kNotDone);
        QVERIFY(!fixture.window->authenticateAndSaveApiKey(QStringLiteral("newer")));

        fixture.openDirectory(path, [&] { fixture.driver.expectBox(kError, kNotDone); });
        QCOMPARE(fixture.tree()->topLevelItemCount(), 0);
    }
    fixture.openDirectory(path);  // the key is still in force
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.tree()->topLevelItemCount(), titles);
    recordFault("Window: no thread can be made", "a message, and the next attempt works", 4);
}

void FaultsTest::nothingElseBeginsWhileWorkRuns()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const QString path =
        QString::fromStdString(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    fixture.server.playFor(kFindPath, {.body = R"({"Disc ID": 17})", .isHeld = true});
    bool isAsItWas = false;
    fixture.driver.whenBusy(kLoading, [&] {
        isAsItWas = fixture.server.waitForRequests(2) && !drop(fixture.window.get(), {path});
        auto* dialog = fixture.window->findChild<QProgressDialog*>();
        QTest::keyClick(dialog, Qt::Key_Escape);
        for (const char key : {'f', 'v', 'h', 'q', 'o'}) {
            QTest::keyClick(fixture.window->windowHandle(), key, Qt::AltModifier);
            QTest::keyClick(fixture.window->windowHandle(), key);
        }
        // A desktop that shows menus of its own does not know that the window is blocked.
        fixture.window->refreshConfigurations();
        fixture.window->showApiKeyDialogSlot();
        isAsItWas = isAsItWas && QApplication::activePopupWidget() == nullptr &&
                    QApplication::activeModalWidget() == dialog;
        fixture.server.release();
    });
    // Two at once: the second one is delivered behind the busy dialog of the first.
    QVERIFY(drop(fixture.window.get(), {path}));
    QVERIFY(drop(fixture.window.get(), {path}));
    QTRY_COMPARE(fixture.tree()->topLevelItemCount(), 2);
    QVERIFY(isAsItWas);
    QCOMPARE(fixture.driver.busyDialogs().size(), 2);
    QCOMPARE(fixture.server.requests().size(), std::size_t{2});
    QCOMPARE(fixture.driver.problems(), QStringList());
    QVERIFY(fixture.window->isVisible());
    recordFault("Window: keys, drops and menus while work runs", "nothing else begins", 15);
}

void FaultsTest::quittingWhileWorkRunsEndsTheProgramAfterIt()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.server.playFor(kFindPath, {.body = "{}", .isHeld = true});
    const std::string path = testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder);
    bool stayedOpen = false;
    fixture.driver.whenBusy(kLoading, [&] {
        stayedOpen = fixture.server.waitForRequests(2);
        QApplication::quit();
        fixture.window->quitApplication();
        stayedOpen = stayedOpen && fixture.window->isVisible();
        fixture.server.release();
    });
    QTimer::singleShot(0, fixture.window.get(), [&] { fixture.openDirectory(path); });
    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, qApp, [] { QApplication::exit(1); });
    watchdog.start(20'000);
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(stayedOpen);
    QVERIFY(!fixture.window->isVisible());
    QCOMPARE(fixture.driver.problems(), QStringList());  // and nothing was asked
    recordFault("Window: the application told to quit while work runs",
                "the work ends first, then the program", 2);
}

void FaultsTest::aDropBehindTheKeyDialogLeavesBothWorking()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const QString path =
        QString::fromStdString(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
    fixture.driver.expectKeyDialog(QStringLiteral("newer"), [&] {
        QVERIFY(drop(fixture.window.get(), {path}));
        QTRY_COMPARE(fixture.tree()->topLevelItemCount(), 2);
    });
    fixture.trigger("apiKeyAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.driver.busyDialogs().size(), 3);
    QString key;
    QVERIFY(service::loadApiKey(&key));
    QCOMPARE(key, QStringLiteral("newer"));
    recordFault("Window: a disc dropped behind the key dialog", "both are done");
}

void FaultsTest::theWindowMayGoRightAfterItsWork()
{
    for (const bool isCloseAsked : {false, true}) {
        WindowFixture fixture(QStringLiteral("key"));
        QVERIFY(fixture.startWithKey());
        if (isCloseAsked) {
            fixture.driver.whenBusy(kLoading, [&] { fixture.window->close(); });
        }
        fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder));
        QVERIFY(drop(fixture.window.get(), {QString::fromStdString(fixture.folder.path())}));
        fixture.window.reset();
        QCoreApplication::processEvents();  // what was on its way to it
        QCOMPARE(fixture.driver.problems(), QStringList());
    }
    recordFault("Window: destroyed right after its work", "what was on its way to it is dropped", 2);
}

void FaultsTest::hugeAndEmptyResultsDoNotHoldTheWindowUp_data()
{
    QTest::addColumn<DiscScanResult>("result");
    DiscScanResult result;
    for (const DiscType type : {DiscType::None, DiscType::Dvd, DiscType::Bluray}) {
        for (const qint32 ok : {0, 1}) {
            result.discType = type;
            result.ok = ok;
            QTest::addRow("empty, kind %d, ok %d", static_cast<int>(type), ok) << result;
        }
    }
    result.discType = DiscType::Dvd;
    result.dvdTitles = {DvdTitleInfo{}};
    QTest::newRow("one empty title") << result;
    result.dvdTitles = QList<DvdTitleInfo>(250'000);
    QTest::newRow("250,000 DVD titles") << result;
    result.dvdTitles = {DvdTitleInfo{}};
    result.dvdTitles.first().audioTracks = QList<AudioTrackInfo>(250'000);
    QTest::newRow("250,000 tracks of one title") << result;
    result.dvdTitles = {};
    result.discType = DiscType::Bluray;
    result.blurayTitles = {BlurayTitleInfo{}};
    result.blurayTitles.first().segmentMap = QStringList(250'000, QStringLiteral("00001"));
    QTest::newRow("250,000 segments of one title") << result;
    result.blurayTitles = {};
    result.blurayDiscName = QString(100'000'000, QLatin1Char('x'));
    QTest::newRow("a name of 100 MB") << result;
    result.blurayDiscName = QString(200'000, QChar(u'\n'));
    QTest::newRow("a name of line breaks") << result;
    result.blurayDiscName.clear();
    result.ok = 0;
    result.error = Message::verbatim(QStringLiteral("<b>\u05D0\n").repeated(20'000'000));
    QTest::newRow("an error of 100 MB") << result;
    result.error = Message::verbatim(QString(100'000'000, QChar(u'\0')));
    QTest::newRow("an error of 100 MB of NUL") << result;
}

void FaultsTest::hugeAndEmptyResultsDoNotHoldTheWindowUp()
{
    QFETCH(DiscScanResult, result);
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    if (!result.error.isEmpty()) { fixture.driver.expectBox(kError, {}); }
    const LagMeter lag;
    fixture.window->populate(QString(), result);
    QCoreApplication::processEvents();
    QTreeWidget* tree = fixture.tree();
    for (QTreeWidgetItem* item : {tree->topLevelItem(0), tree->topLevelItem(tree->topLevelItemCount() - 1)}) {
        tree->setCurrentItem(item);
        QCoreApplication::processEvents();
    }
    const qint64 longestMs = lag.longestMs();
    QCOMPARE(fixture.driver.problems(), QStringList());
    QVERIFY(fixture.window->windowTitle().size() < 3000);
    QVERIFY(!fixture.window->windowTitle().contains(QLatin1Char('\n')));
    QCOMPARE(tree->topLevelItemCount(), result.dvdTitles.size() + result.blurayTitles.size());
    qInfo("longest lag %lld ms", longestMs);
    QVERIFY2(longestMs < 10 * kLagLimitMs, qPrintable(QString::number(longestMs)));
    recordFault("Window: results of no or of 250,000 entries, texts of 100 MB",
                "shown, bounded, within seconds");
}

QTEST_MAIN(FaultsTest)
#include "faults_test.moc"
