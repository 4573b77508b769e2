// The trees and lists of this program: rows are found by typing, and copied by Ctrl+C or from a menu.
#pragma once

#include "ui/row_find.h"

#include <QWidget>

class QAbstractItemView;
class QContextMenuEvent;
class QKeyEvent;

namespace rowview {

// Gives the view an action that copies its current row: "Copy".
void addCopyAction(QAbstractItemView& view);

// Whether the key was one of those that copy the row, ask for the menu, or (Escape) are for the page to answer.
[[nodiscard]] bool handleKey(QAbstractItemView& view, QKeyEvent& event);

// Shows the view's actions as a menu: at the row that was clicked, or below the current row when a key asked for it.
// No row, no menu.
void showMenu(QAbstractItemView& view, QContextMenuEvent& event);

}  // namespace rowview

// A QTreeWidget or QListWidget. A row is copied as the texts of its columns with tabs between them.
template <typename View>
class RowView : public View {
public:
    explicit RowView(QWidget* parent = nullptr)
        : View(parent)
    {
        rowview::addCopyAction(*this);
    }

    // What the toolkit calls for each printable key.
    void keyboardSearch(const QString& typed) override { m_find.type(*this, typed); }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (!rowview::handleKey(*this, *event)) { View::keyPressEvent(event); }
    }
    void contextMenuEvent(QContextMenuEvent* event) override { rowview::showMenu(*this, *event); }
    // The toolkit makes the first row of a view without a current row current, but does not select it.
    void focusInEvent(QFocusEvent* event) override
    {
        const bool hadCurrentRow = this->currentIndex().isValid();
        View::focusInEvent(event);
        if (!hadCurrentRow && this->currentIndex().isValid()) { this->setCurrentIndex(this->currentIndex()); }
    }

private:
    RowFind m_find;
};
