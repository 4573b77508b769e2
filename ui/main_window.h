// The program's one top-level window. It owns the current scan result, shows it on one of four pages, and
// runs every long operation behind the busy dialog.
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

    // A disc to open once the start-up check of the key has ended, when there is a key then; empty for none.
    void setDiscToOpenAtStart(const QString& path) { m_discToOpenAtStart = path; }

    // Puts the key in force, asks the service whether it accepts it, and stores it when it does. When it does
    // not, the key that was in force before comes back and a box says why. Whether the key was accepted.
    bool authenticateAndSaveApiKey(const QString& key);

    // Makes the result of scanning `path` the current one and shows it: title, pages, and a box with its error or
    // its message.
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

    // Whether an accepted key is at hand. Every action that needs the service asks this first.
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

    // Runs `work` on a worker thread behind the busy dialog and returns what it returned. `work` must own all it
    // needs. Where the system could not run it to its end, the result is a failed one that says so.
    template <typename Work>
    std::invoke_result_t<Work> runWithBusyDialog(const QString& title, const QString& label, Work work)
    {
        std::optional<std::invoke_result_t<Work>> slot;
        beginWork();
        const bool isDone =
            runBusyTask(this, title, label, [&slot, work = std::move(work)] { slot.emplace(work()); });
        endWork();
        if (!isDone) { tellNotDone(slot.emplace()); }
        return *std::move(slot);
    }

    void beginWork() { m_working = true; }
    void endWork();
    static void tellNotDone(DiscScanResult& result);
    static void tellNotDone(service::AuthenticationOutcome& outcome);

    InotifyWatcher* m_watcher;
    DiscScanner* m_scanner;  // holds the key; each worker makes a scanner of its own
    QString m_discPath;
    QString m_discToOpenAtStart;
    Message m_storedKeyProblem;  // why no stored key is in force
    DiscScanResult m_result;
    bool m_discLoaded = false;
    bool m_apiKeyAccepted = false;
    bool m_monitoring = false;
    bool m_working = false;           // nothing else begins meanwhile, whatever asks for it
    bool m_closeRequested = false;    // while work ran; carried out when it has ended
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
