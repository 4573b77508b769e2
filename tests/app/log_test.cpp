#include "app/log.h"
#include "tests/support/captured_log.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

TEST(Log, WritesOneUtf8LineWithComponentAndLevel)
{
    const testsupport::CapturedLog log;
    logging::log(logging::kBdmeta, logging::kWarning,
                 QString::fromUtf8("Gr\xC3\xBC\xC3\x9F"
                                   "e \xE2\x82\xAC %s %n"));
    EXPECT_EQ(log.lines(), (Lines{"bdmeta: warning: Gr\xC3\xBC\xC3\x9F"
                                  "e \xE2\x82\xAC %s %n"}));
}

TEST(Log, NoMessageSteersATerminalOrForgesALine)
{
    const std::pair<QString, std::string> messages[] = {
        {QStringLiteral("\u001b]0;title\u0007\u001b[2J\r"), "\\x1b]0;title\\x07\\x1b[2J\\x0d"},
        {QString::fromUtf8("\xC2\x9B"
                           "31m\xC2\x80 \x7F\b"),
         "\\x9b31m\\x80 \\x7f\\x08"},
        {QStringLiteral("a") + QChar(u'\0') + QStringLiteral("b"), "a\\x00b"},
        {QStringLiteral("a\tb\nplatterscope: error: c"), "a\\x09b\\x0aplatterscope: error: c"},
        {QStringLiteral("\u202Eiso\u200B\u2028\U000E0001"), "\\u202eiso\\u200b\\u2028\\U000e0001"},
        {QString::fromUtf8("\x1B \xC3\x9F \xC2\xA0 \xF0\x9F\x80\x82"),
         "\\x1b \xC3\x9F \xC2\xA0 \xF0\x9F\x80\x82"},
    };
    for (const auto& [message, expected] : messages) {
        const testsupport::CapturedLog log;
        logging::log(logging::kBdmeta, logging::kError, message);
        EXPECT_EQ(log.lines(), Lines{"bdmeta: error: " + expected});
    }
    const testsupport::CapturedLog log;
    logging::logLines(logging::kTessera, logging::kError, QStringLiteral("a\tb\r\nc\rd\n\u202E"));
    EXPECT_EQ(log.lines(), (Lines{"tessera: error: a\tb\r", "  c\\x0dd", "  \\u202e"}));
    testsupport::recordFault("Log: a name or a reply with control characters",
                             "written as escapes, so that no terminal acts on them", std::size(messages) + 1);
}

TEST(Log, TheSwitchSilencesItsOwnThreadAlone)
{
    const testsupport::CapturedLog log;
    {
        const logging::ScopedSwitch off(false);
        logging::log(logging::kTessera, logging::kInfo, QStringLiteral("not written"));
        std::thread([] {
            logging::log(logging::kTessera, logging::kInfo, QStringLiteral("other thread"));
        }).join();
        logging::logStarted();
    }
    logging::log(logging::kTessera, logging::kError, QStringLiteral("on again"));
    EXPECT_EQ(log.lines(), (Lines{"tessera: info: other thread", "platterscope: info: started",
                                  "tessera: error: on again"}));
}

}  // namespace
