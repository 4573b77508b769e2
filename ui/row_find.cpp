#include "ui/row_find.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QTreeView>

namespace {

enum class Branches { Open, All };

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

// The rows below `parent` in the order in which they are shown.
void appendRows(const QAbstractItemView& view, const QModelIndex& parent, Branches branches,
                QModelIndexList& rows)
{
    const auto* tree = qobject_cast<const QTreeView*>(&view);
    const QAbstractItemModel& model = *view.model();
    const int count = model.rowCount(parent);
    for (int i = 0; i < count; ++i) {
        const QModelIndex row = model.index(i, 0, parent);
        rows.append(row);
        if (tree != nullptr && (branches == Branches::All || tree->isExpanded(row))) {
            appendRows(view, row, branches, rows);
        }
    }
}

// The first row that has the text: from the current one on, or from the one behind it.
QModelIndex rowWith(const QAbstractItemView& view, Branches branches, const QString& text,
                    bool isBehindCurrent)
{
    QModelIndexList rows;
    appendRows(view, view.rootIndex(), branches, rows);
    const qsizetype current = rows.indexOf(view.currentIndex().siblingAtColumn(0));
    const qsizetype first = current < 0 ? 0 : current + (isBehindCurrent ? 1 : 0);
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const QModelIndex& row = rows.at((first + i) % rows.size());
        if (hasText(row, text)) { return row; }
    }
    return {};
}

}  // namespace

void RowFind::type(QAbstractItemView& view, const QString& typed)
{
    if (typed.isEmpty() || !typed.front().isPrint()) { return; }  // Escape and Tab type something, too
    const bool isAgain = !m_text.isEmpty() && m_text.count(typed) * typed.size() == m_text.size();
    const bool isPaused =
        m_sinceLastKey.isValid() && m_sinceLastKey.elapsed() >= QApplication::keyboardInputInterval();
    if (isPaused && !isAgain) { m_text.clear(); }
    if (m_text.isEmpty() && typed.front().isSpace()) { return; }  // which selects the current row
    m_text += typed;
    m_sinceLastKey.start();

    const QString& wanted = isAgain ? typed : m_text;
    for (const Branches branches : {Branches::Open, Branches::All}) {
        const QModelIndex row = rowWith(view, branches, wanted, isAgain);
        if (!row.isValid()) { continue; }
        view.setCurrentIndex(row);
        view.scrollTo(row);  // opens the branches that it is in
        return;
    }
}
