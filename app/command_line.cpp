#include "app/command_line.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

using Mode = CommandLine::Mode;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

// The options that QApplication removes from the arguments. They are listed because a wrong option must be reported
// without a display, and QApplication cannot be made without one.
constexpr std::array kToolkitOptionsWithValue = {
    "platform", "platformpluginpath", "platformtheme", "plugin",  "qwindowgeometry", "geometry",
    "title",    "qwindowtitle",       "qwindowicon",   "icon",    "session",         "display",
    "style",    "stylesheet",         "fontengine",    "dialogs", "qmljsdebugger"};
constexpr std::array kToolkitFlags = {"reverse", "widgetcount", "nograb", "dograb", "sync"};

// Whether `option`, which may begin with one or two dashes, is in `names`.
template <std::size_t kCount>
bool isOneOf(const std::array<const char*, kCount>& names, const QString& option)
{
    const QString name = option.sliced(option.startsWith("--"_L1) ? 2 : 1);
    return std::ranges::any_of(names, [&name](const char* each) { return name == QLatin1StringView(each); });
}

CommandLine wrong(const QString& problem)
{
    CommandLine line;
    line.mode = Mode::Wrong;
    line.problem = problem;
    return line;
}

// Sets the report of `line`; returns the problem with it, or an empty text.
QString setReport(CommandLine& line, const QString& format)
{
    if (line.mode != Mode::Window) { return Texts::tr("Option '--report' can be given only once."); }
    if (format.isEmpty()) { return Texts::tr("Option '--report' needs a format: text or json."); }
    if (format != "text"_L1 && format != "json"_L1) {
        return Texts::tr("Unknown report format '%1'; there are text and json.").arg(format);
    }
    line.mode = format == "text"_L1 ? Mode::TextReport : Mode::JsonReport;
    return {};
}

}  // namespace

QStringList decodedArguments(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QFile::decodeName(argv[i]));
    }
    return arguments;
}

CommandLine parseCommandLine(const QStringList& arguments)
{
    CommandLine line;
    bool hasOptionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (hasOptionsEnded || argument.size() < 2 || !argument.startsWith(u'-')) {
            if (line.discIndex >= 0) {
                return wrong(Texts::tr("Only one disc can be opened; '%1' is one too many.").arg(argument));
            }
            line.disc = argument;
            line.discIndex = i;
            continue;
        }
        const QString option = argument.section(u'=', 0, 0);
        const bool hasValue = option.size() < argument.size();
        if (argument == "--"_L1) {
            hasOptionsEnded = true;
        } else if (argument == "--help"_L1 || argument == "-h"_L1) {
            return {Mode::Help};
        } else if (argument == "--version"_L1 || argument == "-v"_L1) {
            return {Mode::Version};
        } else if (option == "--report"_L1) {
            const QString problem =
                setReport(line, hasValue ? argument.sliced(option.size() + 1) : arguments.value(++i));
            if (!problem.isEmpty()) { return wrong(problem); }
        } else if (isOneOf(kToolkitOptionsWithValue, option)) {
            if (!hasValue && ++i == arguments.size()) {
                return wrong(Texts::tr("Option '%1' needs a value.").arg(argument));
            }
        } else if (!isOneOf(kToolkitFlags, argument)) {
            return wrong(Texts::tr("Unknown option '%1'.").arg(argument));
        }
    }
    if (line.mode != Mode::Window && line.discIndex < 0) {
        return wrong(Texts::tr("A report needs a disc."));
    }
    return line;
}

QString helpText()
{
    return Texts::tr(
        "Usage: platterscope [OPTION] [DISC]\n"
        "       platterscope --report text|json DISC\n"
        "\n"
        "Shows the technical makeup of a DVD-Video or Blu-ray disc. DISC is a disc directory or a disc\n"
        "image; it is opened at start, once the service has been given a key.\n"
        "\n"
        "  --report text|json  describe the disc on standard output and exit; needs no window, no key\n"
        "                      and no network. The exit status is 1 where the disc cannot be read.\n"
        "  -h, --help          show this text and exit\n"
        "  -v, --version       show the version and exit\n"
        "\n"
        "PLATTERSCOPE_SERVICE_URL in the environment overrides the address of the Tessera service:\n"
        "https for any host, http for this machine alone.\n");
}

QString helpHint()
{
    return Texts::tr("Try 'platterscope --help'.");
}
