#include "app/command_line.h"

#include "base/identity.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <array>

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

// Options that the toolkit takes out of the arguments itself; those of the first table have a value.
constexpr std::array kToolkitOptionsWithValue = {
    "platform", "platformpluginpath", "platformtheme", "plugin",  "qwindowgeometry", "geometry",
    "title",    "qwindowtitle",       "qwindowicon",   "icon",    "session",         "display",
    "style",    "stylesheet",         "fontengine",    "dialogs", "qmljsdebugger"};
constexpr std::array kToolkitFlags = {"reverse", "widgetcount", "nograb", "dograb", "sync"};

enum class ToolkitOption { None, Complete, ValueFollows };

ToolkitOption toolkitOption(const QString& argument)
{
    const QString name = argument.mid(argument.startsWith(QLatin1StringView("--")) ? 2 : 1);
    const auto isNamed = [&name](const char* option) { return name == QLatin1StringView(option); };
    const auto isAssigned = [&name](const char* option) {
        return name.startsWith(QLatin1StringView(option) + QLatin1Char('='));
    };
    if (std::ranges::any_of(kToolkitFlags, isNamed)) { return ToolkitOption::Complete; }
    if (std::ranges::any_of(kToolkitOptionsWithValue, isAssigned)) { return ToolkitOption::Complete; }
    if (std::ranges::any_of(kToolkitOptionsWithValue, isNamed)) { return ToolkitOption::ValueFollows; }
    return ToolkitOption::None;
}

constexpr QLatin1StringView kReport("--report");
constexpr QLatin1StringView kTextFormat("text");
constexpr QLatin1StringView kJsonFormat("json");

// Takes the arguments one after the other; the first that asks for help or version, or that is wrong, ends it.
class Parser {
public:
    explicit Parser(const QStringList& arguments)
        : m_arguments(arguments)
    {}

    CommandLine parse()
    {
        bool optionsEnded = false;
        while (!m_isDone && m_next < m_arguments.size()) {
            const QString& argument = m_arguments.at(m_next++);
            if (optionsEnded || argument.size() < 2 || !argument.startsWith(QLatin1Char('-'))) {
                takeDisc(argument);
            } else if (argument == QLatin1StringView("--")) {
                optionsEnded = true;
            } else {
                takeOption(argument);
            }
        }
        if (isReport() && m_line.discIndex < 0) { endWrong(Texts::tr("A report needs a disc.")); }
        return m_line;
    }

private:
    using Mode = CommandLine::Mode;

    [[nodiscard]] bool isReport() const
    {
        return m_line.mode == Mode::TextReport || m_line.mode == Mode::JsonReport;
    }

    void takeDisc(const QString& argument)
    {
        if (m_line.discIndex >= 0) {
            endWrong(Texts::tr("Only one disc can be opened; '%1' is one too many.").arg(argument));
            return;
        }
        m_line.disc = argument;
        m_line.discIndex = m_next - 1;
    }

    void takeOption(const QString& argument)
    {
        if (argument == QLatin1StringView("--help") || argument == QLatin1StringView("-h")) {
            end(Mode::Help);
        } else if (argument == QLatin1StringView("--version") || argument == QLatin1StringView("-v")) {
            end(Mode::Version);
        } else if (argument == kReport) {
            takeReport(m_next < m_arguments.size() ? m_arguments.at(m_next++) : QString());
        } else if (argument.startsWith(kReport + QLatin1Char('='))) {
            takeReport(argument.sliced(kReport.size() + 1));
        } else if (const ToolkitOption option = toolkitOption(argument); option == ToolkitOption::None) {
            endWrong(Texts::tr("Unknown option '%1'.").arg(argument));
        } else if (option == ToolkitOption::ValueFollows && m_next++ == m_arguments.size()) {
            endWrong(Texts::tr("Option '%1' needs a value.").arg(argument));
        }
    }

    void takeReport(const QString& format)
    {
        if (isReport()) {
            endWrong(Texts::tr("Option '--report' can be given only once."));
        } else if (format == kTextFormat) {
            m_line.mode = Mode::TextReport;
        } else if (format == kJsonFormat) {
            m_line.mode = Mode::JsonReport;
        } else if (format.isEmpty()) {
            endWrong(Texts::tr("Option '--report' needs a format: text or json."));
        } else {
            endWrong(Texts::tr("Unknown report format '%1'; there are text and json.").arg(format));
        }
    }

    void end(Mode mode)
    {
        m_line = CommandLine();
        m_line.mode = mode;
        m_isDone = true;
    }

    void endWrong(const QString& problem)
    {
        end(Mode::Wrong);
        m_line.problem = problem;
    }

    const QStringList& m_arguments;
    qsizetype m_next = 0;
    CommandLine m_line;
    bool m_isDone = false;
};

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
    return Parser(arguments).parse();
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
