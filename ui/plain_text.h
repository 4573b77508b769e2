// Texts that come from a disc or from the service, made fit to be shown: never taken for markup, and never so
// long that laying them out would hold the window up or take more than its place. Characters that turn the direction
// of a text, by which a name could pass for another, give way to U+FFFD.
#pragma once

#include <QString>

namespace plaintext {

// The text's first characters and lines, followed by an ellipsis where that is not all of it. Line breaks of every
// kind become "\n".
[[nodiscard]] QString bounded(const QString& text, qsizetype characters, qsizetype lines);

// At most so many characters on one line: line breaks, tabs and other control characters become blanks.
[[nodiscard]] QString oneLine(const QString& text, qsizetype characters);

// A tool tip cannot be told to be plain text: one that could be taken for markup is escaped as such.
[[nodiscard]] QString toolTip(const QString& text);

}  // namespace plaintext
