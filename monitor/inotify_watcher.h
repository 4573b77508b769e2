// Reports which playlist (.mpls) and clip stream (.m2ts) files below a directory other programs open and close. An
// AccessWatch finds the events. This object sorts them by file kind, keeps the sets of open files, makes the messages
// of failures and emits everything on its own thread.
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

    // Uses the watch of this system.
    explicit InotifyWatcher(QObject* parent = nullptr);
    // Uses the watches that the factory makes, one for each startWatching().
    explicit InotifyWatcher(WatchFactory makeWatch, QObject* parent = nullptr);
    ~InotifyWatcher() override;

Q_SIGNALS:
    // `eventType` is "OPEN" or "CLOSE"; `path` is absolute. The set of open files follows if it has changed. A file
    // stays in the set until the watch reports its last close.
    void mplsEvent(const QString& path, const QString& eventType);
    void m2tsEvent(const QString& path, const QString& eventType);
    void openMplsFilesChanged(const QSet<QString>& openFiles);
    void openFilesChanged(const QSet<QString>& openFiles);
    // The watch has ended or could not begin. `message` is a sentence for the user.
    void errorOccurred(const QString& message);

public Q_SLOTS:
    // Stops the current watch, then watches `rootPath`, which must be a directory. The sets are empty at first.
    void startWatching(const QString& rootPath);

    // Stops the watch, drops its pending reports and empties the sets. Emits nothing.
    void stopWatching();

private:
    // Reports from the watch's thread, to be fetched on this object's thread.
    struct Inbox;

    [[nodiscard]] monitor::WatchSink makeSink();
    void fetchReports();
    void report(const monitor::AccessEvent& event);
    void fail(const monitor::WatchFailure& failure);

    WatchFactory m_makeWatch;
    std::unique_ptr<monitor::AccessWatch> m_watch;
    std::shared_ptr<Inbox> m_inbox;  // of the current watch
    QTimer m_fetchTimer;
    QSet<QString> m_openPlaylists;
    QSet<QString> m_openStreams;
};
