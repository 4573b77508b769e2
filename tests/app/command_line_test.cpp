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

}  // namespace
