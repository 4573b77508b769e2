#include "app/command_line.h"
#include "base/log.h"
#include "tests/support/golden.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace {

// The golden file holds the arguments, with commas between them, then the mode, the disc, its place among them, the problem.
TEST(CommandLine, AsksForAWindowAReportOrAText)
{
    constexpr const char* kModes[] = {"window", "text", "json", "help", "version", "wrong"};
    std::ifstream file(TRANSCRIPTS_DIR "/arguments.txt");
    std::string text;
    for (std::string row; std::getline(file, row);) {
        row.resize(row.find(" => "));
        const CommandLine line =
            parseCommandLine(QString::fromStdString(row).split(u',', Qt::SkipEmptyParts));
        text += row + " => " + kModes[static_cast<int>(line.mode)] + " '" + line.disc.toStdString() + "' " +
                std::to_string(line.discIndex) + " [" + line.problem.toStdString() + "]\n";
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "app/golden/arguments.txt"), "");
}

TEST(Log, TheSwitchSilencesItsOwnThreadAlone)
{
    const testsupport::CapturedLog log;
    const auto write = [] { logging::log(logging::kTessera, logging::kInfo, QStringLiteral("written")); };
    const logging::ScopedSwitch off(false);
    write();
    std::thread(write).join();
    EXPECT_EQ(log.lines(), std::vector<std::string>{"tessera: info: written"});
}

}  // namespace
