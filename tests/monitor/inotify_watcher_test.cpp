// InotifyWatcher over a watch that reports what a test gives it.
#include "monitor/inotify_watcher.h"
#include "tests/support/golden.h"
#include "tests/support/temporary_folder.h"

#include <QTest>
#include <QThread>

#include <thread>

using monitor::AccessEvent;
using monitor::WatchFailure;
using Kind = WatchFailure::Kind;

class InotifyWatcherTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itKeepsTheSetsOfOpenFiles();
    void aStopDropsWhatIsOnItsWay();
    void aFloodComesInLotsBeforeTheFailure();
    void everyFailureHasItsText();
    void onlyADirectoryIsWatched();
    void aReceiverMayStopTheWatch();
};

namespace {

// What a test and the watches that it makes share.
struct Shared {
    std::string calls;                    // made by the watcher
    std::optional<WatchFailure> refusal;  // of the next start
    monitor::WatchSink sink;              // of the last start
};

class FakeWatch final : public monitor::AccessWatch {
public:
    explicit FakeWatch(Shared& shared)
        : m_shared(shared)
    {}
    std::optional<WatchFailure> start(const std::string& root, monitor::WatchSink sink) override
    {
        m_shared.calls += "start " + root + '\n';
        m_shared.sink = std::move(sink);
        return m_shared.refusal;
    }
    void stop() override { m_shared.calls += "stop\n"; }

private:
    Shared& m_shared;
};

// A watcher, and all its signals as text.
struct Watched : Shared {
    Watched()
    {
        const auto event = [this](const QString& kind) {
            return [this, kind](const QString& path, const QString& type) { add(kind + type + u' ' + path); };
        };
        const auto set = [this](const QString& kind) {
            return [this, kind](const QSet<QString>& files) {
                QStringList names(files.begin(), files.end());
                names.sort();
                add(kind + u'{' + names.join(u' ') + u'}');
            };
        };
        QObject::connect(&watcher, &InotifyWatcher::mplsEvent, event(QStringLiteral("mpls ")));
        QObject::connect(&watcher, &InotifyWatcher::m2tsEvent, event(QStringLiteral("m2ts ")));
        QObject::connect(&watcher, &InotifyWatcher::openMplsFilesChanged, set(QStringLiteral("mpls ")));
        QObject::connect(&watcher, &InotifyWatcher::openFilesChanged, set(QStringLiteral("m2ts ")));
        QObject::connect(&watcher, &InotifyWatcher::errorOccurred,
                         [this](const QString& text) { add(text); });
    }
    void add(const QString& text)
    {
        QCOMPARE(QThread::currentThread(), watcher.thread());
        emitted.append(text);
    }

    void start() { watcher.startWatching(QString::fromStdString(folder.path())); }

    // Delivers "+path", "-path" or, if others have the file open, "~path", from a thread as a watch does.
    void report(const std::vector<std::string>& lines) const
    {
        std::vector<AccessEvent> events;
        for (const std::string& line : lines) {
            events.push_back({line[0] == '+' ? AccessEvent::Kind::Open : AccessEvent::Kind::Close,
                              line.substr(1), line[0] == '~'});
        }
        std::thread([&] { sink.onEvents(std::move(events)); }).join();
    }
    void fail(WatchFailure failure) const
    {
        std::thread([&] { sink.onFailure(std::move(failure)); }).join();
    }

    testsupport::TemporaryFolder folder;
    InotifyWatcher watcher{[this] { return std::make_unique<FakeWatch>(*this); }};
    QStringList emitted;
};

}  // namespace

void InotifyWatcherTest::itKeepsTheSetsOfOpenFiles()
{
    Watched watched;
    watched.start();
    watched.report({"+/d/a.mpls", "+/d/A.MPLS", "+/d/b.M2ts", "+/d/b.M2ts", "+/d/c.clpi", "+/d/mpls"});
    watched.report({"+/d/.clpi"});
    watched.report({"-/d/never.mpls", "-/d/a.mpls", "~/d/b.M2ts", "-/d/b.M2ts", "-/d/b.M2ts"});
    QTRY_COMPARE(watched.emitted.size(), 14);
    QCOMPARE(watched.emitted.join(u'\n'),
             QStringLiteral(
                 "mpls OPEN /d/a.mpls\nmpls {/d/a.mpls}\nmpls OPEN /d/A.MPLS\nmpls {/d/A.MPLS /d/a.mpls}\n"
                 "m2ts OPEN /d/b.M2ts\nm2ts {/d/b.M2ts}\nm2ts OPEN /d/b.M2ts\nmpls CLOSE /d/never.mpls\n"
                 "mpls CLOSE /d/a.mpls\nmpls {/d/A.MPLS}\nm2ts CLOSE /d/b.M2ts\nm2ts CLOSE /d/b.M2ts\n"
                 "m2ts {}\nm2ts CLOSE /d/b.M2ts"));
}

