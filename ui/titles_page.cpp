#include "ui/titles_page.h"

#include "text/title_text.h"
#include "ui/plain_text.h"
#include "ui/row_view.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTextEdit>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

namespace {

constexpr int kTypeColumn = 0;
constexpr int kDescriptionColumn = 1;

// How many rows the tree measures for the width of a column: all titles of a disc full of decoys, and some streams.
constexpr int kMeasuredRows = 2000;

// Role of a row's first column: the text of the details pane.
constexpr int kDetailsRole = Qt::UserRole;

// A row finds a stream by the language code of the disc too; summary() shows the language's name.
QString languageCode(const VideoStreamInfo& /*stream*/)
{
    return {};
}

template <typename Track>
QString languageCode(const Track& track)
{
    return track.language;
}

// A title's row. In "Description" it sorts by the title's duration. Titles of equal duration, and all titles if the
// tree is sorted by another column or not at all, keep the disc's order.
template <typename Title>
class TitleRow : public QTreeWidgetItem {
public:
    // `index` is the title's place on the disc.
    TitleRow(const Title& title, qsizetype index)
        : QTreeWidgetItem(
              {TitlesPage::tr("Title"), titletext::titleSummary(title.chapterCount, title.durationMs)})
        , m_title(title)
        , m_index(index)
    {}

    bool operator<(const QTreeWidgetItem& other) const override
    {
        const auto& otherRow = static_cast<const TitleRow&>(other);
        const int column = treeWidget()->sortColumn();
        if (column == kDescriptionColumn && m_title.durationMs != otherRow.m_title.durationMs) {
            return m_title.durationMs < otherRow.m_title.durationMs;
        }
        // A descending sort swaps the rows that it compares.
        const bool isDescending =
            column >= 0 && treeWidget()->header()->sortIndicatorOrder() == Qt::DescendingOrder;
        return isDescending ? m_index > otherRow.m_index : m_index < otherRow.m_index;
    }

    [[nodiscard]] QVariant data(int column, int role) const override
    {
        if (role == kDetailsRole) { return titletext::details(m_title); }
        return QTreeWidgetItem::data(column, role);
    }

private:
    Title m_title;
    qsizetype m_index;
};

// A stream's row. It makes its tool tip on demand: a disc of decoys has tens of thousands of streams.
template <typename Stream>
class StreamRow : public QTreeWidgetItem {
public:
    StreamRow(const QString& type, Stream stream, DiscType discType)
        : QTreeWidgetItem({type, titletext::summary(stream)})
        , m_stream(std::move(stream))
        , m_discType(discType)
    {}

    // Streams always keep the order of their lists: sorting is stable.
    bool operator<(const QTreeWidgetItem& /*other*/) const override { return false; }

    [[nodiscard]] QVariant data(int column, int role) const override
    {
        if (role == kDetailsRole) { return titletext::details(m_stream); }
        if (role == Qt::ToolTipRole) { return plaintext::toolTip(titletext::toolTip(m_stream, m_discType)); }
        if (role == kFindRole) { return languageCode(m_stream); }
        return QTreeWidgetItem::data(column, role);
    }

private:
    Stream m_stream;
    DiscType m_discType;
};

template <typename Stream>
void addStreamRows(QTreeWidgetItem* titleRow, const QString& type, const QList<Stream>& streams,
                   DiscType discType)
{
    for (const Stream& stream : streams) {
        titleRow->addChild(new StreamRow(type, stream, discType));
    }
}

template <typename Title>
QTreeWidgetItem* titleRow(const Title& title, qsizetype index, DiscType discType)
{
    auto* row = new TitleRow(title, index);
    addStreamRows(row, TitlesPage::tr("Video"), title.videoStreams, discType);
    addStreamRows(row, TitlesPage::tr("Audio"), title.audioTracks, discType);
    addStreamRows(row, TitlesPage::tr("Subtitle"), title.subtitleTracks, discType);
    return row;
}

// The index of the title that a user most likely wants: the first of those with the longest distinct play time. -1
// without titles.
template <typename Title>
int mainTitle(const QList<Title>& titles)
{
    const auto longest = std::max_element(titles.begin(), titles.end(), [](const Title& a, const Title& b) {
        return a.distinctDurationMs < b.distinctDurationMs;
    });
    return longest == titles.end() ? -1 : static_cast<int>(longest - titles.begin());
}

}  // namespace

