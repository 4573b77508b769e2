// Monitors which files of the open Blu-ray disc other programs open.
#include "monitor/inotify_watcher.h"
#include "ui/main_window.h"
#include "ui/message_box.h"
#include "ui/monitor_page.h"
#include "ui/plain_text.h"

#include <QAction>
#include <QClipboard>
#include <QDateTime>
#include <QFileInfo>
#include <QGuiApplication>
#include <QListWidgetItem>

namespace {

QString eventLine(const QString& path, const QString& eventType)
{
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return QStringLiteral("[%1] %2: %3").arg(time, eventType, QFileInfo(path).fileName());
}

}  // namespace

void MainWindow::connectMonitor()
{
    connect(m_monitorPage, &MonitorPage::startRequested, this, &MainWindow::startMonitoring);
    connect(m_monitorPage, &MonitorPage::stopRequested, this, &MainWindow::stopMonitoring);
    connect(m_monitorPage, &MonitorPage::clearRequested, this, &MainWindow::clearAllMonitorLogs);
    connect(m_monitorPage, &MonitorPage::eventChosen, this, &MainWindow::copyEventLogItemToClipboard);
    connect(m_monitorPage, &MonitorPage::openFileChosen, this, &MainWindow::copyOpenFileItemToClipboard);
    connect(m_watcher, &InotifyWatcher::mplsEvent, this, &MainWindow::onMplsEvent);
    connect(m_watcher, &InotifyWatcher::m2tsEvent, this, &MainWindow::onM2tsEvent);
    connect(m_watcher, &InotifyWatcher::openMplsFilesChanged, this, &MainWindow::onOpenMplsFilesChanged);
    connect(m_watcher, &InotifyWatcher::openFilesChanged, this, &MainWindow::onOpenFilesChanged);
    connect(m_watcher, &InotifyWatcher::errorOccurred, this, &MainWindow::onErrorOccurred);
}

bool MainWindow::isMonitorAvailable() const
{
    return hasKey() && m_discLoaded && m_result.discType == DiscType::Bluray;
}

void MainWindow::setMonitoring(bool monitoring, const QString& status)
{
    m_monitoring = monitoring;
    m_monitorPage->setStatus(status);
    applyMonitorRule();
}

void MainWindow::applyMonitorRule()
{
    const bool available = isMonitorAvailable();
    m_monitorAction->setEnabled(available);
    m_monitorPage->setControls(available && !m_monitoring, available && m_monitoring, available);
}

void MainWindow::startMonitoring()
{
    if (!hasKey()) {
        showApiKeyDialogSlot();
    } else if (!m_discLoaded) {
        messagebox::warning(this, tr("No Disc"), tr("Please open a disc ISO or directory first."));
    } else if (m_result.discType != DiscType::Bluray) {
        messagebox::warning(this, tr("Blu-ray Disc Required"),
                            tr("The Blu-ray Access Monitor is only available for Blu-ray discs."));
    } else if (m_discPath.isEmpty()) {
        messagebox::warning(this, tr("No Path"), tr("Current disc path is empty."));
    } else {
        m_monitorPage->clearLists();
        setMonitoring(true, tr("Monitoring: %1").arg(plaintext::oneLine(m_discPath, messagebox::kTextLimit)));
        m_watcher->startWatching(m_discPath);
    }
}

void MainWindow::stopMonitoring()
{
    if (!m_monitoring) { return; }
    m_watcher->stopWatching();
    setMonitoring(false, tr("Idle"));
}

void MainWindow::clearAllMonitorLogs()
{
    m_monitorPage->clearLists();
}

void MainWindow::onMplsEvent(const QString& path, const QString& eventType)
{
    m_monitorPage->addEvent(MonitorPage::Files::Playlists, eventLine(path, eventType));
}

void MainWindow::onM2tsEvent(const QString& path, const QString& eventType)
{
    m_monitorPage->addEvent(MonitorPage::Files::Segments, eventLine(path, eventType));
}

void MainWindow::onOpenMplsFilesChanged(const QSet<QString>& openFiles)
{
    m_monitorPage->showOpenFiles(MonitorPage::Files::Playlists, openFiles);
}

void MainWindow::onOpenFilesChanged(const QSet<QString>& openFiles)
{
    m_monitorPage->showOpenFiles(MonitorPage::Files::Segments, openFiles);
}

void MainWindow::onErrorOccurred(const QString& message)
{
    m_watcher->stopWatching();
    m_monitorPage->setStatus(tr("Error: %1").arg(plaintext::oneLine(message, messagebox::kTextLimit)));
    messagebox::warning(this, tr("Access Monitor Error"), message);
    setMonitoring(false, tr("Idle"));
}

void MainWindow::copyEventLogItemToClipboard(QListWidgetItem* item)
{
    QGuiApplication::clipboard()->setText(item->text());
}

void MainWindow::copyOpenFileItemToClipboard(QListWidgetItem* item)
{
    QGuiApplication::clipboard()->setText(item->text());
}
