// The executable: reads the command line, and prints a report or gives the application its identity and runs the
// window.
#include "app/command_line.h"
#include "app/identity.h"
#include "app/log.h"
#include "report/print_report.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>

namespace {

constexpr int kWrongUse = 2;

int runWindow(int& argc, char** argv, const QString& disc)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QString::fromUtf8(identity::kName));
    QApplication::setApplicationVersion(QString::fromUtf8(identity::kVersion));
    QApplication::setDesktopFileName(QString::fromUtf8(identity::kDesktopFileName));
    QApplication::setWindowIcon(QIcon(QString::fromUtf8(identity::kIconResource)));

    MainWindow window;
    window.setDiscToOpenAtStart(disc);
    window.show();
    return QApplication::exec();
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
    case CommandLine::Mode::TextReport:
        return report::printReport(argv[1 + line.discIndex], report::Format::Text);
    case CommandLine::Mode::JsonReport:
        return report::printReport(argv[1 + line.discIndex], report::Format::Json);
    case CommandLine::Mode::Window:
        return runWindow(argc, argv, line.disc);
    }
    return kWrongUse;
}
