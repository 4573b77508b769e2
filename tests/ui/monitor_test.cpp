// The access monitor's page: what it shows of a real second process that opens files of the disc, and how it
// begins and ends.
#include "tests/support/player.h"
#include "tests/support/sample_bluray.h"
#include "tests/ui/lag_meter.h"
#include "tests/ui/window_fixture.h"

#include <QClipboard>
#include <QListWidget>
#include <QRegularExpression>
#include <QTabWidget>

namespace fs = std::filesystem;
using testsupport::DiscForm;
using testsupport::Player;

class MonitorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itShowsWhatAPlayerOpens();
    void aClickAndEnterCopyARow();
    void clearingKeepsMonitoring();
    void theChecksComeInTheirOrder();
    void aDvdHasNoMonitor();
    void anImageIsRefused();
    void aRemovedDiscEndsIt();
    void anotherDiscEndsIt();
    void closingTheWindowEndsIt();
    void aHundredThousandOpensLeaveTheWindowFree();
};

namespace {

constexpr char kBlurayFindPath[] = "/api/tessera/bluray/find/";
const QString kErrorTitle = QStringLiteral("Access Monitor Error");

qsizetype threadCount()
{
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

// The window with the sample Blu-ray open as a directory, on the monitor page.
struct MonitorFixture : WindowFixture {
    MonitorFixture()
        : WindowFixture(QStringLiteral("key"))
    {
        server.playFor(kBlurayFindPath, {.body = R"({"Disc ID": 17})"});
        if (!startWithKey()) { qFatal("the window does not start"); }
        testsupport::DiscTree tree = testsupport::sampleBluray();
        tree.add("BDMV/PLAYLIST/UPPER.MPLS", testsupport::MplsSpec().build());
        disc = fs::canonical(tree.write(DiscForm::Directory, folder));
        openDirectory(disc);
        trigger("monitorAction");
    }

    void startMonitor() const
    {
        click("startMonitoringButton");
        // The directories below the root are watched a moment later.
        Player probe;
        const auto seen = [&] {
            probe.openAndClose(playlist("00000"));
            probe.openAndClose(stream("00003"));
            return list("eventPlaylistList")->count() > 0 && list("eventSegmentList")->count() > 0;
        };
        if (!QTest::qWaitFor(seen)) { qFatal("nothing is reported"); }
        settle();
        click("clearMonitorButton");
    }

    // Lets everything arrive that has happened so far.
    void settle() const
    {
        Player mark;
        const int count = list("eventSegmentList")->count();
        mark.openAndClose(stream("00003"));
        if (!QTest::qWaitFor([&] {
                const auto* events = list("eventSegmentList");
                return events->count() >= count + 2 && events->item(events->count() - 1)
                                                           ->text()
                                                           .endsWith(QStringLiteral("CLOSE: 00003.m2ts"));
            })) {
            qFatal("the mark is not reported");
        }
        QCoreApplication::processEvents();
    }

    [[nodiscard]] std::string playlist(const std::string& name) const
    {
        return disc / "BDMV/PLAYLIST" / (name + ".mpls");
    }
    [[nodiscard]] std::string stream(const std::string& name) const
    {
        return disc / "BDMV/STREAM" / (name + ".m2ts");
    }
    [[nodiscard]] QListWidget* list(const char* name) const { return part<QListWidget>(name); }

    // The rows without their times, which must be there; the mark's left out.
    [[nodiscard]] QStringList rows(const char* name) const
    {
        static const QRegularExpression time(
            QStringLiteral("^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\] (?=OPEN|CLOSE)"));
        QStringList rows;
        for (int i = 0; i < list(name)->count(); ++i) {
            QString text = list(name)->item(i)->text();
            if (name[0] == 'e' && !text.contains(time)) { return {QStringLiteral("no time: ") + text}; }
            text.remove(time);
            if (!text.endsWith(QStringLiteral("00003.m2ts"))) { rows.append(text); }
        }
        rows.sort();
        return rows;
    }
    [[nodiscard]] QString status() const { return part<QLabel>("monitorStatusLabel")->text(); }

    // Which of Start, Stop and Clear All can be pressed.
    [[nodiscard]] QString controls() const
    {
        QString text;
        for (const char* name : {"startMonitoringButton", "stopMonitoringButton", "clearMonitorButton"}) {
            if (part<QPushButton>(name)->isEnabled()) { text += part<QPushButton>(name)->text() + u' '; }
        }
        return text;
    }

    fs::path disc;
};

}  // namespace

void MonitorTest::itShowsWhatAPlayerOpens()
{
    const MonitorFixture fixture;
    QCOMPARE(fixture.page(), QStringLiteral("monitorPage"));
    QVERIFY(fixture.part<QAction>("monitorAction")->isChecked());
    QCOMPARE(fixture.controls(), QStringLiteral("Start Clear All "));
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    fixture.startMonitor();
    QCOMPARE(fixture.controls(), QStringLiteral("Stop Clear All "));
    QCOMPARE(fixture.status(), QStringLiteral("Monitoring: ") + QString::fromStdString(fixture.disc));

    Player player;
    Player another;
    player.open(3, fixture.playlist("00800"));
    player.open(4, fixture.stream("00001"));
    another.open(3, fixture.stream("00001"));
    another.openAndClose(fixture.disc / "BDMV/PLAYLIST/UPPER.MPLS");
    another.openAndClose(fixture.disc / "BDMV/CLIPINF/00001.clpi");
    player.close(4);
    fixture.settle();
    QCOMPARE(fixture.rows("eventPlaylistList"),
             (QStringList{QStringLiteral("CLOSE: UPPER.MPLS"), QStringLiteral("OPEN: 00800.mpls"),
                          QStringLiteral("OPEN: UPPER.MPLS")}));
    QCOMPARE(fixture.rows("eventSegmentList"),
             (QStringList{QStringLiteral("CLOSE: 00001.m2ts"), QStringLiteral("OPEN: 00001.m2ts"),
                          QStringLiteral("OPEN: 00001.m2ts")}));
    QCOMPARE(fixture.rows("openFilePlaylistList"), QStringList{QStringLiteral("00800.mpls")});
    QCOMPARE(fixture.rows("openFileSegmentList"), QStringList{QStringLiteral("00001.m2ts")});
    another.close(3);
    fixture.settle();
    QCOMPARE(fixture.rows("openFileSegmentList"), QStringList());

    // After Stop nothing more comes, and what was shown stays.
    fixture.click("stopMonitoringButton");
    QCOMPARE(fixture.controls(), QStringLiteral("Start Clear All "));
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    player.close(3);
    QTest::qWait(50);
    QCOMPARE(fixture.rows("openFilePlaylistList"), QStringList{QStringLiteral("00800.mpls")});
    // Starting again empties the lists.
    fixture.click("startMonitoringButton");
    QCOMPARE(fixture.rows("eventPlaylistList"), QStringList());
    QCOMPARE(fixture.rows("openFilePlaylistList"), QStringList());
}

void MonitorTest::aClickAndEnterCopyARow()
{
    const MonitorFixture fixture;
    fixture.startMonitor();
    Player player;
    player.open(3, fixture.playlist("00801"));
    fixture.settle();
    QClipboard* clipboard = QGuiApplication::clipboard();
    for (const char* name : {"eventPlaylistList", "openFilePlaylistList"}) {
        auto* list = fixture.list(name);
        QCOMPARE(list->count(), 1);
        clipboard->clear();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        QCOMPARE(clipboard->text(), list->item(0)->text());
        clipboard->clear();
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(clipboard->text(), list->item(0)->text());
    }
}

void MonitorTest::clearingKeepsMonitoring()
{
    const MonitorFixture fixture;
    fixture.startMonitor();
    Player player;
    player.open(3, fixture.playlist("00800"));
    fixture.settle();
    fixture.click("clearMonitorButton");
    for (const char* name :
         {"eventPlaylistList", "eventSegmentList", "openFilePlaylistList", "openFileSegmentList"}) {
        QCOMPARE(fixture.list(name)->count(), 0);
    }
    player.open(4, fixture.playlist("00801"));
    fixture.settle();
    QCOMPARE(fixture.rows("eventPlaylistList"), QStringList{QStringLiteral("OPEN: 00801.mpls")});
    QCOMPARE(fixture.rows("openFilePlaylistList"),
             (QStringList{QStringLiteral("00800.mpls"), QStringLiteral("00801.mpls")}));
}

void MonitorTest::theChecksComeInTheirOrder()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    fixture.driver.expectBox(QStringLiteral("No Disc"),
                             QStringLiteral("Please open a disc ISO or directory first."));
    fixture.window->startMonitoring();
    DiscScanResult result;
    result.ok = 1;
    result.discType = DiscType::Dvd;
    fixture.window->populate({}, result);
    fixture.driver.expectBox(
        QStringLiteral("Blu-ray Disc Required"),
        QStringLiteral("The Blu-ray Access Monitor is only available for Blu-ray discs."));
    fixture.window->startMonitoring();
    result.discType = DiscType::Bluray;
    fixture.window->populate({}, result);
    fixture.driver.expectBox(QStringLiteral("No Path"), QStringLiteral("Current disc path is empty."));
    fixture.window->startMonitoring();
    fixture.window->findChild<DiscScanner*>()->setApiKey({});
    fixture.driver.expectKeyDialog({});
    fixture.window->startMonitoring();
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.part<QLabel>("monitorStatusLabel")->text(), QStringLiteral("Idle"));
}

