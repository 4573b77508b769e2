#include "ui/configuration_list_page.h"

#include "ui/configuration_text.h"
#include "ui/push_button.h"
#include "ui/readable_palette.h"
#include "ui/row_view.h"

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int kNameColumn = 0;

// How many rows the list measures for the width of a column. To measure 1,000 rows of long texts, the toolkit's
// default, took most of a second.
constexpr int kMeasuredRows = 100;

// A longer word in the header does not widen the window.
constexpr int kHeaderWordCharacters = 40;

// Roles of a row's first column: the configuration's index in the result, and its uid.
constexpr int kIndexRole = Qt::UserRole;
constexpr int kUidRole = Qt::UserRole + 1;

qsizetype indexOf(const QTreeWidgetItem& row)
{
    return row.data(kNameColumn, kIndexRole).toLongLong();
}

qint64 uidOf(const QTreeWidgetItem* row)
{
    return row == nullptr ? 0 : row->data(kNameColumn, kUidRole).toLongLong();
}

// A row that sorts by the rules of the user's locale. Rows of equal text keep the service's order in both directions.
class ConfigurationRow : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int column = treeWidget()->sortColumn();
        const int order = QString::localeAwareCompare(text(column), other.text(column));
        if (order != 0) { return order < 0; }
        const bool isAscending = treeWidget()->header()->sortIndicatorOrder() == Qt::AscendingOrder;
        return isAscending ? indexOf(*this) < indexOf(other) : indexOf(*this) > indexOf(other);
    }
};

// A label that wraps. A long word does not widen the window but is cut off at the label's edge.
class WrappingLabel : public QLabel {
public:
    WrappingLabel() { setWordWrap(true); }

    [[nodiscard]] QSize minimumSizeHint() const override
    {
        const int widest = kHeaderWordCharacters * fontMetrics().averageCharWidth();
        const QSize hint = QLabel::minimumSizeHint();
        return {qMin(hint.width(), widest), hint.height()};
    }
};

// A label whose only link has the focus whenever the label has. In a QLabel the link needs a second Tab, and Shift+Tab
// never leaves the label.
class LinkLabel : public QLabel {
protected:
    void focusInEvent(QFocusEvent* event) override
    {
        QLabel::focusInEvent(event);
        if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
            QLabel::focusNextPrevChild(true);
        }
    }
    bool focusNextPrevChild(bool next) override
    {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): QLabel's version would keep the focus
        return QWidget::focusNextPrevChild(next);
    }
};

}  // namespace

ConfigurationListPage::ConfigurationListPage(const DiscScanResult& disc, QWidget* parent)
    : QWidget(parent)
    , m_disc(disc)
    , m_discLabel(new WrappingLabel)
    , m_linkLabel(new LinkLabel)
    , m_viewButton(pushButton(tr("View"), QStringLiteral("viewConfigurationButton")))
    , m_refreshButton(pushButton(tr("Refresh"), QStringLiteral("refreshConfigurationsButton")))
    , m_list(new RowView<QTreeWidget>)
{
    setObjectName(QStringLiteral("configurationListPage"));
    setFocusProxy(m_list);
    createHeader();
    createList();

    auto* top = new QHBoxLayout;
    const int margin = style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing);
    top->setContentsMargins(margin, margin, margin, 0);
    top->addWidget(m_discLabel);
    top->addWidget(m_linkLabel, 1);
    top->addWidget(m_viewButton);
    top->addWidget(m_refreshButton);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(m_list);
    showHeader();
}

void ConfigurationListPage::createHeader()
{
    m_discLabel->setObjectName(QStringLiteral("configurationDiscLabel"));
    m_discLabel->setTextFormat(Qt::PlainText);
    m_linkLabel->setObjectName(QStringLiteral("newConfigurationLink"));
    m_linkLabel->setTextFormat(Qt::RichText);
    m_linkLabel->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse |
                                         Qt::LinksAccessibleByKeyboard);
    m_linkLabel->setOpenExternalLinks(true);
    m_linkLabel->setPalette(withReadableLinks(palette()));
    m_viewButton->setEnabled(false);
    m_viewButton->setToolTip(tr("View the selected configuration"));
    m_refreshButton->setToolTip(tr("Reload configurations from Tessera after updating them on the website"));
    connect(m_viewButton, &QPushButton::clicked, this, [this] { requestView(m_list->currentItem()); });
    connect(m_refreshButton, &QPushButton::clicked, this, &ConfigurationListPage::refreshRequested);
}

