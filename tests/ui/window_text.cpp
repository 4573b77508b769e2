// What WindowFixture shows of windows.
#include "tests/ui/window_fixture.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QMetaEnum>
#include <QStackedWidget>

namespace {

QString nameOf(const QAccessibleInterface& part)
{
    return u" \""_s + part.text(QAccessible::Name).replace(u'\n', u"\\n"_s) + u'"';
}

// The properties of the list that the object has and that are neither empty nor false.
QString propertiesOf(const QObject& object)
{
    QString text;
    for (const char* name :
         {"checkable", "childrenCollapsible", "echoMode", "elideMode", "maximum", "menuRole",
          "openExternalLinks", "readOnly", "rootIsDecorated", "shortcut", "sortingEnabled", "tabChangesFocus",
          "textFormat", "textVisible", "toolTip", "wordWrap"}) {
        const QVariant value = object.property(name);
        const bool isFlag = value.typeId() == QMetaType::Bool;
        if (isFlag ? !value.toBool() : value.toString().isEmpty()) { continue; }
        text += u' ' + QString::fromLatin1(name) + (isFlag ? QString() : u'=' + value.toString());
    }
    return text;
}

void appendParts(QAccessibleInterface& part, const QString& indent, QString& text)
{
    static const auto kRoles = QMetaEnum::fromType<QAccessible::Role>();
    text += indent + QString::fromLatin1(kRoles.valueToKey(part.role())) + nameOf(part);
    if (part.object() != nullptr) {
        text += u' ' + part.object()->objectName() + propertiesOf(*part.object());
    }
    if (part.state().disabled) { text += u" disabled"_s; }
    if (part.state().focusable) { text += u" focusable"_s; }
    for (const auto& [label, relation] : part.relations(QAccessible::Label)) {
        text += u" labelled by"_s + nameOf(*label);
    }
    const auto* widget = qobject_cast<const QWidget*>(part.object());
    const auto* layout = qobject_cast<const QBoxLayout*>(widget == nullptr ? nullptr : widget->layout());
    if (layout != nullptr && !layout->contentsMargins().isNull()) { text += u" with margins"_s; }
    text += u'\n';
    const QAccessibleTableInterface* table = part.tableInterface();
    for (int row = 0; table != nullptr && row < table->rowCount(); ++row) {
        text += indent + u"  |"_s;
        for (int column = 0; column < table->columnCount(); ++column) {
            const QAccessibleInterface* cell = table->cellAt(row, column);
            text += nameOf(*cell) + (cell->state().selected ? u"* |"_s : u" |"_s);
        }
        text += u'\n';
    }
    for (int i = 0; table == nullptr && i < part.childCount(); ++i) {
        QAccessibleInterface* child = part.child(i);
        if (child == nullptr) { continue; }
        const bool isMenu = child->role() == QAccessible::PopupMenu || child->role() == QAccessible::MenuItem;
        if (isMenu || !child->state().invisible) { appendParts(*child, indent + u"  "_s, text); }
    }
}

// The rows of the first level; the selected ones have a star.
QString rowsOf(const QAbstractItemView& view)
{
    QStringList rows;
    for (int i = 0; i < view.model()->rowCount(); ++i) {
        const QModelIndex row = view.model()->index(i, 0);
        rows.append((view.selectionModel()->isSelected(row) ? u"*"_s : u""_s) + cellsOf(row));
    }
    if (view.objectName().startsWith(u"openFile"_s)) { rows.sort(); }  // they come in any order
    return rows.join(u"; "_s);
}

}  // namespace

QString partsOf(QWidget* window)
{
    QAccessible::setActive(true);
    QString text;
    appendParts(*QAccessible::queryAccessibleInterface(window), {}, text);
    return text;
}

QStringList factsOf(const QWidget& window)
{
    if (!window.isVisible()) { return {u"no window"_s}; }
    const auto* page = window.findChild<QStackedWidget*>(u"pages"_s)->currentWidget();
    const auto* inner = qobject_cast<const QStackedWidget*>(page);
    QStringList facts = {(inner == nullptr ? page : inner->currentWidget())->objectName() + u", \""_s +
                         window.windowTitle() + u'"'};
    QString enabled = u"enabled:"_s;
    for (const char* name :
         {"openDiscIsoAction", "openDiscDirectoryAction", "titlesAction", "configurationsAction",
          "monitorAction", "viewConfigurationButton", "refreshConfigurationsButton", "startMonitoringButton",
          "stopMonitoringButton", "clearMonitorButton"}) {
        const auto* control = window.findChild<QObject*>(QString::fromLatin1(name));
        if (!control->property("enabled").toBool()) { continue; }
        enabled += u' ' + control->objectName().remove(u"Action"_s).remove(u"Button"_s);
        if (control->property("checked").toBool()) { enabled += u'*'; }
    }
    facts.append(enabled);
    for (const auto* part : window.findChildren<QWidget*>()) {
        if (part->objectName().isEmpty() || part->objectName().startsWith(u"qt_"_s)) { continue; }
        const auto add = [&](QString text) {
            facts.append(part->objectName() + u": "_s + text.replace(u'\n', u" / "_s));
        };
        if (const auto* label = qobject_cast<const QLabel*>(part)) { add(label->text()); }
        if (const auto* text = qobject_cast<const QTextEdit*>(part)) { add(text->toPlainText()); }
        if (const auto* view = qobject_cast<const QAbstractItemView*>(part)) { add(rowsOf(*view)); }
    }
    const QWidget* focus = window.focusWidget();
    const auto* view = qobject_cast<const QAbstractItemView*>(focus);
    facts.append(u"focus: "_s + (focus == nullptr ? QString() : focus->objectName()) +
                 (view == nullptr ? QString() : u" at "_s + cellsOf(view->currentIndex())));
    if (const QWidget* menu = QApplication::activePopupWidget()) {
        QStringList entries;
        for (const QAction* action : menu->actions()) {
            entries.append(action->text());
        }
        const bool isAtRow =
            view != nullptr &&
            menu->pos() == view->viewport()->mapToGlobal(view->visualRect(view->currentIndex()).bottomLeft());
        facts.append(u"menu: "_s + entries.join(u", "_s) + (isAtRow ? u" (below the row)"_s : u""_s));
    }
    return facts;
}

QString cellsOf(const QModelIndex& row)
{
    if (!row.isValid()) { return u"none"_s; }
    QStringList texts;
    for (int column = 0; column < row.model()->columnCount(row.parent()); ++column) {
        texts.append(row.siblingAtColumn(column).data().toString());
    }
    return texts.join(u'|');
}