void MonitorTest::aDvdHasNoMonitor()
{
    MonitorFixture fixture;
    const testsupport::TemporaryFolder other;
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, other));
    QVERIFY(!fixture.isEnabled("monitorAction"));
    QCOMPARE(fixture.controls(), QString());
}

void MonitorTest::anImageIsRefused()
{
    MonitorFixture fixture;
    const std::string image = testsupport::sampleBluray().write(DiscForm::Udf, fixture.folder);
    fixture.driver.expectFileDialog(QStringLiteral("Open Disc ISO"), QString::fromStdString(image));
    fixture.trigger("openDiscIsoAction");
    QVERIFY(fixture.isEnabled("monitorAction"));
    fixture.driver.expectBox(kErrorTitle, QStringLiteral("Unable to monitor the selected disc directory."));
    fixture.click("startMonitoringButton");
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    QCOMPARE(fixture.controls(), QStringLiteral("Start Clear All "));
}

void MonitorTest::aRemovedDiscEndsIt()
{
    MonitorFixture fixture;
    const qsizetype threads = threadCount();
    fixture.startMonitor();
    QString statusBehindBox;
    fixture.driver.expectBox(kErrorTitle, QStringLiteral("The monitored disc was removed."));
    connect(&fixture.driver, &ModalDriver::boxShown, &fixture.driver,
            [&] { statusBehindBox = fixture.status(); });
    fs::rename(fixture.disc, fixture.disc.string() + ".away");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Idle"));
    QCOMPARE(fixture.driver.problems(), QStringList());
    QCOMPARE(statusBehindBox, QStringLiteral("Error: The monitored disc was removed."));
    QCOMPARE(fixture.controls(), QStringLiteral("Start Clear All "));
    QTRY_VERIFY(threadCount() <= threads);
}