void InotifyWatcherTest::aStopDropsWhatIsOnItsWay()
{
    Watched watched;
    watched.start();
    watched.report({"+/d/a.mpls"});
    QTRY_COMPARE(watched.emitted.size(), 2);
    watched.report({"+/d/b.mpls"});
    watched.watcher.stopWatching();
    watched.watcher.stopWatching();
    watched.start();
    watched.report({"+/d/c.mpls"});
    QTRY_COMPARE(watched.emitted.size(), 4);
    QCOMPARE(watched.emitted.last(), QStringLiteral("mpls {/d/c.mpls}"));
    watched.start();
    const std::string start = "start " + watched.folder.path().string() + '\n';
    QCOMPARE(watched.calls, start + "stop\n" + start + "stop\n" + start);
}

void InotifyWatcherTest::aFloodComesInLotsBeforeTheFailure()
{
    Watched watched;
    watched.start();
    watched.report(std::vector<std::string>(2500, "-/d/a.mpls"));
    watched.fail({Kind::HelperFailed, 0, "over"});
    while (watched.emitted.isEmpty()) {
        QCoreApplication::processEvents();
    }
    QCOMPARE(watched.emitted.size(), 1000);
    QTRY_COMPARE(watched.emitted.size(), 2501);
    QCOMPARE(watched.emitted.last(), QStringLiteral("over"));
}

void InotifyWatcherTest::everyFailureHasItsText()
{
    std::vector<WatchFailure> failures = {{Kind::HelperFailed, 0, "<b>50%1</b>"}};
    for (int kind = 0; kind <= static_cast<int>(Kind::HelperStopped); ++kind) {
        failures.push_back({static_cast<Kind>(kind), UINT32_MAX, {}});
    }
    std::string texts;
    for (const WatchFailure& failure : failures) {
        Watched watched;
        watched.start();
        watched.fail(failure);
        QTRY_COMPARE(watched.emitted.size(), 1);
        watched.refusal = failure;
        watched.start();
        QCOMPARE(watched.emitted.size(), 2);
        QCOMPARE(watched.emitted.last(), watched.emitted.first());
        watched.watcher.stopWatching();
        const std::string startAndStop = "start " + watched.folder.path().string() + "\nstop\n";
        QCOMPARE(watched.calls, startAndStop + startAndStop);
        texts += watched.emitted.first().toStdString() + '\n';
    }
    QCOMPARE(testsupport::goldenDifference(texts, "monitor/golden/failures.txt"), std::string());
}

void InotifyWatcherTest::onlyADirectoryIsWatched()
{
    Watched watched;
    testsupport::writeFile(watched.folder / "file", {});
    for (const std::string& root : {std::string(), watched.folder / "none", watched.folder / "file"}) {
        watched.watcher.startWatching(QString::fromStdString(root));
        QCOMPARE(watched.emitted.takeLast(),
                 QStringLiteral("Unable to monitor the selected disc directory."));
    }
    QCOMPARE(watched.calls, std::string());
    std::filesystem::create_directory_symlink(watched.folder.path(), watched.folder / "link");
    watched.watcher.startWatching(QString::fromStdString(watched.folder / "link/."));
    QCOMPARE(watched.calls, "start " + watched.folder.path().string() + '\n');
    QCOMPARE(watched.emitted, QStringList());
}

void InotifyWatcherTest::aReceiverMayStopTheWatch()
{
    Watched watched;
    connect(&watched.watcher, &InotifyWatcher::mplsEvent, &watched.watcher, &InotifyWatcher::stopWatching);
    watched.start();
    watched.report({"+/d/a.mpls", "+/d/b.mpls"});
    watched.fail({});
    QTRY_VERIFY(!watched.emitted.isEmpty());
    QTest::qWait(50);
    QCOMPARE(watched.emitted, QStringList{QStringLiteral("mpls OPEN /d/a.mpls")});
}

QTEST_GUILESS_MAIN(InotifyWatcherTest)
#include "inotify_watcher_test.moc"
