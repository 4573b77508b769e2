#include "base/terminal_text.h"

#include <QChar>

namespace terminaltext {

namespace {

// Appends the replacement of the unprintable character `code`, the first of `rest`.
using AppendUnprintable = void (*)(QByteArray& utf8, char32_t code, QStringView rest);

bool isPrintable(char32_t code)
{
    if (code < 0xA0) { return code >= 0x20 && code < 0x7F; }
    const QChar::Category category = QChar::category(code);
    return QChar::isPrint(code) && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph;
}

char32_t firstCodePoint(const char16_t* unit, const char16_t* end)
{
    const bool isPair = QChar::isHighSurrogate(*unit) && unit + 1 != end && QChar::isLowSurrogate(unit[1]);
    return isPair ? QChar::surrogateToUcs4(unit[0], unit[1]) : *unit;
}

qsizetype unitCount(char32_t code)
{
    return QChar::requiresSurrogates(code) ? 2 : 1;
}

// Converts printable stretches as a whole: a service's text may have a hundred million characters.
QByteArray rewritten(QStringView text, AppendUnprintable appendUnprintable)
{
    QByteArray utf8;
    const char16_t* const end = text.utf16() + text.size();
    const char16_t* printed = text.utf16();
    for (const char16_t* at = printed; at != end;) {
        const char32_t code = firstCodePoint(at, end);
        const char16_t* const next = at + unitCount(code);
        if (!isPrintable(code)) {
            if (at != printed) { utf8.append(QStringView(printed, at).toUtf8()); }
            appendUnprintable(utf8, code, QStringView(at, end));
            printed = next;
        }
        at = next;
    }
    return utf8.append(QStringView(printed, end).toUtf8());
}

// Appends a backslash, `kind` and the number's last digits, at most eight.
void appendHexadecimal(QByteArray& utf8, char kind, char32_t number, int digits)
{
    char escape[10] = {'\\', kind};
    for (int place = digits + 1; place > 1; --place, number >>= 4U) {
        escape[place] = "0123456789abcdef"[number & 0xFU];
    }
    utf8.append(escape, digits + 2);
}

void appendEscape(QByteArray& utf8, char32_t code, QStringView)
{
    if (code <= 0xFF) {
        appendHexadecimal(utf8, 'x', code, 2);
    } else if (code <= 0xFFFF) {
        appendHexadecimal(utf8, 'u', code, 4);
    } else {
        appendHexadecimal(utf8, 'U', code, 8);
    }
}

void appendLineOrEscape(QByteArray& utf8, char32_t code, QStringView rest)
{
    if (code == U'\n') {
        utf8.append("\n  ");
    } else if (code == U'\t' || rest.startsWith(u"\r\n")) {
        utf8.append(static_cast<char>(code));
    } else {
        appendEscape(utf8, code, rest);
    }
}

void appendJsonEscape(QByteArray& utf8, char32_t code, QStringView rest)
{
    if (code < 0x7F) {
        utf8.append(static_cast<char>(code));  // the line feeds between the document's values
        return;
    }
    for (const QChar unit : rest.first(unitCount(code))) {
        appendHexadecimal(utf8, 'u', unit.unicode(), 4);
    }
}

}  // namespace

QByteArray line(QStringView text)
{
    return rewritten(text, appendEscape);
}

QByteArray lines(QStringView text)
{
    return rewritten(text, appendLineOrEscape);
}

QByteArray json(QStringView document)
{
    return rewritten(document, appendJsonEscape);
}

}  // namespace terminaltext
