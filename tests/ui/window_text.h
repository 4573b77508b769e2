// Windows as texts, to compare with golden files.
#pragma once

#include <QString>
#include <QStringList>

#include <ostream>
#include <string>

class QModelIndex;
class QWidget;

// The window or dialog as assistive technology finds it: a line for each part and for each row of a list, with the
// properties, stretch factors that make a difference to the user.
[[nodiscard]] QString partsOf(QWidget* window);

// What a user sees of the main window, a line each: the page, what is enabled, texts, rows, the focus, an open menu.
[[nodiscard]] QStringList factsOf(const QWidget& window);

// The texts of the row's columns.
[[nodiscard]] QString cellsOf(const QModelIndex& row);

// How the text differs from tests/ui/golden/<name>.txt; empty if it does not.
[[nodiscard]] std::string difference(const QString& text, const std::string& name);

// For failure messages.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
