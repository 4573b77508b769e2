#include "ui/plain_text.h"

#include <QTextDocument>

#include <algorithm>

namespace plaintext {

namespace {

// Whether the toolkit begins a new line after `c`.
bool isLineBreak(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == QChar(0x85) || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator;
}

// Whether `c` is a control that changes the direction of the following text. Right-to-left scripts do not need them.
bool isDirection(QChar c)
{
    return (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
}

// The first characters of the text, without half a surrogate pair at the end and without direction controls.
QString beginning(const QString& text, qsizetype characters)
{
    qsizetype end = qMin(text.size(), characters);
    if (end > 0 && end < text.size() && text.at(end - 1).isHighSurrogate()) { --end; }
    QString shown = text.first(end);
    std::replace_if(shown.begin(), shown.end(), isDirection, QChar(QChar::ReplacementCharacter));
    return shown;
}

}  // namespace

QString bounded(const QString& text, qsizetype characters, qsizetype lines)
{
    QString shown = beginning(text, characters);
    bool isWhole = shown.size() == text.size();
    shown.replace(QLatin1StringView("\r\n"), QLatin1StringView("\n"));
    std::replace_if(shown.begin(), shown.end(), isLineBreak, QLatin1Char('\n'));
    qsizetype lineEnd = -1;
    for (qsizetype line = 0; line < lines; ++line) {
        lineEnd = shown.indexOf(QLatin1Char('\n'), lineEnd + 1);
        if (lineEnd < 0) { break; }
    }
    if (lineEnd >= 0) {
        shown.truncate(lineEnd);
        isWhole = false;
    }
    return isWhole ? shown : shown + QChar(0x2026);
}

QString oneLine(const QString& text, qsizetype characters)
{
    QString shown = beginning(text, characters);
    const bool isWhole = shown.size() == text.size();
    std::replace_if(
        shown.begin(), shown.end(),
        [](QChar c) { return isLineBreak(c) || c.category() == QChar::Other_Control; }, QLatin1Char(' '));
    return isWhole ? shown : shown + QChar(0x2026);
}

QString toolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped()) : text;
}

}  // namespace plaintext
