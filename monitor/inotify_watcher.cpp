#include "monitor/inotify_watcher.h"

#include "monitor/disc_file.h"
#include "monitor/platform_watch.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>
#include <optional>
#include <utility>

using monitor::AccessEvent;
using monitor::WatchFailure;

namespace {

// Events are fetched in batches with a pause between them, so that many events do not block the window.
constexpr std::size_t kReportsAtOnce = 1000;
constexpr int kFetchPauseMs = 10;

// The English message of a failure. %1 is the system's error number.
const char* failureText(WatchFailure::Kind kind)
{
    switch (kind) {
    case WatchFailure::Kind::EventsLost:
        return QT_TRANSLATE_NOOP("Messages", "Some file events were lost; monitoring has stopped.");
    case WatchFailure::Kind::RootGone:
        return QT_TRANSLATE_NOOP("Messages", "The monitored disc was removed.");
    case WatchFailure::Kind::TooManyWatches:
        return QT_TRANSLATE_NOOP("Messages", "The system's limit of watched directories is reached.");
    case WatchFailure::Kind::PipeNotCreated:
        return QT_TRANSLATE_NOOP("Messages", "Unable to create the Windows ETW helper pipe (error %1).");
    case WatchFailure::Kind::StopEventNotCreated:
        return QT_TRANSLATE_NOOP("Messages", "Unable to create the Windows ETW stop event (error %1).");
    case WatchFailure::Kind::HelperMissing:
        return QT_TRANSLATE_NOOP("Messages", "The Windows ETW helper was not installed beside Platterscope.");
    case WatchFailure::Kind::LaunchFailed:
        return QT_TRANSLATE_NOOP("Messages",
                                 "Windows access monitoring needs administrator permission (error %1).");
    case WatchFailure::Kind::NotConnected:
        return QT_TRANSLATE_NOOP("Messages", "The elevated Windows ETW helper did not connect (error %1).");
    case WatchFailure::Kind::InvalidMessage:
        return QT_TRANSLATE_NOOP("Messages", "The Windows ETW helper sent an invalid message.");
    case WatchFailure::Kind::UnknownMessage:
        return QT_TRANSLATE_NOOP("Messages", "The Windows ETW helper sent an unknown message.");
    case WatchFailure::Kind::HelperFailed:
        return QT_TRANSLATE_NOOP("Messages", "The Windows ETW helper failed.");
    case WatchFailure::Kind::HelperStopped:
        return QT_TRANSLATE_NOOP("Messages", "The elevated Windows ETW helper stopped unexpectedly.");
    case WatchFailure::Kind::CannotWatch:
        break;
    }
    return QT_TRANSLATE_NOOP("Messages", "Unable to monitor the selected disc directory.");
}

QString messageOf(const WatchFailure& failure)
{
    if (!failure.text.empty()) { return QString::fromStdString(failure.text); }
    const QString text = QCoreApplication::translate("Messages", failureText(failure.kind));
    return text.contains(QLatin1StringView("%1")) ? text.arg(failure.errorNumber) : text;
}

std::unique_ptr<monitor::AccessWatch> makeOwnWatch()
{
    return monitor::makePlatformWatch(QCoreApplication::applicationDirPath().toStdString(),
                                      QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString());
}

}  // namespace

struct InotifyWatcher::Inbox {
    std::mutex mutex;  // guards the members below
    std::deque<AccessEvent> events;
    std::optional<WatchFailure> failure;
    bool isAnnounced = false;  // fetchReports() is due and has not run yet
};

InotifyWatcher::InotifyWatcher(QObject* parent)
    : InotifyWatcher(makeOwnWatch, parent)
{}

InotifyWatcher::InotifyWatcher(WatchFactory makeWatch, QObject* parent)
    : QObject(parent)
    , m_makeWatch(std::move(makeWatch))
{
    m_fetchTimer.setSingleShot(true);
    m_fetchTimer.setInterval(kFetchPauseMs);
    connect(&m_fetchTimer, &QTimer::timeout, this, &InotifyWatcher::fetchReports);
}

InotifyWatcher::~InotifyWatcher()
{
    stopWatching();
}

