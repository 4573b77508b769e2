// The watcher over the helper protocol, with a real second process: what it makes of the reports, and the words
// of every failure.
#include "monitor/helper_watch.h"
#include "monitor/inotify_watcher.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

#include <QSignalSpy>
#include <QTest>
#include <QUuid>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

class InotifyWatcherTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itTellsPlaylistsFromStreamsAndKeepsTheSets();
    void aStopEmptiesTheSetsInSilence();
    void everyFailureHasItsWords_data();
    void everyFailureHasItsWords();
    void aHelperThatCannotBeStartedHasItsWords();
    void whatIsNoDirectoryIsRefused();
    void whoIsToldMayStopTheWatch();
};

namespace {

// A watcher whose helper acts out a script (see test_helper.cpp), and all it says.
struct Watched {
    explicit Watched(const std::string& script, std::string helper = TEST_HELPER)
        : watcher([this, helper] { return std::make_unique<monitor::HelperWatch>(helper, uuid); })
    {
        std::ofstream(folder.path() / "script") << script;
        const auto event = [this](const char* kind) {
            return [this, kind](const QString& path, const QString& type) {
                said.append(QStringLiteral("%1 %2 %3").arg(QString::fromLatin1(kind), type, path));
            };
        };
        const auto set = [this](const char* kind) {
            return [this, kind](const QSet<QString>& files) {
                QStringList names(files.begin(), files.end());
                names.sort();
                said.append(QString::fromLatin1(kind) + QStringLiteral(" {") + names.join(u' ') + u'}');
            };
        };
        QObject::connect(&watcher, &InotifyWatcher::mplsEvent, event("mpls"));
        QObject::connect(&watcher, &InotifyWatcher::m2tsEvent, event("m2ts"));
        QObject::connect(&watcher, &InotifyWatcher::openMplsFilesChanged, set("mpls"));
        QObject::connect(&watcher, &InotifyWatcher::openFilesChanged, set("m2ts"));
        QObject::connect(&watcher, &InotifyWatcher::errorOccurred,
                         [this](const QString& message) { errors.append(message); });
    }

    void start() { watcher.startWatching(QString::fromStdString(folder.path())); }

    const std::string uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
    testsupport::TemporaryFolder folder;
    InotifyWatcher watcher;
    QStringList said;
    QStringList errors;
};

}  // namespace

void InotifyWatcherTest::itTellsPlaylistsFromStreamsAndKeepsTheSets()
{
    Watched watched(
        "connect\nmessage 1 nothing\nmessage 2 /d/a.mpls\nmessage 2 /d/A.MPLS\nmessage 2 /d/b.M2ts\n"
        "message 2 /d/b.M2ts\nmessage 2 /d/c.clpi\nmessage 2 /d/mpls\nmessage 3 /d/never.mpls\n"
        "message 3 /d/a.mpls\nmessage 3 /d/b.M2ts\nmessage 3 /d/b.M2ts\nmessage 4 That is all.\n");
    watched.start();
    QTRY_COMPARE(watched.errors, QStringList{QStringLiteral("That is all.")});
    QCOMPARE(watched.said,
             (QStringList{QStringLiteral("mpls OPEN /d/a.mpls"), QStringLiteral("mpls {/d/a.mpls}"),
                          QStringLiteral("mpls OPEN /d/A.MPLS"), QStringLiteral("mpls {/d/A.MPLS /d/a.mpls}"),
                          QStringLiteral("m2ts OPEN /d/b.M2ts"), QStringLiteral("m2ts {/d/b.M2ts}"),
                          QStringLiteral("m2ts OPEN /d/b.M2ts"), QStringLiteral("mpls CLOSE /d/never.mpls"),
                          QStringLiteral("mpls CLOSE /d/a.mpls"), QStringLiteral("mpls {/d/A.MPLS}"),
                          QStringLiteral("m2ts CLOSE /d/b.M2ts"), QStringLiteral("m2ts {}"),
                          QStringLiteral("m2ts CLOSE /d/b.M2ts")}));
}

