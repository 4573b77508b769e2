#include "app/command_line.h"

#include "app/identity.h"

#include <QCoreApplication>

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

CommandLine wrong(const QString& problem)
{
    return {CommandLine::Mode::Wrong, {}, problem};
}

}  // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    CommandLine line;
    bool optionsEnded = false;
    bool hasDisc = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (!optionsEnded && argument.size() > 1 && argument.startsWith(QLatin1Char('-'))) {
            if (argument == QLatin1StringView("--")) {
                optionsEnded = true;
            } else if (argument == QLatin1StringView("--help") || argument == QLatin1StringView("-h")) {
                return {CommandLine::Mode::Help, {}, {}};
            } else if (argument == QLatin1StringView("--version") || argument == QLatin1StringView("-v")) {
                return {CommandLine::Mode::Version, {}, {}};
            } else if (const ToolkitOption option = toolkitOption(argument); option == ToolkitOption::None) {
                return wrong(Texts::tr("Unknown option '%1'.").arg(argument));
            } else if (option == ToolkitOption::ValueFollows && ++i == arguments.size()) {
                return wrong(Texts::tr("Option '%1' needs a value.").arg(argument));
            }
        } else if (hasDisc) {
            return wrong(Texts::tr("Only one disc can be opened; '%1' is one too many.").arg(argument));
        } else {
            line.disc = argument;
            hasDisc = true;
        }
    }
    return line;
}

QString helpText()
{
    return Texts::tr(
        "Usage: platterscope [OPTION] [DISC]\n"
        "\n"
        "Shows the technical makeup of a DVD-Video or Blu-ray disc. DISC is a disc directory or a disc\n"
        "image; it is opened at start, once the service has been given a key.\n"
        "\n"
        "  -h, --help     show this text and exit\n"
        "  -v, --version  show the version and exit\n"
        "\n"
        "PLATTERSCOPE_SERVICE_URL in the environment overrides the address of the Tessera service:\n"
        "https for any host, http for this machine alone.\n");
}
