#pragma once

#include <QString>

// Returns the name of the language with the ISO 639 code of two or three letters `code`: in the user's language if it
// is translated, otherwise in English. Returns an unknown or empty code unchanged. Accepts the two-letter codes that
// ISO 639 has withdrawn, because DVDs use them.
[[nodiscard]] QString languageName(const QString& code);