void InotifyWatcher::startWatching(const QString& rootPath)
{
    stopWatching();
    const QString root = QFileInfo(rootPath).canonicalFilePath();
    if (root.isEmpty() || !QFileInfo(root).isDir()) { return fail({}); }
    m_inbox = std::make_shared<Inbox>();
    m_watch = m_makeWatch();
    if (const auto failure = m_watch->start(QDir::toNativeSeparators(root).toStdString(), makeSink())) {
        fail(*failure);
    }
}

void InotifyWatcher::stopWatching()
{
    if (m_watch) { m_watch->stop(); }
    m_watch.reset();
    m_inbox.reset();
    m_fetchTimer.stop();
    m_openPlaylists.clear();
    m_openStreams.clear();
}

// The sink runs on the watch's thread. It may use `this`, because stopWatching() joins that thread.
monitor::WatchSink InotifyWatcher::makeSink()
{
    const auto announce = [this](Inbox& inbox) {
        if (std::exchange(inbox.isAnnounced, true)) { return; }
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (!m_fetchTimer.isActive()) { m_fetchTimer.start(); }
            },
            Qt::QueuedConnection);
    };
    return {.onEvents =
                [inbox = m_inbox, announce](std::vector<AccessEvent> events) {
                    std::erase_if(events, [](const AccessEvent& event) {
                        return monitor::discFileOf(event.path) == monitor::DiscFile::Other;
                    });
                    if (events.empty()) { return; }
                    const std::lock_guard lock(inbox->mutex);
                    inbox->events.insert(inbox->events.end(), std::make_move_iterator(events.begin()),
                                         std::make_move_iterator(events.end()));
                    announce(*inbox);
                },
            .onFailure =
                [inbox = m_inbox, announce](WatchFailure failure) {
                    const std::lock_guard lock(inbox->mutex);
                    inbox->failure = std::move(failure);
                    announce(*inbox);
                }};
}

void InotifyWatcher::fetchReports()
{
    const std::shared_ptr<Inbox> inbox = m_inbox;
    if (!inbox) { return; }  // the watch that announced it has ended
    std::vector<AccessEvent> events;
    std::optional<WatchFailure> failure;
    {
        const std::lock_guard lock(inbox->mutex);
        const auto count = static_cast<std::ptrdiff_t>(std::min(inbox->events.size(), kReportsAtOnce));
        const auto end = inbox->events.begin() + count;
        events.assign(std::make_move_iterator(inbox->events.begin()), std::make_move_iterator(end));
        inbox->events.erase(inbox->events.begin(), end);
        inbox->isAnnounced = !inbox->events.empty();
        if (!inbox->isAnnounced) { failure = inbox->failure; }
        if (inbox->isAnnounced) { m_fetchTimer.start(); }
    }
    for (const AccessEvent& event : events) {
        report(event);
        if (m_inbox != inbox) { return; }
    }
    if (failure) { fail(*failure); }
}

void InotifyWatcher::report(const AccessEvent& event)
{
    const QString path = QString::fromStdString(event.path);
    const bool isPlaylist = monitor::discFileOf(event.path) == monitor::DiscFile::Playlist;
    const bool isOpen = event.kind == AccessEvent::Kind::Open;
    QSet<QString>& openFiles = isPlaylist ? m_openPlaylists : m_openStreams;
    const auto former = openFiles.size();
    if (isOpen) {
        openFiles.insert(path);
    } else if (!event.isStillOpen) {
        openFiles.remove(path);
    }
    const bool hasChanged = openFiles.size() != former;
    const QString type = isOpen ? QStringLiteral("OPEN") : QStringLiteral("CLOSE");
    const auto watch = m_inbox;
    if (isPlaylist) {
        Q_EMIT mplsEvent(path, type);
    } else {
        Q_EMIT m2tsEvent(path, type);
    }
    if (!hasChanged || m_inbox != watch) { return; }  // a receiver may have stopped the watch
    if (isPlaylist) {
        Q_EMIT openMplsFilesChanged(openFiles);
    } else {
        Q_EMIT openFilesChanged(openFiles);
    }
}

void InotifyWatcher::fail(const WatchFailure& failure)
{
    stopWatching();
    Q_EMIT errorOccurred(messageOf(failure));
}
