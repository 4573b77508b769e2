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

namespace {

// What a test and the watches share.
struct Shared {
    std::string calls;                    // made by the watcher
    std::optional<WatchFailure> refusal;  // of the next start
    monitor::WatchSink sink;              // of the last start
};

struct FakeWatch final : monitor::AccessWatch {
    explicit FakeWatch(Shared& owner)
        : shared(owner)
    {}
    std::optional<WatchFailure> start(const std::string& root, monitor::WatchSink sink) override
    {
        shared.calls += "start " + root + '\n';
        shared.sink = std::move(sink);
        return shared.refusal;
    }
    void stop() override { shared.calls += "stop\n"; }

    Shared& shared;
};

}  // namespace

class InotifyWatcherTest : public QObject {
    Q_OBJECT

public:
    InotifyWatcherTest();

private Q_SLOTS:
    void init();
    void itKeepsTheSetsOfOpenFiles();
    void aStopDropsPendingReports();
    void manyEventsComeInBatchesBeforeTheFailure();
    void everyFailureHasItsText();
    void onlyADirectoryIsWatched();

private:
    void add(const QString& text)
    {
        QCOMPARE(QThread::currentThread(), thread());
        m_emitted.append(text);
    }
    void start() { m_watcher.startWatching(QString::fromStdString(m_folder.path())); }
    // Delivers "+path", "-path" or, if others have the file open, "~path", on a thread of its own as a watch does.
    void report(const std::vector<std::string>& lines)
    {
        std::vector<AccessEvent> events;
        for (const std::string& line : lines) {
            events.push_back({line[0] == '+' ? AccessEvent::Kind::Open : AccessEvent::Kind::Close,
                              line.substr(1), line[0] == '~'});
        }
        std::thread([&] { m_shared.sink.onEvents(std::move(events)); }).join();
    }
    void fail(WatchFailure failure)
    {
        std::thread([&] { m_shared.sink.onFailure(std::move(failure)); }).join();
    }

    testsupport::TemporaryFolder m_folder;
    Shared m_shared;
    InotifyWatcher m_watcher{[this] { return std::make_unique<FakeWatch>(m_shared); }};
    QStringList m_emitted;  // all signals, as text
    const std::string m_start = "start " + m_folder.path().string() + '\n';
};

InotifyWatcherTest::InotifyWatcherTest()
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
    connect(&m_watcher, &InotifyWatcher::mplsEvent, event(QStringLiteral("mpls ")));
    connect(&m_watcher, &InotifyWatcher::m2tsEvent, event(QStringLiteral("m2ts ")));
    connect(&m_watcher, &InotifyWatcher::openMplsFilesChanged, set(QStringLiteral("mpls ")));
    connect(&m_watcher, &InotifyWatcher::openFilesChanged, set(QStringLiteral("m2ts ")));
    connect(&m_watcher, &InotifyWatcher::errorOccurred, [this](const QString& text) { add(text); });
}

void InotifyWatcherTest::init()
{
    m_watcher.stopWatching();
    m_shared = {};
    m_emitted.clear();
}

void InotifyWatcherTest::itKeepsTheSetsOfOpenFiles()
{
    start();
    report({"+/d/a.mpls", "+/d/A.MPLS", "+/d/b.M2ts", "+/d/b.M2ts", "+/d/c.clpi", "+/d/mpls"});
    report({"+/d/.clpi"});
    report({"-/d/never.mpls", "-/d/a.mpls", "~/d/b.M2ts", "-/d/b.M2ts", "-/d/b.M2ts"});
    QTRY_COMPARE(m_emitted.size(), 14);
    QCOMPARE(m_emitted.join(u'\n'),
             QStringLiteral(
                 "mpls OPEN /d/a.mpls\nmpls {/d/a.mpls}\nmpls OPEN /d/A.MPLS\nmpls {/d/A.MPLS /d/a.mpls}\n"
                 "m2ts OPEN /d/b.M2ts\nm2ts {/d/b.M2ts}\nm2ts OPEN /d/b.M2ts\nmpls CLOSE /d/never.mpls\n"
                 "mpls CLOSE /d/a.mpls\nmpls {/d/A.MPLS}\nm2ts CLOSE /d/b.M2ts\nm2ts CLOSE /d/b.M2ts\n"
                 "m2ts {}\nm2ts CLOSE /d/b.M2ts"));
}

void InotifyWatcherTest::aStopDropsPendingReports()
{
    start();
    report({"+/d/a.mpls"});
    QTRY_COMPARE(m_emitted.size(), 2);
    report({"+/d/b.mpls"});
    m_watcher.stopWatching();
    m_watcher.stopWatching();
    start();
    report({"+/d/c.mpls"});
    QTRY_COMPARE(m_emitted.size(), 4);
    QCOMPARE(m_emitted.last(), QStringLiteral("mpls {/d/c.mpls}"));
    start();
    QCOMPARE(m_shared.calls, m_start + "stop\n" + m_start + "stop\n" + m_start);
    // A receiver may stop the watch, too.
    const QObject context;
    connect(&m_watcher, &InotifyWatcher::m2tsEvent, &context, [this] { m_watcher.stopWatching(); });
    report({"+/d/a.m2ts", "+/d/b.mpls"});
    fail({});
    QTRY_COMPARE(m_emitted.size(), 5);
    QTest::qWait(50);
    QCOMPARE(m_emitted.size(), 5);
}

void InotifyWatcherTest::manyEventsComeInBatchesBeforeTheFailure()
{
    start();
    report(std::vector<std::string>(2500, "-/d/a.mpls"));
    fail({Kind::HelperFailed, 0, "over"});
    while (m_emitted.isEmpty()) {
        QCoreApplication::processEvents();
    }
    QCOMPARE(m_emitted.size(), 1000);
    QTRY_COMPARE(m_emitted.size(), 2501);
    QCOMPARE(m_emitted.last(), QStringLiteral("over"));
}

void InotifyWatcherTest::everyFailureHasItsText()
{
    std::vector<WatchFailure> failures = {{Kind::HelperFailed, 0, "<b>50%1</b>"}};
    for (int kind = 0; kind <= static_cast<int>(Kind::HelperStopped); ++kind) {
        failures.push_back({static_cast<Kind>(kind), UINT32_MAX, {}});
    }
    std::string texts;
    for (const WatchFailure& failure : failures) {
        init();
        start();
        fail(failure);
        QTRY_COMPARE(m_emitted.size(), 1);
        m_shared.refusal = failure;
        start();
        QCOMPARE(m_emitted, QStringList(2, m_emitted.first()));
        m_watcher.stopWatching();
        QCOMPARE(m_shared.calls, m_start + "stop\n" + m_start + "stop\n");
        texts += m_emitted.first().toStdString() + '\n';
    }
    QCOMPARE(testsupport::goldenDifference(texts, "monitor/golden/failures.txt"), std::string());
}

void InotifyWatcherTest::onlyADirectoryIsWatched()
{
    testsupport::writeFile(m_folder / "file", {});
    for (const std::string& root : {std::string(), m_folder / "none", m_folder / "file"}) {
        m_watcher.startWatching(QString::fromStdString(root));
        QCOMPARE(m_emitted.takeLast(), QStringLiteral("Unable to monitor the selected disc directory."));
    }
    std::filesystem::create_directory_symlink(m_folder.path(), m_folder / "link");
    m_watcher.startWatching(QString::fromStdString(m_folder / "link/."));
    QCOMPARE(m_shared.calls, m_start);
    QCOMPARE(m_emitted, QStringList());
}

QTEST_GUILESS_MAIN(InotifyWatcherTest)
#include "inotify_watcher_test.moc"
