#include "ui/monitor_page.h"

#include "ui/disabled_button.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

// A label over two tabs, one list for playlists and one for segments.
QVBoxLayout* fileLists(const QString& heading, const QString& objectNamePrefix)
{
    auto* tabs = new QTabWidget;
    tabs->setObjectName(objectNamePrefix + QStringLiteral("Tabs"));
    tabs->setAccessibleName(heading);
    tabs->tabBar()->setObjectName(objectNamePrefix + QStringLiteral("TabBar"));
    tabs->tabBar()->setAccessibleName(heading);
    const auto addList = [&](const QString& title, const QString& objectName) {
        auto* list = new QListWidget;
        list->setObjectName(objectNamePrefix + objectName);
        list->setAccessibleName(heading + QStringLiteral(": ") + title);
        tabs->addTab(list, title);
    };
    addList(MonitorPage::tr("Playlists (.mpls)"), QStringLiteral("PlaylistList"));
    addList(MonitorPage::tr("Segments (.m2ts)"), QStringLiteral("SegmentList"));
    tabs->setCurrentIndex(0);

    auto* column = new QVBoxLayout;
    column->addWidget(new QLabel(heading));
    column->addWidget(tabs);
    return column;
}

}  // namespace

MonitorPage::MonitorPage(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("monitorPage"));

    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel(tr("Blu-ray Access Monitor")));
    header->addStretch();
    header->addWidget(disabledButton(tr("Start"), QStringLiteral("startMonitoringButton")));
    header->addWidget(disabledButton(tr("Stop"), QStringLiteral("stopMonitoringButton")));
    header->addWidget(disabledButton(tr("Clear All"), QStringLiteral("clearMonitorButton")));

    auto* columns = new QHBoxLayout;
    columns->addLayout(fileLists(tr("Open/Close Events"), QStringLiteral("event")), 2);
    columns->addLayout(fileLists(tr("Currently Open Files"), QStringLiteral("openFile")), 1);

    auto* status = new QLabel(tr("Idle"));
    status->setObjectName(QStringLiteral("monitorStatusLabel"));
    status->setTextFormat(Qt::PlainText);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(header);
    layout->addLayout(columns);
    layout->addWidget(status);
}
