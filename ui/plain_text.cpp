#include "ui/plain_text.h"

#include <QTextDocument>

#include <algorithm>

namespace plaintext {

namespace {

// Everything that the toolkit begins a new line at.
bool isLineBreak(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == QChar(0x85) || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator;
}

// What turns the direction of the text behind it, by which a name could be made to read as another. Letters of scripts
// that run from right to left do without.
bool isDirection(QChar c)
{
    return (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
}

// The beginning of the text, which does not end in half a character and runs in its own direction.
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
