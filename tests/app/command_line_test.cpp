#include "app/command_line.h"
#include "app/log.h"
#include "tests/support/captured_log.h"
#include "tests/support/golden.h"

#include <QFile>

#include <gtest/gtest.h>

#include <thread>

namespace {

// What the line asks for: the mode, and then the disc and its place among the arguments, or the problem.
std::string described(const CommandLine& line)
{
    constexpr const char* kModes[] = {"window", "text", "json", "help", "version", "wrong"};
    const std::string mode = kModes[static_cast<int>(line.mode)];
    if (!line.problem.isEmpty()) { return mode + ": " + line.problem.toStdString(); }
    if (line.discIndex < 0) { return mode + line.disc.toStdString(); }
    return mode + " '" + line.disc.toStdString() + "' " + std::to_string(line.discIndex);
}

TEST(CommandLine, AsksForAWindowAReportOrAText)
{
    QFile file(QStringLiteral(TRANSCRIPTS_DIR "/arguments.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::string text;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.isEmpty()) { continue; }
        const QString arguments = QString::fromUtf8(line.first(line.indexOf(" => ")));
        text += arguments.toStdString() + " => " +
                described(parseCommandLine(arguments.split(u',', Qt::SkipEmptyParts))) + '\n';
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "app/golden/arguments.txt"), "");
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
    const std::vector<std::string> expected = {"tessera: info: other thread", "platterscope: info: started",
                                               "tessera: error: on again"};
    EXPECT_EQ(log.lines(), expected);
}

}  // namespace
