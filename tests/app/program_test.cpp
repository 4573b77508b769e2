// The executable itself, as a process without any display.
#include "app/identity.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace {

struct Ended {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Ended run(const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(display));
    }
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLATTERSCOPE_EXECUTABLE), arguments);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

TEST(Program, HelpAndVersionNeedNoDisplay)
{
    const Ended version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, QByteArray("Platterscope ") + identity::kVersion + '\n');
    EXPECT_EQ(version.errors, QByteArray("platterscope: info: started\n"));

    const Ended help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains("[DISC]"));
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

}  // namespace
