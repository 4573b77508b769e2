#include "app/command_line.h"

#include <gtest/gtest.h>

namespace {

using Mode = CommandLine::Mode;

CommandLine parse(const QStringList& arguments)
{
    return parseCommandLine(arguments);
}

TEST(CommandLine, OneArgumentIsTheDiscToOpen)
{
    EXPECT_EQ(parse({}).mode, Mode::Window);
    EXPECT_TRUE(parse({}).disc.isEmpty());
    EXPECT_EQ(parse({QStringLiteral("/discs/a b")}).disc, QStringLiteral("/discs/a b"));
    EXPECT_EQ(parse({QStringLiteral("--"), QStringLiteral("--help")}).disc, QStringLiteral("--help"));
    EXPECT_EQ(parse({QStringLiteral("-")}).disc, QStringLiteral("-"));
    EXPECT_EQ(parse({QStringLiteral("a"), QStringLiteral("b")}).mode, Mode::Wrong);
}

TEST(CommandLine, TheToolkitsOptionsPassWithTheirValues)
{
    const CommandLine line =
        parse({QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("--style=fusion"),
               QStringLiteral("-reverse"), QStringLiteral("disc.iso")});
    EXPECT_EQ(line.mode, Mode::Window);
    EXPECT_EQ(line.disc, QStringLiteral("disc.iso"));
    EXPECT_EQ(parse({QStringLiteral("-platform")}).mode, Mode::Wrong) << "its value is missing";
    EXPECT_EQ(parse({QStringLiteral("-platformx")}).mode, Mode::Wrong);
    EXPECT_EQ(parse({QStringLiteral("--no-such-option")}).mode, Mode::Wrong);
}

TEST(CommandLine, HelpAndVersionWinOverWhatFollows)
{
    EXPECT_EQ(parse({QStringLiteral("--help"), QStringLiteral("--bad")}).mode, Mode::Help);
    EXPECT_EQ(parse({QStringLiteral("disc"), QStringLiteral("--version")}).mode, Mode::Version);
}

TEST(CommandLine, AReportHasAFormatAndOneDiscInAnyOrder)
{
    const QString report = QStringLiteral("--report");
    const QString disc = QStringLiteral("disc");
    const CommandLine behind = parse({report, QStringLiteral("text"), disc});
    EXPECT_EQ(behind.mode, Mode::TextReport);
    EXPECT_EQ(behind.disc, disc);
    EXPECT_EQ(behind.discIndex, 2);
    const CommandLine before = parse({disc, QStringLiteral("--report=json")});
    EXPECT_EQ(before.mode, Mode::JsonReport);
    EXPECT_EQ(before.discIndex, 0);
    EXPECT_EQ(parse({report, QStringLiteral("json"), QStringLiteral("--"), report}).discIndex, 3);
    EXPECT_EQ(parse({disc}).discIndex, 0);
    EXPECT_EQ(parse({}).discIndex, -1);
}

TEST(CommandLine, AReportThatLacksSomethingIsWrong)
{
    const auto problem = [](const QString& arguments) {
        const CommandLine line = parse(arguments.split(QLatin1Char(' ')));
        EXPECT_EQ(line.mode, Mode::Wrong) << arguments.toStdString();
        return line.problem;
    };
    EXPECT_EQ(problem(QStringLiteral("--report text")), QStringLiteral("A report needs a disc."));
    for (const char* noFormat : {"--report", "disc --report", "--report= disc"}) {
        EXPECT_EQ(problem(QString::fromLatin1(noFormat)),
                  QStringLiteral("Option '--report' needs a format: text or json."));
    }
    EXPECT_EQ(problem(QStringLiteral("--report xml disc")),
              QStringLiteral("Unknown report format 'xml'; there are text and json."));
    EXPECT_EQ(problem(QStringLiteral("--report=text a b")),
              QStringLiteral("Only one disc can be opened; 'b' is one too many."));
    EXPECT_EQ(problem(QStringLiteral("--report=text disc --report json")),
              QStringLiteral("Option '--report' can be given only once."));
    EXPECT_EQ(problem(QStringLiteral("-report text disc")), QStringLiteral("Unknown option '-report'."));
}

}  // namespace
