// Text from discs, paths and the service, rewritten so that a terminal shows it and acts on none of it.
//
// Unprintable characters are control characters, characters that change the direction of text, characters without
// width, separators of lines and paragraphs, surrogates without a partner, and code points that are private or not
// assigned. All functions return UTF-8.
#pragma once

#include <QByteArray>
#include <QStringView>

namespace terminaltext {

// The text on one line: unprintable characters become \x1b, \u202e or \U000e0001, with as many digits as shown.
[[nodiscard]] QByteArray line(QStringView text);

// Like line(), but keeps line feeds, a carriage return before a line feed, and tabs. Two blanks indent every line
// after the first.
[[nodiscard]] QByteArray lines(QStringView text);

// The JSON document with unprintable characters from U+007F up as escapes of JSON (\u202e). `document` has such
// characters in strings alone, so that its values stay the same.
[[nodiscard]] QByteArray json(QStringView document);

}  // namespace terminaltext
