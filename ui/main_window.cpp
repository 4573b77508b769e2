#include "ui/main_window.h"

#include "monitor/inotify_watcher.h"
#include "scan/error_result.h"
#include "ui/configurations_page.h"
#include "ui/monitor_page.h"
#include "ui/placeholder_page.h"
#include "ui/titles_page.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QScreen>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>

namespace {

constexpr QSize kInitialSize(900, 600);

constexpr char kNotDone[] =
    QT_TRANSLATE_NOOP("Messages", "The system has not enough memory or threads left for this.");

// The initial size, cut to what the screen can show together with the window's frame.
QSize initialSize(const QWidget& window)
{
    const int titleBarHeight = window.style()->pixelMetric(QStyle::PM_TitleBarHeight);
    return kInitialSize.boundedTo(window.screen()->availableSize() - QSize(0, titleBarHeight));
}

QAction* menuAction(QMenu* menu, const QString& text, const QString& objectName)
{
    QAction* action = menu->addAction(text);
    action->setObjectName(objectName);
    action->setMenuRole(QAction::NoRole);
    return action;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_watcher(new InotifyWatcher(this))
    , m_scanner(new DiscScanner(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(tr("Platterscope"));
    resize(initialSize(*this));
    setAcceptDrops(true);
    createMenus();
    createPages();
    loadStoredKey();
    applyEnableRule();
    QTimer::singleShot(0, this, &MainWindow::startUp);
    connectMonitor();
    setMonitoring(false, tr("Idle"));
}

bool MainWindow::hasKey() const
{
    return m_apiKeyAccepted && !m_scanner->apiKey().isEmpty();
}

void MainWindow::createMenus()
{
    QMenu* file = menuBar()->addMenu(tr("File"));
    m_openIsoAction = menuAction(file, tr("Open Disc ISO"), QStringLiteral("openDiscIsoAction"));
    m_openDirectoryAction =
        menuAction(file, tr("Open Disc Directory"), QStringLiteral("openDiscDirectoryAction"));
    QAction* quit = menuAction(file, tr("Quit"), QStringLiteral("quitAction"));

    QMenu* view = menuBar()->addMenu(tr("View"));
    m_titlesAction = menuAction(view, tr("Titles"), QStringLiteral("titlesAction"));
    m_configurationsAction = menuAction(view, tr("Configurations"), QStringLiteral("configurationsAction"));
    m_monitorAction = menuAction(view, tr("Blu-ray Access Monitor"), QStringLiteral("monitorAction"));
    for (QAction* action : {m_titlesAction, m_configurationsAction, m_monitorAction}) {
        action->setCheckable(true);
    }

    QMenu* help = menuBar()->addMenu(tr("Help"));
    QAction* key = menuAction(help, tr("API Key"), QStringLiteral("apiKeyAction"));
    QAction* library =
        menuAction(help, tr("Configuration Library"), QStringLiteral("configurationLibraryAction"));
    QAction* about = menuAction(help, tr("About"), QStringLiteral("aboutAction"));

    connect(m_openIsoAction, &QAction::triggered, this, &MainWindow::openDiscIso);
    connect(m_openDirectoryAction, &QAction::triggered, this, &MainWindow::openDiscDirectory);
    connect(quit, &QAction::triggered, this, &MainWindow::quitApplication);
    connect(m_titlesAction, &QAction::triggered, this, &MainWindow::showTitlesView);
    connect(m_configurationsAction, &QAction::triggered, this, &MainWindow::showConfigurationsView);
    connect(m_monitorAction, &QAction::triggered, this, &MainWindow::showMonitorView);
    connect(key, &QAction::triggered, this, &MainWindow::showApiKeyDialogSlot);
    connect(library, &QAction::triggered, this, &MainWindow::showConfigurationLibraryDialog);
    connect(about, &QAction::triggered, this, &MainWindow::showAboutDialog);
}

void MainWindow::createPages()
{
    m_pages = new QStackedWidget(this);
    m_pages->setObjectName(QStringLiteral("pages"));
    m_placeholderPage = new PlaceholderPage(m_pages);
    m_titlesPage = new TitlesPage(m_pages);
    m_configurationsPage = new ConfigurationsPage(m_result, m_pages);
    m_monitorPage = new MonitorPage(m_pages);
    m_pages->addWidget(m_placeholderPage);
    m_pages->addWidget(m_titlesPage);
    m_pages->addWidget(m_configurationsPage);
    m_pages->addWidget(m_monitorPage);
    setCentralWidget(m_pages);
    connect(m_placeholderPage, &PlaceholderPage::keyDialogRequested, this, &MainWindow::showApiKeyDialogSlot);
    connect(m_configurationsPage, &ConfigurationsPage::refreshRequested, this,
            &MainWindow::refreshConfigurations);
}

void MainWindow::applyEnableRule()
{
    const bool key = hasKey();
    m_openIsoAction->setEnabled(key);
    m_openDirectoryAction->setEnabled(key);
    m_titlesAction->setEnabled(key && m_discLoaded);
    m_configurationsAction->setEnabled(key && m_discLoaded);
    m_configurationsPage->setRefreshEnabled(key && m_discLoaded && m_result.ok != 0 && m_result.inDatabase);
    applyMonitorRule();
    m_placeholderPage->setHasKey(key);
    showPage(m_page);
}

void MainWindow::showPage(Page page)
{
    m_page = page;
    const Page shown = hasKey() ? page : Page::Placeholder;
    QWidget* widget = widgetOf(shown);
    const bool hasFocusAlready = m_pages->currentWidget() == widget && widget->isAncestorOf(focusWidget());
    m_pages->setCurrentWidget(widget);
    // Focuses the page's main widget; the toolkit would choose the first one.
    if (!hasFocusAlready) {
        shown == Page::Configurations ? m_configurationsPage->takeFocus() : widget->setFocus();
    }
    m_titlesAction->setChecked(shown == Page::Titles);
    m_configurationsAction->setChecked(shown == Page::Configurations);
    m_monitorAction->setChecked(shown == Page::Monitor);
}

QWidget* MainWindow::widgetOf(Page page) const
{
    switch (page) {
    case Page::Placeholder:
        break;
    case Page::Titles:
        return m_titlesPage;
    case Page::Configurations:
        return m_configurationsPage;
    case Page::Monitor:
        return m_monitorPage;
    }
    return m_placeholderPage;
}

void MainWindow::showTitlesView()
{
    showPage(Page::Titles);
}

void MainWindow::showConfigurationsView()
{
    showPage(Page::Configurations);
}

void MainWindow::showMonitorView()
{
    showPage(Page::Monitor);
}

void MainWindow::quitApplication()
{
    if (close()) { QApplication::quit(); }
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_working) {
        m_closeRequested = true;
        event->ignore();
        return;
    }
    stopMonitoring();
    event->accept();
}

void MainWindow::endWork()
{
    m_working = false;
    if (m_closeRequested) { QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection); }
}

void MainWindow::setNotDone(DiscScanResult& result)
{
    scan::setError(result, kNotDone);
}

void MainWindow::setNotDone(service::AuthenticationOutcome& outcome)
{
    outcome.error = kNotDone;
}
