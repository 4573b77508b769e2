// Message boxes as this program shows them. Texts may come from a disc or from the service, so they are
// always plain text, never markup, and what a box shows of them is bounded.
#pragma once

#include <QString>

class QWidget;

namespace messagebox {

// The most characters and lines of a text that a box shows, so that its buttons stay on the screen. An ellipsis replaces
// the rest, whose first 64 KiB "Show Details..." shows.
inline constexpr qsizetype kTextLimit = 2000;
inline constexpr qsizetype kLineLimit = 40;

void information(QWidget* parent, const QString& title, const QString& text);
void warning(QWidget* parent, const QString& title, const QString& text);
// `details`, if given, is shown by "Show Details..." as well.
void critical(QWidget* parent, const QString& title, const QString& text, const QString& details = {});

// A question answered with Yes or No; No is the default and what Escape means.
[[nodiscard]] bool ask(QWidget* parent, const QString& title, const QString& text);

}  // namespace messagebox