void ConfigurationListPage::createList()
{
    m_list->setObjectName(QStringLiteral("configurationList"));
    m_list->setAccessibleName(tr("Configurations of the disc"));
    m_list->setHeaderLabels({tr("Name"), tr("Language"), tr("Added By")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(kNameColumn, Qt::AscendingOrder);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setResizeContentsPrecision(kMeasuredRows);
    m_list->header()->setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    // Not itemActivated(): on some desktops one click activates a row, so none could be selected.
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &ConfigurationListPage::requestView);
    m_list->installEventFilter(this);
    connect(m_list, &QTreeWidget::currentItemChanged, this,
            [this](const QTreeWidgetItem* current) { m_viewButton->setEnabled(current != nullptr); });
}

bool ConfigurationListPage::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            requestView(m_list->currentItem());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ConfigurationListPage::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) { m_linkLabel->setPalette(withReadableLinks(palette())); }
    QWidget::changeEvent(event);
}

void ConfigurationListPage::showDisc()
{
    const QTreeWidgetItem* current = m_list->currentItem();
    const qint64 uid = uidOf(current);
    const bool isSelected = current != nullptr && current->isSelected();
    showHeader();
    showRows();
    keepCurrentRow(uid, isSelected);
}

void ConfigurationListPage::setRefreshEnabled(bool enabled)
{
    m_refreshButton->setEnabled(enabled);
}

void ConfigurationListPage::showHeader()
{
    m_discLabel->setText(configurationtext::header(m_disc));
    const QString url = m_disc.newDiscUrl.toHtmlEscaped();
    const QString text = url.isEmpty() ? tr("(No Tessera URL available)") : tr("New Configuration");
    m_linkLabel->setText(url.isEmpty() ? text : QStringLiteral("<a href=\"%1\">%2</a>").arg(url, text));
    m_linkLabel->setAccessibleName(text);
    m_linkLabel->setFocusPolicy(url.isEmpty() ? Qt::ClickFocus : Qt::StrongFocus);
}

void ConfigurationListPage::showRows()
{
    m_list->clear();
    QList<QTreeWidgetItem*> rows;
    rows.reserve(m_disc.configurations.size());
    for (const service::DiscConfiguration& configuration : m_disc.configurations) {
        auto* row = new ConfigurationRow(QStringList{configurationtext::name(configuration),
                                                     configurationtext::language(configuration),
                                                     configurationtext::addedBy(configuration)});
        row->setData(kNameColumn, kIndexRole, rows.size());
        row->setData(kNameColumn, kUidRole, configuration.uid);
        rows.append(row);
    }
    m_list->setSortingEnabled(false);  // a sorted list inserts each row by a search of its own
    m_list->addTopLevelItems(rows);
    m_list->setSortingEnabled(true);
}

void ConfigurationListPage::keepCurrentRow(qint64 uid, bool isSelected)
{
    for (QTreeWidgetItemIterator row(m_list); uid != 0 && *row != nullptr; ++row) {
        if (uidOf(*row) != uid) { continue; }
        m_list->setCurrentItem(*row, kNameColumn,
                               isSelected ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                                          : QItemSelectionModel::NoUpdate);
        break;
    }
    // QTreeWidget::clear() does not emit currentItemChanged().
    m_viewButton->setEnabled(m_list->currentItem() != nullptr);
}

void ConfigurationListPage::requestView(const QTreeWidgetItem* row)
{
    if (row != nullptr) { Q_EMIT viewRequested(indexOf(*row)); }
}
