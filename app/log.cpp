#include "app/log.h"

#include <cstdio>

namespace logging {

namespace {

thread_local bool enabledOnThisThread = true;

void writeLine(const char* component, const char* level, const char* message)
{
    std::fprintf(stderr, "%s: %s: %s\n", component, level, message);
    std::fflush(stderr);
}

}  // namespace

void log(const char* component, const char* level, const QString& message)
{
    if (enabledOnThisThread) { writeLine(component, level, message.toUtf8().constData()); }
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
