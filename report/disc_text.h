// Texts of a disc's records that hold the bytes as stored.
#pragma once

#include <QString>

#include <iterator>

namespace report {

// The characters up to the first NUL, read as UTF-8 with U+FFFD for each byte that is none.
template <typename Characters>
[[nodiscard]] QString discText(const Characters& stored)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(std::data(stored)),
                                           static_cast<qsizetype>(std::size(stored)));
    return text.section(QChar(u'\0'), 0, 0);
}

}  // namespace report
