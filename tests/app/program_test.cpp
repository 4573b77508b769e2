// The executable itself, as a process without any display.
#include "app/identity.h"
#include "tests/app/program_run.h"

#include <gtest/gtest.h>

namespace {

using testsupport::Ended;
using testsupport::run;

TEST(Program, HelpAndVersionNeedNoDisplay)
{
    const Ended version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, QByteArray("Platterscope ") + identity::kVersion + '\n');
    EXPECT_EQ(version.errors, QByteArray("platterscope: info: started\n"));

    const Ended help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains("[DISC]"));
    EXPECT_TRUE(help.output.contains("--report text|json DISC"));
    EXPECT_TRUE(help.output.contains("PLATTERSCOPE_SERVICE_URL"));
}

TEST(Program, WrongUseIsSaidAndExitsWithTwo)
{
    for (const QStringList& wrong : {QStringList{QStringLiteral("--bogus")},
                                     QStringList{QStringLiteral("one"), QStringLiteral("two")}}) {
        const Ended result = run(wrong);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_TRUE(result.output.isEmpty());
        EXPECT_TRUE(result.errors.startsWith("platterscope: info: started\nplatterscope: "));
        EXPECT_TRUE(result.errors.contains(wrong.last().toLocal8Bit()));
    }
}

TEST(Program, SpeaksTheUsersLanguage)
{
    const QString german = QStringLiteral("de_DE.UTF-8");
    EXPECT_TRUE(run({QStringLiteral("--help")}, german).output.startsWith("Aufruf: platterscope "));
    EXPECT_TRUE(run({QStringLiteral("--bogus")}, german)
                    .errors.contains("platterscope: Unbekannte Option „--bogus“.\nVersuchen Sie "));
    EXPECT_TRUE(run({QStringLiteral("--help")}, QStringLiteral("en_GB.UTF-8")).output.startsWith("Usage: "));
}

}  // namespace
