#include "ui/row_find.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QTreeView>

namespace {

bool hasText(const QModelIndex& row, const QString& text)
{
    const auto contains = [&text](const QVariant& value) {
        return value.toString().contains(text, Qt::CaseInsensitive);
    };
    const int columns = row.model()->columnCount(row.parent());
    for (int column = 0; column < columns; ++column) {
        if (contains(row.siblingAtColumn(column).data())) { return true; }
    }
    return contains(row.data(kFindRole));
}

// Whether no branch hides the row. Trees have two levels.
bool isInOpenBranch(const QAbstractItemView& view, const QModelIndex& row)
{
    const auto* tree = qobject_cast<const QTreeView*>(&view);
    return tree == nullptr || !row.parent().isValid() || tree->isExpanded(row.parent());
}

// The row that `text` selects; invalid without a match. Searches from the current row or, if `skipsCurrent`, from the
// row after it.
QModelIndex matchingRow(const QAbstractItemView& view, const QString& text, bool skipsCurrent)
{
    const QAbstractItemModel& model = *view.model();
    // Every text contains the empty one, so these are all rows, in the order of the view.
    const QModelIndexList rows = model.match(model.index(0, 0), Qt::DisplayRole, QString(), -1,
                                             Qt::MatchContains | Qt::MatchRecursive);
    const qsizetype current = rows.indexOf(view.currentIndex().siblingAtColumn(0));
    const qsizetype first = current < 0 ? 0 : current + (skipsCurrent ? 1 : 0);
    QModelIndex hidden;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const QModelIndex& row = rows.at((first + i) % rows.size());
        if (!hasText(row, text)) { continue; }
        if (isInOpenBranch(view, row)) { return row; }
        if (!hidden.isValid()) { hidden = row; }
    }
    return hidden;
}

}  // namespace

void RowFind::type(QAbstractItemView& view, const QString& typed)
{
    if (typed.isEmpty() || !typed.front().isPrint()) { return; }  // Escape and Tab have texts too
    const bool isRepeated = !m_text.isEmpty() && m_text.count(typed) * typed.size() == m_text.size();
    const bool isPaused =
        m_sinceLastKey.isValid() && m_sinceLastKey.elapsed() >= QApplication::keyboardInputInterval();
    if (isPaused && !isRepeated) { m_text.clear(); }
    if (m_text.isEmpty() && typed.front().isSpace()) { return; }  // the space bar selects the current row
    m_text += typed;
    m_sinceLastKey.start();

    const QModelIndex row = matchingRow(view, isRepeated ? typed : m_text, isRepeated);
    if (!row.isValid()) { return; }
    view.setCurrentIndex(row);
    view.scrollTo(row);  // opens the branches above the row
}
