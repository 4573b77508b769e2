// The program's only top-level window. It owns the current scan result, shows it on one of four pages, and runs every
// long operation while the busy dialog is shown.
#pragma once

#include "base/message.h"
#include "scan/disc_scan_result.h"
#include "scan/disc_scanner.h"
#include "ui/busy_task.h"

#include <QMainWindow>
#include <QSet>
#include <QString>

#include <optional>
#include <type_traits>
#include <utility>

class ConfigurationsPage;
class InotifyWatcher;
class MonitorPage;
class PlaceholderPage;
class QAction;
class QListWidgetItem;
class QStackedWidget;
class TitlesPage;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

    // Sets the disc to open after the check of the key at start, if the key is accepted; empty: none.
    void setDiscToOpenAtStart(const QString& path) { m_discToOpenAtStart = path; }

    // Makes `key` the current key, asks the service to check it, and stores it if it is accepted. Otherwise restores
    // the former key and shows the reason in a box. Returns whether the key was accepted and stored.
    bool authenticateAndSaveApiKey(const QString& key);

    // Makes the result of scanning `path` the current one and shows it: in the window's title, on the pages, and in a
    // box if it has an error or a message.
    void populate(const QString& path, const DiscScanResult& result);

public Q_SLOTS:
    void openDiscIso();
    void openDiscDirectory();
    void quitApplication();
    void showTitlesView();
    void showConfigurationsView();
    void showMonitorView();
    void showApiKeyDialogSlot();
    void showConfigurationLibraryDialog();
    void openConfigurationLibraryDocumentation();
    void showAboutDialog();
    void refreshConfigurations();

    void startMonitoring();
    void stopMonitoring();
    void clearAllMonitorLogs();
    void onMplsEvent(const QString& path, const QString& eventType);
    void onM2tsEvent(const QString& path, const QString& eventType);
    void onOpenMplsFilesChanged(const QSet<QString>& openFiles);
    void onOpenFilesChanged(const QSet<QString>& openFiles);
    void onErrorOccurred(const QString& message);
    void copyEventLogItemToClipboard(QListWidgetItem* item);
    void copyOpenFileItemToClipboard(QListWidgetItem* item);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class Page { Placeholder, Titles, Configurations, Monitor };

    // Whether there is an accepted key. Every action that needs the service checks this first.
    [[nodiscard]] bool hasKey() const;

    void createMenus();
    void createPages();
    void applyEnableRule();
    void showPage(Page page);
    [[nodiscard]] QWidget* widgetOf(Page page) const;

    // main_window_key.cpp
    void loadStoredKey();
    void startUp();
    void setKey(const QString& key, bool accepted);
    void showUpdateNotice(const QString& latestVersion);

    // main_window_disc.cpp
    void openDisc(const QString& given);
    void showServiceMessage(const DiscScanResult& result);
    [[nodiscard]] DiscScanResult scanDiscWithProgress(const QString& path, bool addIfMissing);

    // main_window_configurations.cpp
    [[nodiscard]] DiscScanResult reloadConfigurationsWithProgress(const DiscScanResult& current);

    // main_window_monitor.cpp
    void connectMonitor();
    [[nodiscard]] bool isMonitorAvailable() const;
    void setMonitoring(bool monitoring, const QString& status);
    void applyMonitorRule();

    // Runs `work` by runBusyTask() and returns its result. `work` must own all data that it uses. If it did not run to
    // its end, returns a failed result with a message.
    template <typename Work>
    std::invoke_result_t<Work> runWithBusyDialog(const QString& title, const QString& label, Work work)
    {
        std::optional<std::invoke_result_t<Work>> slot;
        beginWork();
        const bool isDone =
            runBusyTask(this, title, label, [&slot, work = std::move(work)] { slot.emplace(work()); });
        endWork();
        if (!isDone) { setNotDone(slot.emplace()); }
        return *std::move(slot);
    }

    void beginWork() { m_working = true; }
    void endWork();
    static void setNotDone(DiscScanResult& result);
    static void setNotDone(service::AuthenticationOutcome& outcome);

    InotifyWatcher* m_watcher;
    DiscScanner* m_scanner;  // holds the key; each worker thread has its own scanner
    QString m_discPath;
    QString m_discToOpenAtStart;
    Message m_storedKeyProblem;  // why no stored key is used
    DiscScanResult m_result;
    bool m_discLoaded = false;
    bool m_apiKeyAccepted = false;
    bool m_monitoring = false;
    bool m_working = false;           // a busy task runs; no other work may begin
    bool m_closeRequested = false;    // during a busy task; the window closes after it
    Page m_page = Page::Placeholder;  // the page to show while there is a key

    QStackedWidget* m_pages = nullptr;
    PlaceholderPage* m_placeholderPage = nullptr;
    TitlesPage* m_titlesPage = nullptr;
    ConfigurationsPage* m_configurationsPage = nullptr;
    MonitorPage* m_monitorPage = nullptr;
    QAction* m_openIsoAction = nullptr;
    QAction* m_openDirectoryAction = nullptr;
    QAction* m_titlesAction = nullptr;
    QAction* m_configurationsAction = nullptr;
    QAction* m_monitorAction = nullptr;
};
