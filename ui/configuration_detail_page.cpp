#include "ui/configuration_detail_page.h"

#include "ui/configuration_text.h"
#include "ui/push_button.h"
#include "ui/row_view.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QSplitter>
#include <QTextEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

ConfigurationDetailPage::ConfigurationDetailPage(const DiscScanResult& disc, QWidget* parent)
    : QWidget(parent)
    , m_disc(disc)
    , m_tree(new RowView<QTreeWidget>)
    , m_details(new QTextEdit)
{
    setObjectName(QStringLiteral("configurationDetailPage"));
    auto* listButton = pushButton(tr("Configuration List"), QStringLiteral("configurationListButton"));
    connect(listButton, &QPushButton::clicked, this, &ConfigurationDetailPage::listRequested);

    createTree();
    m_details->setObjectName(QStringLiteral("configurationDetails"));
    m_details->setAccessibleName(tr("Details of the selected title"));
    m_details->setReadOnly(true);
    m_details->setTabChangesFocus(true);

    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName(QStringLiteral("configurationSplitter"));
    splitter->addWidget(m_tree);
    splitter->addWidget(m_details);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 2);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(listButton);
    layout->addWidget(splitter, 1);
}

void ConfigurationDetailPage::createTree()
{
    m_tree->setObjectName(QStringLiteral("configurationTree"));
    m_tree->setAccessibleName(tr("Titles of the configuration"));
    m_tree->setHeaderLabels({tr("File"), tr("Title Number")});
    m_tree->setRootIsDecorated(true);
    m_tree->setUniformRowHeights(true);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            [this](const QTreeWidgetItem* current) { showDetails(current); });
}

void ConfigurationDetailPage::takeFocus()
{
    m_tree->setFocus();
}

void ConfigurationDetailPage::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT listRequested();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void ConfigurationDetailPage::showConfiguration(qsizetype index)
{
    m_tree->clear();
    m_configuration = m_disc.configurations.at(index);
    const bool isBluray = m_disc.discType == DiscType::Bluray;
    m_tree->headerItem()->setText(1, isBluray ? tr("Playlist ID") : tr("Title Number"));
    QList<QTreeWidgetItem*> rows;
    rows.reserve(m_configuration.titles.size());
    for (const service::ConfigurationTitle& title : std::as_const(m_configuration.titles)) {
        rows.append(new QTreeWidgetItem({configurationtext::titleName(title), QString::number(title.id)}));
    }
    m_tree->addTopLevelItems(rows);
    m_details->clear();
    m_tree->setCurrentItem(m_tree->topLevelItem(0));
    takeFocus();
}

void ConfigurationDetailPage::showDetails(const QTreeWidgetItem* row)
{
    if (row == nullptr) { return; }
    const service::ConfigurationTitle& title = m_configuration.titles.at(m_tree->indexFromItem(row).row());
    // Plain text always: notes and paths come from other users.
    m_details->setPlainText(configurationtext::details(title, m_configuration, m_disc));
}
