// The executable, run as a process without any display.
#pragma once

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

namespace testsupport {

struct Ended {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

// Runs `program` as `process`, which holds what else is to be set.
inline Ended run(QProcess& process, const QStringList& arguments,
                 const QString& program = QStringLiteral(PLATTERSCOPE_EXECUTABLE))
{
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

inline QProcessEnvironment withoutDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(display));
    }
    return environment;
}

inline Ended run(const QStringList& arguments, const QString& locale = QStringLiteral("C.UTF-8"))
{
    QProcessEnvironment environment = withoutDisplay();
    environment.insert(QStringLiteral("LC_ALL"), locale);
    environment.insert(QStringLiteral("LANGUAGE"), locale);
    QProcess process;
    process.setProcessEnvironment(environment);
    return run(process, arguments);
}

}  // namespace testsupport
