#include "ui/configurations_page.h"

#include "ui/disabled_button.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTextEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

ConfigurationsPage::ConfigurationsPage(QWidget* parent)
    : QStackedWidget(parent)
{
    setObjectName(QStringLiteral("configurationsPage"));
    addWidget(createListPage());
    addWidget(createDetailPage());
}

QWidget* ConfigurationsPage::createListPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("configurationListPage"));

    auto* discLabel = new QLabel;
    discLabel->setObjectName(QStringLiteral("configurationDiscLabel"));
    discLabel->setTextFormat(Qt::PlainText);
    auto* linkLabel = new QLabel;
    linkLabel->setObjectName(QStringLiteral("newConfigurationLink"));
    linkLabel->setAccessibleName(tr("New Configuration"));
    linkLabel->setTextFormat(Qt::RichText);
    linkLabel->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse |
                                       Qt::LinksAccessibleByKeyboard);
    linkLabel->setOpenExternalLinks(true);
    auto* viewButton = disabledButton(tr("View"), QStringLiteral("viewConfigurationButton"));
    viewButton->setToolTip(tr("View the selected configuration"));
    auto* refreshButton = disabledButton(tr("Refresh"), QStringLiteral("refreshConfigurationsButton"));
    refreshButton->setToolTip(tr("Reload configurations from Tessera after updating them on the website"));

    auto* list = new QTreeWidget;
    list->setObjectName(QStringLiteral("configurationList"));
    list->setAccessibleName(tr("Configurations of the disc"));
    list->setHeaderLabels({tr("Name"), tr("Language"), tr("Added By")});
    list->setRootIsDecorated(false);
    list->setSortingEnabled(true);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);

    auto* top = new QHBoxLayout;
    top->addWidget(discLabel);
    top->addWidget(linkLabel, 1);
    top->addWidget(viewButton);
    top->addWidget(refreshButton);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(list);
    return page;
}

QWidget* ConfigurationsPage::createDetailPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("configurationDetailPage"));

    auto* tree = new QTreeWidget;
    tree->setObjectName(QStringLiteral("configurationTree"));
    tree->setAccessibleName(tr("Titles of the configuration"));
    tree->setHeaderLabels({tr("File"), tr("Title Number")});
    tree->setRootIsDecorated(true);
    tree->header()->setStretchLastSection(false);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    auto* details = new QTextEdit;
    details->setObjectName(QStringLiteral("configurationDetails"));
    details->setAccessibleName(tr("Details of the selected title"));
    details->setReadOnly(true);
    details->setTabChangesFocus(true);

    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName(QStringLiteral("configurationSplitter"));
    splitter->addWidget(tree);
    splitter->addWidget(details);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 2);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(disabledButton(tr("Configuration List"), QStringLiteral("configurationListButton")));
    layout->addWidget(splitter);
    return page;
}
