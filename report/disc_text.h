// Decodes texts whose bytes are kept as stored on the disc.
#pragma once

#include <QString>

#include <iterator>

namespace report {

// The text before the first NUL, decoded as UTF-8. U+FFFD replaces bytes that are not valid UTF-8.
template <typename Characters>
[[nodiscard]] QString discText(const Characters& stored)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(std::data(stored)),
                                           static_cast<qsizetype>(std::size(stored)));
    return text.section(QChar(u'\0'), 0, 0);
}

}  // namespace report
