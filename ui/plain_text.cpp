#include "ui/plain_text.h"

#include <QTextDocument>

#include <limits>

namespace plaintext {

QString bounded(const QString& text, qsizetype characters, qsizetype lines)
{
    qsizetype end = qMin(text.size(), characters);
    qsizetype lineEnd = -1;
    for (qsizetype line = 0; line < lines; ++line) {
        lineEnd = text.indexOf(QLatin1Char('\n'), lineEnd + 1);
        if (lineEnd < 0 || lineEnd >= end) { break; }
    }
    if (lineEnd >= 0) { end = qMin(end, lineEnd); }
    if (end == text.size()) { return text; }
    if (end > 0 && text.at(end - 1).isHighSurrogate()) { --end; }
    return text.first(end) + QChar(0x2026);
}

QString oneLine(const QString& text, qsizetype characters)
{
    return bounded(text, characters, std::numeric_limits<qsizetype>::max()).simplified();
}

QString toolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped()) : text;
}

}  // namespace plaintext
