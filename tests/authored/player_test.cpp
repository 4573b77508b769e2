// The access watcher on a real player's reading: ffprobe over a stream that ffmpeg has made. Skipped where they are
// not installed.
#include "monitor/inotify_watcher.h"
#include "tests/support/sample_bluray.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

using testsupport::DiscForm;

class PlayerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPlayersReadingIsReported();
};

namespace {

bool run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0;
}

}  // namespace

void PlayerTest::aPlayersReadingIsReported()
{
    const QString ffmpeg = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    const QString ffprobe = QStandardPaths::findExecutable(QStringLiteral("ffprobe"));
    if (ffmpeg.isEmpty() || ffprobe.isEmpty()) { QSKIP("needs ffmpeg: tools/setup.sh dvd-authoring"); }
    const testsupport::TemporaryFolder folder;
    const QString disc =
        QString::fromStdString(testsupport::sampleBluray().write(DiscForm::Directory, folder));
    const QString stream = disc + QStringLiteral("/BDMV/STREAM/00001.m2ts");
    QVERIFY(
        run(ffmpeg, QStringLiteral("-v error -y -f lavfi -i testsrc=d=2:s=320x240 -c:v mpeg2video -f mpegts "
                                   "-mpegts_m2ts_mode 1")
                            .split(u' ') +
                        QStringList{stream}));

    InotifyWatcher watcher;
    QStringList events;
    QSet<QString> open;
    connect(&watcher, &InotifyWatcher::m2tsEvent,
            [&](const QString& path, const QString& type) { events.append(type + u' ' + path); });
    connect(&watcher, &InotifyWatcher::openFilesChanged, [&](const QSet<QString>& files) { open = files; });
    connect(&watcher, &InotifyWatcher::errorOccurred,
            [](const QString& message) { QFAIL(qPrintable(message)); });
    watcher.startWatching(disc);
    // The stream's directory is watched a moment after the disc's.
    QTRY_VERIFY(run(ffprobe, {QStringLiteral("-v"), QStringLiteral("error"), stream}) &&
                QTest::qWaitFor([&] { return !events.isEmpty(); }, 200));
    QTRY_COMPARE(events.last(), QStringLiteral("CLOSE ") + stream);
    events.clear();

    QVERIFY(run(ffprobe, {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_packets"),
                          QStringLiteral("-show_streams"), stream}));
    QTRY_VERIFY(!events.isEmpty() && open.isEmpty() && events.last() == QStringLiteral("CLOSE ") + stream);
    QCOMPARE(events.first(), QStringLiteral("OPEN ") + stream);
    QCOMPARE(events.count(QStringLiteral("OPEN ") + stream), events.count(QStringLiteral("CLOSE ") + stream));
}

QTEST_GUILESS_MAIN(PlayerTest)
#include "player_test.moc"