void InotifyWatcherTest::aStopEmptiesTheSetsInSilence()
{
    Watched watched("connect\nmessage 2 /d/a.mpls\nwait\n");
    watched.start();
    QTRY_COMPARE(watched.said.size(), 2);
    watched.watcher.stopWatching();
    watched.watcher.stopWatching();
    QCOMPARE(watched.said.size(), 2);
    watched.start();
    QTRY_COMPARE(watched.said.size(), 4);
    QCOMPARE(watched.said.last(), QStringLiteral("mpls {/d/a.mpls}"));
    QCOMPARE(watched.errors, QStringList());
}

void InotifyWatcherTest::everyFailureHasItsWords_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* script, const char* message) {
        QTest::newRow(name) << QByteArray(script) << QString::fromUtf8(message);
    };
    row("ends before it connects", "", "The elevated Windows ETW helper did not connect (error 32).");
    row("too long", "connect\nheader 2 65537\nwait\n", "The Windows ETW helper sent an invalid message.");
    row("unknown", "connect\nmessage 5 x\nwait\n", "The Windows ETW helper sent an unknown message.");
    row("says why", "connect\nmessage 4 <b>50%1</b>\nwait\n", "<b>50%1</b>");
    row("says nothing", "connect\nmessage 4\nwait\n", "The Windows ETW helper failed.");
    row("is killed", "connect\nmessage 1\nkill\n", "The elevated Windows ETW helper stopped unexpectedly.");
}

void InotifyWatcherTest::everyFailureHasItsWords()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, message);
    Watched watched(script.toStdString());
    watched.start();
    QTRY_COMPARE(watched.errors, QStringList{message});
    watched.watcher.stopWatching();
    QCoreApplication::processEvents();
    QCOMPARE(watched.errors.size(), 1);
}

void InotifyWatcherTest::aHelperThatCannotBeStartedHasItsWords()
{
    Watched missing("", "/no/such/helper");
    missing.start();
    QCOMPARE(missing.errors,
             QStringList{QStringLiteral("The Windows ETW helper was not installed beside Platterscope.")});

    Watched declined("", "/etc/passwd");  // not a program
    declined.start();
    QCOMPARE(declined.errors, QStringList{QStringLiteral(
                                  "Windows access monitoring needs administrator permission (error 13).")});

    Watched taken("");
    monitor::HelperChannel other;
    QCOMPARE(other.createStopEvent(monitor::helperNames(taken.uuid).stopEvent), 0U);
    taken.start();
    QCOMPARE(taken.errors,
             QStringList{QStringLiteral("Unable to create the Windows ETW stop event (error 17).")});

    Watched refused("");
    const testsupport::ScopedEnvironment folder("TMPDIR", refused.folder / "none");
    refused.start();
    QCOMPARE(refused.errors,
             QStringList{QStringLiteral("Unable to create the Windows ETW helper pipe (error 2).")});
}

void InotifyWatcherTest::whatIsNoDirectoryIsRefused()
{
    Watched watched("connect\nwait\n");
    for (const std::string& root : {std::string(), watched.folder / "none", watched.folder / "script"}) {
        watched.watcher.startWatching(QString::fromStdString(root));
        QCOMPARE(watched.errors.takeLast(), QStringLiteral("Unable to monitor the selected disc directory."));
    }
    QCOMPARE(watched.errors, QStringList());
}

void InotifyWatcherTest::whoIsToldMayStopTheWatch()
{
    Watched watched("connect\nmessage 2 /d/a.mpls\nmessage 2 /d/b.mpls\nmessage 4 late\n");
    connect(&watched.watcher, &InotifyWatcher::mplsEvent, &watched.watcher, &InotifyWatcher::stopWatching);
    watched.start();
    QTRY_VERIFY(!watched.said.isEmpty());
    QTest::qWait(50);
    QCOMPARE(watched.said, QStringList{QStringLiteral("mpls OPEN /d/a.mpls")});
    QCOMPARE(watched.errors, QStringList());
}

QTEST_GUILESS_MAIN(InotifyWatcherTest)
#include "inotify_watcher_test.moc"
