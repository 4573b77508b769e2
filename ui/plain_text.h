// Prepares texts from a disc or from the service for display. They never act as markup, and are cut so that their
// layout neither blocks the window nor exceeds its place. U+FFFD replaces characters that change the direction of a
// text, with which one name could look like another.
#pragma once

#include <QString>

namespace plaintext {

// Returns at most `characters` characters and `lines` lines of the text, followed by an ellipsis if that is not all of
// it. Every kind of line break becomes "\n".
[[nodiscard]] QString bounded(const QString& text, qsizetype characters, qsizetype lines);

// Returns at most `characters` characters on one line, followed by an ellipsis if that is not the whole text. Line
// breaks, tabs and other control characters become blanks.
[[nodiscard]] QString oneLine(const QString& text, qsizetype characters);

// Returns the text for setToolTip(), which has no plain-text mode: a text that looks like markup is escaped.
[[nodiscard]] QString toolTip(const QString& text);

}  // namespace plaintext
