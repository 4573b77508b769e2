#include "app/command_line.h"

#include <gtest/gtest.h>

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
    constexpr char kNoFormat[] = "wrong: Option '--report' needs a format: text or json.";
    constexpr char kTwoReports[] = "wrong: Option '--report' can be given only once.";
    const struct {
        const char* arguments;  // with a comma between two
        const char* expected;
    } rows[] = {
        {"/discs/a b", "window '/discs/a b' 0"},
        {"--,--help", "window '--help' 1"},
        {"-", "window '-' 0"},
        {"a,b", "wrong: Only one disc can be opened; 'b' is one too many."},
        {"-platform,offscreen,--style=fusion,-reverse,--sync,disc.iso", "window 'disc.iso' 5"},
        {"-platform", "wrong: Option '-platform' needs a value."},
        {"--title,x", "window"},
        {"-platformx", "wrong: Unknown option '-platformx'."},
        {"-h,--bad", "help"},
        {"disc,--help", "help"},
        {"-v", "version"},
        {"disc,--version", "version"},
        {"--report,text,disc", "text 'disc' 2"},
        {"disc,--report=json", "json 'disc' 0"},
        {"--report,json,--,--report", "json '--report' 3"},
        {"--report,text", "wrong: A report needs a disc."},
        {"--report", kNoFormat},
        {"disc,--report", kNoFormat},
        {"--report=,disc", kNoFormat},
        {"--report,xml,disc", "wrong: Unknown report format 'xml'; there are text and json."},
        {"--report=text,disc,--report,json", kTwoReports},
        {"--report=json,disc,--report,json", kTwoReports},
        {"-report,text,disc", "wrong: Unknown option '-report'."},
    };
    for (const auto& row : rows) {
        const QStringList arguments = QString::fromUtf8(row.arguments).split(QLatin1Char(','));
        EXPECT_EQ(described(parseCommandLine(arguments)), row.expected) << row.arguments;
    }
    EXPECT_EQ(described(parseCommandLine({})), "window");
}

}  // namespace