TitlesPage::TitlesPage(QWidget* parent)
    : QSplitter(Qt::Horizontal, parent)
    , m_tree(new RowView<QTreeWidget>(this))
    , m_details(new QTextEdit(this))
    , m_growTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("titlesPage"));
    setChildrenCollapsible(false);
    setStretchFactor(0, 1);
    setStretchFactor(1, 2);
    setFocusProxy(m_tree);
    createTree();
    createDetails();
    connect(this, &QSplitter::splitterMoved, this, [this] { m_isDividedByUser = true; });
    // One measurement serves all titles that open at once.
    m_growTimer->setSingleShot(true);
    m_growTimer->setInterval(0);
    connect(m_tree, &QTreeWidget::itemExpanded, m_growTimer, qOverload<>(&QTimer::start));
    connect(m_growTimer, &QTimer::timeout, this, [this] {
        if (isVisible()) { fitTree(m_tree->width()); }
    });
}

void TitlesPage::createTree()
{
    m_tree->setObjectName(QStringLiteral("titlesTree"));
    m_tree->setAccessibleName(tr("Titles and streams of the disc"));
    m_tree->setHeaderLabels({tr("Type"), tr("Description")});
    m_tree->setRootIsDecorated(true);
    m_tree->setUniformRowHeights(true);
    // Long rows scroll; nothing is cut off.
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setResizeContentsPrecision(kMeasuredRows);
    m_tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_tree->header()->setSortIndicatorClearable(true);
    connect(m_tree->header(), &QHeaderView::sortIndicatorChanged, this, [this](int column) {
        // After a third click no column is the sort column. The tree would keep its order; sort() restores the disc's.
        if (column < 0) { m_tree->model()->sort(kTypeColumn); }
    });
    auto* copyDetails = new QAction(tr("Copy Details"), m_tree);
    copyDetails->setObjectName(QStringLiteral("copyDetailsAction"));
    connect(copyDetails, &QAction::triggered, this,
            [this] { QGuiApplication::clipboard()->setText(m_details->toPlainText()); });
    m_tree->addAction(copyDetails);
    auto* copySignature = new QAction(tr("Copy Signature"), m_tree);
    copySignature->setObjectName(QStringLiteral("copySignatureAction"));
    connect(copySignature, &QAction::triggered, this,
            [this] { QGuiApplication::clipboard()->setText(m_signature); });
    m_tree->addAction(copySignature);
}

void TitlesPage::createDetails()
{
    m_details->setObjectName(QStringLiteral("titleDetails"));
    m_details->setAccessibleName(tr("Details of the selected title or stream"));
    m_details->setReadOnly(true);
    m_details->setTabChangesFocus(true);
    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* current) {
        // Plain text always: names and codes come from the disc.
        m_details->setPlainText(current == nullptr ? QString()
                                                   : current->data(kTypeColumn, kDetailsRole).toString());
    });
}

void TitlesPage::showTitles(const DiscScanResult& result)
{
    m_tree->clear();
    m_details->clear();
    const bool isBluray = result.discType == DiscType::Bluray;
    m_signature =
        QString::fromLatin1((isBluray ? result.blurayPackageSha256 : result.dvdPackageSha256).toHex());
    QList<QTreeWidgetItem*> rows;
    for (const DvdTitleInfo& title : result.dvdTitles) {
        rows.append(titleRow(title, rows.size(), DiscType::Dvd));
    }
    for (const BlurayTitleInfo& title : result.blurayTitles) {
        QTreeWidgetItem* row = titleRow(title, rows.size(), DiscType::Bluray);
        row->setToolTip(kTypeColumn, plaintext::toolTip(titletext::label(title)));
        row->setToolTip(kDescriptionColumn, row->toolTip(kTypeColumn));
        row->setData(kTypeColumn, kFindRole, title.label);
        rows.append(row);
    }
    m_tree->setSortingEnabled(false);  // a sorted tree inserts each row before the ones already added
    m_tree->addTopLevelItems(rows);
    m_tree->header()->setSortIndicator(-1, Qt::AscendingOrder);
    m_tree->setSortingEnabled(true);
    m_tree->setCurrentItem(
        m_tree->topLevelItem(isBluray ? mainTitle(result.blurayTitles) : mainTitle(result.dvdTitles)));
    m_tree->scrollToItem(m_tree->currentItem());
    m_isFitPending = !rows.isEmpty();
    if (isVisible()) { fitPendingTree(); }
}

void TitlesPage::showEvent(QShowEvent* event)
{
    QSplitter::showEvent(event);
    fitPendingTree();
}

void TitlesPage::fitPendingTree()
{
    if (m_isFitPending) { fitTree(0); }
    m_isFitPending = false;
}

void TitlesPage::fitTree(int least)
{
    if (m_isDividedByUser) { return; }
    // Includes the scroll bar, which appears as soon as titles are opened.
    int needed = 2 * m_tree->frameWidth() + m_tree->verticalScrollBar()->sizeHint().width();
    for (const int column : {kTypeColumn, kDescriptionColumn}) {
        m_tree->resizeColumnToContents(column);
        needed += m_tree->columnWidth(column);
    }
    const int treeWidth = qMax(least, qMin(needed, window()->width() / 2));
    setSizes({treeWidth, width() - handleWidth() - treeWidth});
}
