// The access watcher while a real player reads: ffprobe over a stream that ffmpeg has made. Skipped if they are not
// installed.
#include "monitor/inotify_watcher.h"
#include "tests/support/sample_bluray.h"

#include <QTest>

#include <cstdlib>

class PlayerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPlayersReadingIsReported()
    {
        const auto run = [](const std::string& command) {
            return std::system((command + " >/dev/null").c_str()) == 0;
        };
        if (!run("command -v ffmpeg")) { QSKIP("ffmpeg is not installed"); }
        const testsupport::TemporaryFolder folder;
        const std::string disc = testsupport::sampleBluray().write(testsupport::DiscForm::Directory, folder);
        const std::string path = disc + "/BDMV/STREAM/00001.m2ts";
        const std::string probe = "ffprobe -v error -count_packets -show_streams " + path;
        const QString opened = QStringLiteral("OPEN ") + QString::fromStdString(path);
        const QString closed = QStringLiteral("CLOSE ") + QString::fromStdString(path);
        QVERIFY(run("ffmpeg -v error -y -f lavfi -i testsrc=d=2:s=320x240 -c:v mpeg2video -f mpegts "
                    "-mpegts_m2ts_mode 1 " +
                    path));

        InotifyWatcher watcher;
        QStringList events;
        QSet<QString> open;
        connect(&watcher, &InotifyWatcher::m2tsEvent,
                [&](const QString& file, const QString& type) { events.append(type + u' ' + file); });
        connect(&watcher, &InotifyWatcher::openFilesChanged,
                [&](const QSet<QString>& files) { open = files; });
        connect(&watcher, &InotifyWatcher::errorOccurred,
                [](const QString& message) { QFAIL(qPrintable(message)); });
        watcher.startWatching(QString::fromStdString(disc));
        // The stream's directory is watched a moment after the disc's.
        QTRY_VERIFY(run(probe) && QTest::qWaitFor([&] { return !events.isEmpty(); }, 200));
        QTRY_COMPARE(events.last(), closed);
        events.clear();

        QVERIFY(run(probe));
        QTRY_VERIFY(!events.isEmpty() && open.isEmpty() && events.last() == closed);
        QCOMPARE(events.first(), opened);
        QCOMPARE(events.count(opened), events.count(closed));
    }
};

QTEST_GUILESS_MAIN(PlayerTest)
#include "player_test.moc"
