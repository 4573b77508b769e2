// Language codes of discs in words.
#pragma once

#include <QString>

// The language's name, in the user's language where that is known, for an ISO 639 code of two or three letters; the code
// itself where it is not known, an empty text for an empty code. DVDs also use a few two-letter codes that were
// withdrawn since.
[[nodiscard]] QString languageName(const QString& code);