void MonitorTest::anotherDiscEndsIt()
{
    MonitorFixture fixture;
    fixture.startMonitor();
    fixture.openDirectory(fixture.disc);
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    QCOMPARE(fixture.controls(), QStringLiteral("Start Clear All "));
    QCOMPARE(fixture.rows("eventPlaylistList"), QStringList());  // the scan's own reading is not shown
}

void MonitorTest::closingTheWindowEndsIt()
{
    MonitorFixture fixture;
    const qsizetype threads = threadCount();
    fixture.startMonitor();
    QVERIFY(fixture.window->close());
    QCOMPARE(fixture.status(), QStringLiteral("Idle"));
    QTRY_VERIFY(threadCount() <= threads);
    // A window that goes while it watches takes the watch with it.
    fixture.window->show();
    fixture.click("startMonitoringButton");
    fixture.window.reset();
    QTRY_VERIFY(threadCount() <= threads);
}

void MonitorTest::aHundredThousandOpensLeaveTheWindowFree()
{
    constexpr int kOpens = 50'000;      // each with its close
    constexpr int kOpensAtOnce = 2000;  // the kernel keeps 16,384 events
    const MonitorFixture fixture;
    fixture.startMonitor();
    Player player;
    const LagMeter lag;
    const auto* events = fixture.list("eventPlaylistList");
    for (int opens = kOpensAtOnce; opens <= kOpens; opens += kOpensAtOnce) {
        player.openAndClose(fixture.playlist("00800"), kOpensAtOnce);
        QVERIFY(QTest::qWaitFor([&] { return events->count() >= 2 * opens; }, 60'000));
    }
    QCoreApplication::processEvents();
    QCOMPARE(events->count(), 2 * kOpens);
    QVERIFY(events->visualItemRect(events->item(events->count() - 1)).intersects(events->viewport()->rect()));
    QCOMPARE(fixture.rows("openFilePlaylistList"), QStringList());
    const qint64 longestMs = lag.longestMs();
    qInfo("longest lag %lld ms", longestMs);
    QVERIFY2(longestMs < kLagLimitMs, qPrintable(QString::number(longestMs)));
}

QTEST_MAIN(MonitorTest)
#include "monitor_test.moc"
