#include "app/log.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace logging {

namespace {

constexpr char kTooLong[] = "(there is not enough memory to write this message)";

thread_local bool enabledOnThisThread = true;

bool isSteering(QChar c)
{
    return c.category() == QChar::Other_Control && c != u'\n' && c != u'\t';
}

// In UTF-8, U+0080 to U+009F are the bytes C2 80 to C2 9F, and the other steering characters are ASCII.
QByteArray escaped(const QByteArray& utf8)
{
    constexpr char kDigits[] = "0123456789abcdef";
    QByteArray text;
    for (const char* byte = utf8.begin(); byte != utf8.end(); ++byte) {
        const bool isSecondControlSet = *byte == '\xC2' && byte + 1 != utf8.end() && byte[1] < '\xA0';
        if (isSecondControlSet) { ++byte; }
        const auto code = static_cast<unsigned char>(*byte);
        if (isSecondControlSet || (code < 0x80 && isSteering(QLatin1Char(*byte)))) {
            text.append("\\x").append(kDigits[code >> 4U]).append(kDigits[code & 0xFU]);
        } else {
            text.append(*byte);
        }
    }
    return text;
}

void writeLine(const char* component, const char* level, const char* message)
{
    std::fprintf(stderr, "%s: %s: %s\n", component, level, message);
    std::fflush(stderr);
}

}  // namespace

void log(const char* component, const char* level, const QString& message) noexcept
{
    if (!enabledOnThisThread) { return; }
    try {
        const bool isSafe = std::none_of(message.begin(), message.end(), isSteering);
        const QByteArray utf8 = message.toUtf8();
        writeLine(component, level, isSafe ? utf8.constData() : escaped(utf8).constData());
    } catch (const std::exception&) {
        writeLine(component, level, kTooLong);
    }
}

void logStarted()
{
    writeLine(kPlatterscope, kInfo, "started");
}

bool isEnabled()
{
    return enabledOnThisThread;
}

ScopedSwitch::ScopedSwitch(bool enabled)
    : m_saved(enabledOnThisThread)
{
    enabledOnThisThread = enabled;
}

ScopedSwitch::~ScopedSwitch()
{
    enabledOnThisThread = m_saved;
}

}  // namespace logging
