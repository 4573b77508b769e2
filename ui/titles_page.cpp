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

// So many rows are measured for the width of a column: all titles of a disc full of decoys, some streams with them.
constexpr int kMeasuredRows = 2000;

// A stream's row remembers which list it stands for and its place in it; a title's row is its place in the
// tree.
constexpr int kStreamKindRole = Qt::UserRole;
constexpr int kIndexRole = Qt::UserRole + 1;

enum class StreamKind { Video, Audio, Subtitle };

// The language as the disc has it, by which a row is found beside its name in words.
QString languageCode(const VideoStreamInfo& /*stream*/)
{
    return {};
}

template <typename Track>
QString languageCode(const Track& track)
{
    return track.language;
}

// A title's row. In "Description" it sorts by the title's duration. Titles of equal duration, and all titles if the tree
// is sorted by another column or not at all, keep the disc's order.
class TitleRow : public QTreeWidgetItem {
public:
    TitleRow(const QStringList& texts, quint64 durationMs)
        : QTreeWidgetItem(texts)
        , m_durationMs(durationMs)
    {}

    bool operator<(const QTreeWidgetItem& other) const override
    {
        const auto& otherTitle = static_cast<const TitleRow&>(other);
        const int column = treeWidget()->sortColumn();
        if (column == kDescriptionColumn && m_durationMs != otherTitle.m_durationMs) {
            return m_durationMs < otherTitle.m_durationMs;
        }
        const qint64 place = data(kTypeColumn, kIndexRole).toLongLong();
        const qint64 otherPlace = other.data(kTypeColumn, kIndexRole).toLongLong();
        // A descending sort swaps the rows that it compares.
        const bool isDescending =
            column >= 0 && treeWidget()->header()->sortIndicatorOrder() == Qt::DescendingOrder;
        return isDescending ? place > otherPlace : place < otherPlace;
    }

private:
    quint64 m_durationMs;
};

// A stream's row. Its tool tip is made when it is asked for: a disc of decoys has tens of thousands of streams.
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
        if (role == Qt::ToolTipRole) { return plaintext::toolTip(titletext::toolTip(m_stream, m_discType)); }
        if (role == kFindRole) { return languageCode(m_stream); }
        return QTreeWidgetItem::data(column, role);
    }

private:
    Stream m_stream;
    DiscType m_discType;
};

template <typename Stream>
void addStreamRows(QTreeWidgetItem* titleRow, const QString& type, StreamKind kind,
                   const QList<Stream>& streams, DiscType discType)
{
    for (qsizetype i = 0; i < streams.size(); ++i) {
        auto* row = new StreamRow(type, streams.at(i), discType);
        row->setData(kTypeColumn, kStreamKindRole, static_cast<int>(kind));
        row->setData(kTypeColumn, kIndexRole, i);
        titleRow->addChild(row);
    }
}

template <typename Title>
QTreeWidgetItem* titleRow(const Title& title, qsizetype index, DiscType discType)
{
    auto* row =
        new TitleRow({TitlesPage::tr("Title"), titletext::titleSummary(title.chapterCount, title.durationMs)},
                     title.durationMs);
    row->setData(kTypeColumn, kIndexRole, index);
    addStreamRows(row, TitlesPage::tr("Video"), StreamKind::Video, title.videoStreams, discType);
    addStreamRows(row, TitlesPage::tr("Audio"), StreamKind::Audio, title.audioTracks, discType);
    addStreamRows(row, TitlesPage::tr("Subtitle"), StreamKind::Subtitle, title.subtitleTracks, discType);
    return row;
}

// The place of the title that a user most likely wants: the one with the longest distinct play time, and of equally long
// ones the first. -1 if there is none.
template <typename Title>
int mainTitle(const QList<Title>& titles)
{
    const auto longest = std::max_element(titles.begin(), titles.end(), [](const Title& a, const Title& b) {
        return a.distinctDurationMs < b.distinctDurationMs;
    });
    return longest == titles.end() ? -1 : static_cast<int>(longest - titles.begin());
}

