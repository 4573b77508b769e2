// The executable: reads the command line, gives the application its identity and runs the window.
#include "app/command_line.h"
#include "app/identity.h"
#include "app/log.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QFile>
#include <QIcon>

#include <cstdio>

namespace {

constexpr int kWrongUse = 2;

QStringList decodedArguments(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QFile::decodeName(argv[i]));
    }
    return arguments;
}

}  // namespace

int main(int argc, char* argv[])
{
    logging::logStarted();
    const CommandLine line = parseCommandLine(decodedArguments(argc, argv));
    switch (line.mode) {
    case CommandLine::Mode::Help:
        std::fputs(helpText().toLocal8Bit().constData(), stdout);
        return 0;
    case CommandLine::Mode::Version:
        std::printf("%s %s\n", identity::kName, identity::kVersion);
        return 0;
    case CommandLine::Mode::Wrong:
        std::fprintf(stderr, "platterscope: %s\nTry 'platterscope --help'.\n",
                     line.problem.toLocal8Bit().constData());
        return kWrongUse;
    case CommandLine::Mode::Window:
        break;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QString::fromUtf8(identity::kName));
    QApplication::setApplicationVersion(QString::fromUtf8(identity::kVersion));
    QApplication::setDesktopFileName(QString::fromUtf8(identity::kDesktopFileName));
    QApplication::setWindowIcon(QIcon(QString::fromUtf8(identity::kIconResource)));

    MainWindow window;
    window.setDiscToOpenAtStart(line.disc);
    window.show();
    return QApplication::exec();
}
