#include "ui/configuration_list_page.h"

#include "ui/configuration_text.h"
#include "ui/disabled_button.h"
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

// So many rows are measured for the width of a column; a thousand, the toolkit's own number, of long texts took
// most of a second.
constexpr int kMeasuredRows = 100;

// A word of the header that is longer than this does not widen the window.
constexpr int kHeaderWordCharacters = 40;

// A row remembers its configuration's place in the result, since the view sorts.
constexpr int kIndexRole = Qt::UserRole;

qsizetype indexOf(const QTreeWidgetItem& row)
{
    return row.data(kNameColumn, kIndexRole).toLongLong();
}

// A row in the user's alphabet; rows of equal text stand in the service's order, in either direction.
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

// A label that wraps. One long word does not widen the window; it is cut off at the label's edge.
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

// A label whose one link has the focus when the label has: the toolkit's takes a second Tab to come to the link, and
// holds a Shift+Tab for ever.
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
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): it is QLabel's that holds the focus
        return QWidget::focusNextPrevChild(next);
    }
};

}  // namespace

ConfigurationListPage::ConfigurationListPage(QWidget* parent)
    : QWidget(parent)
    , m_discLabel(new WrappingLabel)
    , m_linkLabel(new LinkLabel)
    , m_viewButton(disabledButton(tr("View"), QStringLiteral("viewConfigurationButton")))
    , m_refreshButton(disabledButton(tr("Refresh"), QStringLiteral("refreshConfigurationsButton")))
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
    // Not the toolkit's activation: on some desktops one click would do, and no row could be selected.
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

void ConfigurationListPage::showDisc(const DiscScanResult& disc)
{
    const QTreeWidgetItem* current = m_list->currentItem();
    const qint64 uid = uidOf(current);
    const bool isSelected = current != nullptr && current->isSelected();
    m_disc = disc;
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
    for (const service::DiscConfiguration& configuration : std::as_const(m_disc.configurations)) {
        auto* row = new ConfigurationRow(QStringList{configurationtext::name(configuration),
                                                     configurationtext::language(configuration),
                                                     configurationtext::addedBy(configuration)});
        row->setData(kNameColumn, kIndexRole, rows.size());
        rows.append(row);
    }
    m_list->setSortingEnabled(false);  // else each row would be put in its place by itself
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
    // A list that is cleared says nothing about its current row.
    m_viewButton->setEnabled(m_list->currentItem() != nullptr);
}

void ConfigurationListPage::requestView(const QTreeWidgetItem* row)
{
    if (row != nullptr) { Q_EMIT viewRequested(indexOf(*row)); }
}

qint64 ConfigurationListPage::uidOf(const QTreeWidgetItem* row) const
{
    return row == nullptr ? 0 : m_disc.configurations.at(indexOf(*row)).uid;
}