template <typename Title>
QString streamDetails(const Title& title, const QTreeWidgetItem& row)
{
    const auto index = row.data(kTypeColumn, kIndexRole).toLongLong();
    switch (static_cast<StreamKind>(row.data(kTypeColumn, kStreamKindRole).toInt())) {
    case StreamKind::Video:
        return titletext::details(title.videoStreams.at(index));
    case StreamKind::Audio:
        return titletext::details(title.audioTracks.at(index));
    case StreamKind::Subtitle:
        return titletext::details(title.subtitleTracks.at(index));
    }
    return {};
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
    // Many titles may open at once; the rows are measured once for all of them.
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
        // A third click leaves no column to sort by. The tree would keep its order; the rows sort by their places.
        if (column < 0) { m_tree->model()->sort(kTypeColumn); }
    });
    auto* copyDetails = new QAction(tr("Copy Details"), m_tree);
    copyDetails->setObjectName(QStringLiteral("copyDetailsAction"));
    connect(copyDetails, &QAction::triggered, this,
            [this] { QGuiApplication::clipboard()->setText(m_details->toPlainText()); });
    m_tree->addAction(copyDetails);
    auto* copySignature = new QAction(tr("Copy Signature"), m_tree);
    copySignature->setObjectName(QStringLiteral("copySignatureAction"));
    connect(copySignature, &QAction::triggered, this, [this] {
        const bool isBluray = m_result.discType == DiscType::Bluray;
        const QByteArray& sha256 = isBluray ? m_result.blurayPackageSha256 : m_result.dvdPackageSha256;
        QGuiApplication::clipboard()->setText(QString::fromLatin1(sha256.toHex()));
    });
    m_tree->addAction(copySignature);
}

void TitlesPage::createDetails()
{
    m_details->setObjectName(QStringLiteral("titleDetails"));
    m_details->setAccessibleName(tr("Details of the selected title or stream"));
    m_details->setReadOnly(true);
    m_details->setTabChangesFocus(true);
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            [this](const QTreeWidgetItem* current) { showDetails(current); });
}

void TitlesPage::showTitles(const DiscScanResult& result)
{
    m_tree->clear();
    m_details->clear();
    m_result = result;
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
    m_tree->setCurrentItem(m_tree->topLevelItem(
        result.discType == DiscType::Bluray ? mainTitle(result.blurayTitles) : mainTitle(result.dvdTitles)));
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
    // The scroll bar is included: it appears as soon as titles are opened.
    int needed = 2 * m_tree->frameWidth() + m_tree->verticalScrollBar()->sizeHint().width();
    for (const int column : {kTypeColumn, kDescriptionColumn}) {
        m_tree->resizeColumnToContents(column);
        needed += m_tree->columnWidth(column);
    }
    const int treeWidth = qMax(least, qMin(needed, window()->width() / 2));
    setSizes({treeWidth, width() - handleWidth() - treeWidth});
}

void TitlesPage::showDetails(const QTreeWidgetItem* item)
{
    // Plain text always: names and codes come from the disc.
    m_details->setPlainText(item == nullptr ? QString() : detailsOf(*item));
}

QString TitlesPage::detailsOf(const QTreeWidgetItem& item) const
{
    const bool isTitle = item.parent() == nullptr;
    const QTreeWidgetItem& titleItem = isTitle ? item : *item.parent();
    const auto detailsIn = [&](const auto& titles) {
        const auto& title = titles.at(titleItem.data(kTypeColumn, kIndexRole).toLongLong());
        return isTitle ? titletext::details(title) : streamDetails(title, item);
    };
    return m_result.discType == DiscType::Bluray ? detailsIn(m_result.blurayTitles)
                                                 : detailsIn(m_result.dvdTitles);
}
