#include "base/log.h"

#include "base/terminal_text.h"

#include <cstdio>
#include <exception>

namespace logging {

namespace {

constexpr char kTooLong[] = "(there is not enough memory to write this message)";

thread_local bool enabledOnThisThread = true;

void writeLine(const char* component, const char* level, const char* message)
{
    std::fprintf(stderr, "%s: %s: %s\n", component, level, message);
    std::fflush(stderr);
}

void writeRewritten(const char* component, const char* level, const QString& message,
                    QByteArray (*rewritten)(QStringView)) noexcept
{
    if (!enabledOnThisThread) { return; }
    try {
        writeLine(component, level, rewritten(message).constData());
    } catch (const std::exception&) {
        writeLine(component, level, kTooLong);
    }
}

}  // namespace

void log(const char* component, const char* level, const QString& message) noexcept
{
    writeRewritten(component, level, message, terminaltext::line);
}

void logLines(const char* component, const char* level, const QString& text) noexcept
{
    writeRewritten(component, level, text, terminaltext::lines);
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
