// The trees and lists of this program. Typing finds a row; Ctrl+C and a context menu copy it.
#pragma once

#include "ui/row_find.h"

#include <QWidget>

class QAbstractItemView;
class QContextMenuEvent;
class QKeyEvent;

namespace rowview {

// Adds the action "Copy", which copies the current row, to the view.
void addCopyAction(QAbstractItemView& view);

// Handles the keys that copy the row or open the menu, and leaves Escape to the page. Returns false for other keys.
[[nodiscard]] bool handleKey(QAbstractItemView& view, QKeyEvent& event);

// Shows the view's actions as a menu at the clicked row or, for a key, below the current row. Ignores the event without
// a row.
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

    // Called by the toolkit for each key that has a text.
    void keyboardSearch(const QString& typed) override { m_find.type(*this, typed); }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (!rowview::handleKey(*this, *event)) { View::keyPressEvent(event); }
    }
    void contextMenuEvent(QContextMenuEvent* event) override { rowview::showMenu(*this, *event); }
    // If a view without a current row gets the focus, the toolkit makes the first row current without selecting it.
    void focusInEvent(QFocusEvent* event) override
    {
        const bool hadCurrentRow = this->currentIndex().isValid();
        View::focusInEvent(event);
        if (!hadCurrentRow && this->currentIndex().isValid()) { this->setCurrentIndex(this->currentIndex()); }
    }

private:
    RowFind m_find;
};
