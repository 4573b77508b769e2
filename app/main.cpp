// The executable: parses the command line, then prints to the terminal or runs the window.
#include "app/command_line.h"
#include "app/translation.h"
#include "base/identity.h"
#include "base/log.h"
#include "base/terminal_text.h"
#include "report/print_report.h"
#include "report/standard_output.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>

namespace {

constexpr int kNotWritten = 1;
constexpr int kWrongUse = 2;

int runWindow(int& argc, char** argv, const QString& disc)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QString::fromUtf8(identity::kName));
    QApplication::setApplicationVersion(QString::fromUtf8(identity::kVersion));
    QApplication::setDesktopFileName(QString::fromUtf8(identity::kDesktopFileName));
    QApplication::setWindowIcon(QIcon(QString::fromUtf8(identity::kIconResource)));
    installTranslations(application);

    MainWindow window;
    window.setDiscToOpenAtStart(disc);
    window.show();
    return QApplication::exec();
}

int printText(const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    return report::writeStandardOutput({bytes.constData(), static_cast<std::size_t>(bytes.size())}) == 0
               ? 0
               : kNotWritten;
}

// Runs everything that needs no display. Parses the arguments again after the translation is installed, so that the
// message about a wrong argument is translated.
int runOnTerminal(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    installTranslations(application);
    const CommandLine line = parseCommandLine(decodedArguments(argc, argv));
    switch (line.mode) {
    case CommandLine::Mode::Help:
        return printText(helpText());
    case CommandLine::Mode::Version:
        return printText(QStringLiteral("%1 %2\n").arg(QString::fromUtf8(identity::kName),
                                                       QString::fromUtf8(identity::kVersion)));
    case CommandLine::Mode::TextReport:
        return report::printReport(argv[1 + line.discIndex], report::Format::Text);
    case CommandLine::Mode::JsonReport:
        return report::printReport(argv[1 + line.discIndex], report::Format::Json);
    case CommandLine::Mode::Wrong:
    case CommandLine::Mode::Window:
        break;
    }
    std::fprintf(stderr, "platterscope: %s\n%s\n",
                 QString::fromUtf8(terminaltext::line(line.problem)).toLocal8Bit().constData(),
                 helpHint().toLocal8Bit().constData());
    return kWrongUse;
}

}  // namespace

int main(int argc, char* argv[])
{
    report::prepareStandardStreams();
    logging::logStarted();
    const CommandLine line = parseCommandLine(decodedArguments(argc, argv));
    return line.mode == CommandLine::Mode::Window ? runWindow(argc, argv, line.disc)
                                                  : runOnTerminal(argc, argv);
}
