#include "ui/row_view.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QStringList>

namespace rowview {

namespace {

void copyCurrentRow(const QAbstractItemView& view)
{
    const QModelIndex row = view.currentIndex();
    if (!row.isValid()) { return; }
    QStringList texts;
    const int columns = row.model()->columnCount(row.parent());
    for (int column = 0; column < columns; ++column) {
        texts.append(row.siblingAtColumn(column).data().toString());
    }
    QGuiApplication::clipboard()->setText(texts.join(QLatin1Char('\t')));
}

QPoint belowRow(const QAbstractItemView& view, const QModelIndex& row)
{
    return view.viewport()->mapToGlobal(view.visualRect(row).bottomLeft());
}

}  // namespace

void addCopyAction(QAbstractItemView& view)
{
    auto* copy = new QAction(QCoreApplication::translate("RowView", "Copy"), &view);
    copy->setObjectName(QStringLiteral("copyAction"));
    QObject::connect(copy, &QAction::triggered, &view, [&view] { copyCurrentRow(view); });
    view.addAction(copy);
}

bool handleKey(QAbstractItemView& view, QKeyEvent& event)
{
    if (event.matches(QKeySequence::Copy)) {
        copyCurrentRow(view);
        return true;
    }
    if (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier) {
        // Not every platform treats it as the Menu key.
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QCoreApplication::sendEvent(&view, &menuKey);
        return true;
    }
    if (event.key() == Qt::Key_Escape) {
        event.ignore();
        return true;
    }
    return false;
}

void showMenu(QAbstractItemView& view, QContextMenuEvent& event)
{
    const bool isByKey = event.reason() == QContextMenuEvent::Keyboard;
    const QModelIndex row = isByKey ? view.currentIndex() : view.indexAt(event.pos());
    if (!row.isValid()) {
        event.ignore();
        return;
    }
    view.setCurrentIndex(row);
    view.scrollTo(row);
    auto* menu = new QMenu(&view);
    menu->setObjectName(QStringLiteral("rowMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addActions(view.actions());
    menu->popup(isByKey ? belowRow(view, row) : event.globalPos());
}

}  // namespace rowview
