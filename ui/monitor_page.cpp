#include "ui/monitor_page.h"

#include "ui/push_button.h"
#include "ui/row_view.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

QListWidget* addList(QTabWidget* tabs, const QString& title, const QString& objectName)
{
    auto* list = new RowView<QListWidget>;
    list->setObjectName(objectName);
    list->setAccessibleName(tabs->accessibleName() + QStringLiteral(": ") + title);
    list->setUniformItemSizes(true);
    tabs->addTab(list, title);
    return list;
}

// Adds a column with a heading and, below it, an empty tab widget.
QTabWidget* addTabs(QHBoxLayout* columns, int stretch, const QString& heading,
                    const QString& objectNamePrefix)
{
    auto* tabs = new QTabWidget;
    tabs->setObjectName(objectNamePrefix + QStringLiteral("Tabs"));
    tabs->setAccessibleName(heading);
    tabs->setUsesScrollButtons(false);  // shows both tabs in full on small screens too
    tabs->setElideMode(Qt::ElideNone);
    tabs->tabBar()->setObjectName(objectNamePrefix + QStringLiteral("TabBar"));
    tabs->tabBar()->setAccessibleName(heading);
    auto* column = new QVBoxLayout;
    auto* label = new QLabel(heading);
    label->setBuddy(tabs);
    column->addWidget(label);
    column->addWidget(tabs);
    columns->addLayout(column, stretch);
    return tabs;
}

}  // namespace

MonitorPage::MonitorPage(QWidget* parent)
    : QWidget(parent)
    , m_status(new QLabel)
    , m_startButton(pushButton(tr("Start"), QStringLiteral("startMonitoringButton")))
    , m_stopButton(pushButton(tr("Stop"), QStringLiteral("stopMonitoringButton")))
    , m_clearButton(pushButton(tr("Clear All"), QStringLiteral("clearMonitorButton")))
{
    setObjectName(QStringLiteral("monitorPage"));
    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel(tr("Blu-ray Access Monitor")));
    header->addStretch();
    header->addWidget(m_startButton);
    header->addWidget(m_stopButton);
    header->addWidget(m_clearButton);
    connect(m_startButton, &QPushButton::clicked, this, &MonitorPage::startRequested);
    connect(m_stopButton, &QPushButton::clicked, this, &MonitorPage::stopRequested);
    connect(m_clearButton, &QPushButton::clicked, this, &MonitorPage::clearRequested);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(header);
    createLists();
    layout->addWidget(m_status);
    m_status->setObjectName(QStringLiteral("monitorStatusLabel"));
    m_status->setTextFormat(Qt::PlainText);
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);  // a long path widens no window
}

void MonitorPage::createLists()
{
    auto* columns = new QHBoxLayout;
    auto* events = addTabs(columns, 2, tr("Open/Close Events"), QStringLiteral("event"));
    auto* openFiles = addTabs(columns, 1, tr("Currently Open Files"), QStringLiteral("openFile"));
    const auto fill = [this](QTabWidget* tabs, const QString& prefix, auto member, auto chosen) {
        const auto add = [&](Lists& lists, const QString& title, const QString& name) {
            QListWidget* list = addList(tabs, title, prefix + name);
            lists.*member = list;
            connect(list, &QListWidget::itemClicked, this, chosen);
            connect(list, &QListWidget::itemActivated, this, chosen);
        };
        add(m_playlists, tr("Playlists (.mpls)"), QStringLiteral("PlaylistList"));
        add(m_segments, tr("Segments (.m2ts)"), QStringLiteral("SegmentList"));
        tabs->setCurrentIndex(0);
    };
    fill(events, QStringLiteral("event"), &Lists::events, &MonitorPage::eventChosen);
    fill(openFiles, QStringLiteral("openFile"), &Lists::openFiles, &MonitorPage::openFileChosen);
    static_cast<QVBoxLayout*>(layout())->addLayout(columns);
}

void MonitorPage::addEvent(Files files, const QString& line)
{
    lists(files).events->addItem(line);
    lists(files).hasNewEvents = true;
    updateLater(lists(files));
}

void MonitorPage::showOpenFiles(Files files, const QSet<QString>& paths)
{
    lists(files).openPaths = paths;
    lists(files).hasNewOpenPaths = true;
    updateLater(lists(files));
}

void MonitorPage::clearLists()
{
    for (Lists* each : {&m_playlists, &m_segments}) {
        each->events->clear();
        each->openFiles->clear();
        each->openPaths.clear();
    }
}

void MonitorPage::setStatus(const QString& status)
{
    m_status->setText(status);
}

void MonitorPage::setControls(bool canStart, bool canStop, bool canClear)
{
    // Moves the focus from Start to Stop and back. Otherwise a disabled button would pass it to the next widget.
    const QWidget* focused = window()->focusWidget();
    const bool isAtControl = focused == m_startButton || focused == m_stopButton;
    m_startButton->setEnabled(canStart);
    m_stopButton->setEnabled(canStop);
    m_clearButton->setEnabled(canClear);
    setFocusProxy(canStop ? m_stopButton : m_startButton);
    if (isAtControl) { setFocus(); }
}

MonitorPage::Lists& MonitorPage::lists(Files files)
{
    return files == Files::Playlists ? m_playlists : m_segments;
}

void MonitorPage::updateLater(Lists& outdated)
{
    if (std::exchange(outdated.isUpdatePending, true)) { return; }
    QMetaObject::invokeMethod(
        this, [this, &outdated] { update(outdated); }, Qt::QueuedConnection);
}

void MonitorPage::update(Lists& outdated)
{
    outdated.isUpdatePending = false;
    if (std::exchange(outdated.hasNewEvents, false)) { outdated.events->scrollToBottom(); }
    if (!std::exchange(outdated.hasNewOpenPaths, false)) { return; }
    QStringList names;
    for (const QString& path : std::as_const(outdated.openPaths)) {
        names.append(QFileInfo(path).fileName());
    }
    outdated.openFiles->clear();
    outdated.openFiles->addItems(names);
}
