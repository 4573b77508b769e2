// Tells which playlist (.mpls) and clip stream (.m2ts) files below a directory other programs open and close. How
// the system is asked is an AccessWatch's business; this object classifies what it reports, keeps the sets of open
// files, words its failures and brings everything to the thread it lives on. Named after what Linux has for this.
#pragma once

#include "monitor/access_watch.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class InotifyWatcher : public QObject {
    Q_OBJECT

public:
    using WatchFactory = std::function<std::unique_ptr<monitor::AccessWatch>()>;

    // Watches the way this system has.
    explicit InotifyWatcher(QObject* parent = nullptr);
    // Watches another way; the factory is called once for each watch.
    explicit InotifyWatcher(WatchFactory makeWatch, QObject* parent = nullptr);
    ~InotifyWatcher() override;

Q_SIGNALS:
    // `eventType` is "OPEN" or "CLOSE"; `path` is absolute. Each is followed by the open set, where it changed: a
    // file that several programs have open leaves it with the last of them.
    void mplsEvent(const QString& path, const QString& eventType);
    void m2tsEvent(const QString& path, const QString& eventType);
    void openMplsFilesChanged(const QSet<QString>& openFiles);
    void openFilesChanged(const QSet<QString>& openFiles);
    // The watch has ended, or never began; `message` is a sentence for the user.
    void errorOccurred(const QString& message);

public Q_SLOTS:
    // Ends a watch that runs and begins one of `rootPath`, which must be a directory. The sets begin empty.
    void startWatching(const QString& rootPath);

    // Ends the watch; reports of it that are still on their way are dropped, and the sets emptied, in silence.
    void stopWatching();

private:
    // What the watch's thread has left to be fetched.
    struct Inbox;

    [[nodiscard]] monitor::WatchSink makeSink();
    void fetchReports();
    void report(const monitor::AccessEvent& event);
    void fail(const monitor::WatchFailure& failure);

    WatchFactory m_makeWatch;
    std::unique_ptr<monitor::AccessWatch> m_watch;
    std::shared_ptr<Inbox> m_inbox;  // of the watch that runs
    QTimer m_fetchTimer;
    QSet<QString> m_openPlaylists;
    QSet<QString> m_openStreams;
};
