#include "tools/tessera_local/options.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <fstream>
#include <optional>

namespace tessera_local {

namespace {

constexpr char kHelp[] =
    R"(Usage: tessera_local --database FILE (--key KEY=USER | --keys-file FILE)... [options]

A Tessera service of your own: it keeps the title packages of discs and what people write about their titles,
and tells those who ask whether a disc is known.

  --database FILE      the SQLite file to keep everything in; made for its owner alone when absent
  --key KEY=USER       lets USER in with KEY; may be repeated. Other users of this computer can see the
                       arguments of a running program: prefer --keys-file for a key that matters
  --keys-file FILE     lines KEY=USER; empty lines and those that begin with # are passed over; repeatable
  --host ADDRESS       the address to listen on (127.0.0.1: this computer alone)
  --port NUMBER        the port to listen on (0: any free one)
  --latest-version V   the newest version of the program, told to those who authenticate
  --help               prints this text
  --version            prints the version

KEY ends at the last "=", and holds printable ASCII characters except blank and "%". Users are numbered from
1, those of --key first. Once it listens, the service prints its address on standard output, in one line:
  tessera_local: listening on http://127.0.0.1:40123
Each request is one line on standard error: method, path and status. SIGINT and SIGTERM end the service.
Exit status: 0 ended by a signal, 1 the database or the port cannot be used, 2 wrong arguments.

The web pages, for a browser. They need no key: whoever reaches the service may use them. They answer to IP
addresses, to localhost and to the name given with --host.
  /tessera/bluray/new/?uid=N       /tessera/dvd/new/?uid=N
       the form that adds a configuration to disc N; "local" with UID 1 counts as the one who added it

The wire. Each of its requests carries the header "apiKey: KEY". Success is status 200; any other status
comes with a text for people. One request per connection.
  POST /api/tessera/user/
       gives {"UID": number, "Username": text, "LatestVersion": text (only when it was given above)}
  POST /api/tessera/bluray/find/   POST /api/tessera/dvd/find/
       gives {"Disc ID": number or null, "Configurations": [...]}
  POST /api/tessera/bluray/add/    POST /api/tessera/dvd/add/
       gives the disc's number as plain digits; a known disc keeps its number
  GET  /api/tessera/bluray/configurations/get/?discId=N   GET /api/tessera/dvd/configurations/get/?discId=N
       gives the disc's configurations as an array of {"UID", "Disc ID", "Language Code",
       "Added By Username", "Added By UID", "Data" (JSON in a string)}
"find" and "add" take the title package as a zlib stream of at most 256 MiB that inflates to at most 1 GiB:
  Content-Type: application/vnd.platterscope.bluray-title-package   (or dvd-title-package)
  Content-Encoding: deflate
  Content-Length: bytes of the stream
  X-Platterscope-Package-SHA256: digest of the package before deflation, 64 lower-case hexadecimal digits
)";

// Adds the user of one KEY=USER text. Gives what is wrong with it, quoting neither key nor text.
std::optional<std::string> addUser(std::vector<User>& users, const std::string& text)
{
    const std::size_t split = text.rfind('=');
    if (split == std::string::npos || split == 0 || split + 1 == text.size()) {
        return "a key must be given as KEY=USER";
    }
    User user{static_cast<std::int64_t>(users.size()) + 1, text.substr(split + 1), text.substr(0, split)};
    // The HTTP library decodes "%" sequences in header values, so a key with one could never match.
    const auto isAllowed = [](char c) { return c > ' ' && c < 0x7F && c != '%'; };
    if (!std::all_of(user.key.begin(), user.key.end(), isAllowed)) {
        return "a key may hold printable ASCII characters only, and neither blank nor \"%\"";
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString name = utf8(user.name);
    if (utf8.hasError() || std::any_of(name.begin(), name.end(), [](QChar c) { return !c.isPrint(); })) {
        return "a user's name must be printable UTF-8 text";
    }
    const auto isSameKey = [&user](const User& other) { return other.key == user.key; };
    if (std::any_of(users.begin(), users.end(), isSameKey)) { return "a key is given to two users"; }
    users.push_back(std::move(user));
    return std::nullopt;
}

std::optional<std::string> addUsersOfFile(std::vector<User>& users, const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') { line.pop_back(); }
        if (line.empty() || line.front() == '#') { continue; }
        if (const auto error = addUser(users, line)) {
            return "'" + path + "' line " + std::to_string(number) + ": " + *error;
        }
    }
    if (!file.eof()) { return "cannot read '" + path + "'"; }
    return std::nullopt;
}

// Fills the options; gives what is wrong with them.
std::optional<std::string> readOptions(const QCommandLineParser& parser, Options& options)
{
    const auto value = [&parser](const char* name) {
        return parser.value(QLatin1String(name)).toStdString();
    };
    if (!parser.positionalArguments().isEmpty()) { return "an argument that is no option"; }
    options.databasePath = value("database");
    if (options.databasePath.empty()) { return "no database: give --database FILE"; }
    options.latestVersion = value("latest-version");
    options.host = value("host");
    if (options.host.empty()) { return "--host needs an address"; }
    bool isNumber = false;
    options.port = parser.value(QStringLiteral("port")).toUShort(&isNumber);
    if (!isNumber) { return "--port needs a number from 0 to 65535"; }

    for (const QString& text : parser.values(QStringLiteral("key"))) {
        if (auto error = addUser(options.users, text.toStdString())) { return error; }
    }
    for (const QString& path : parser.values(QStringLiteral("keys-file"))) {
        if (auto error = addUsersOfFile(options.users, path.toStdString())) { return error; }
    }
    if (options.users.empty()) {
        return "nobody could use the service: give --key KEY=USER or --keys-file FILE";
    }
    return std::nullopt;
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    QStringList list{QStringLiteral("tessera_local")};
    for (const std::string& argument : arguments) {
        list << QString::fromStdString(argument);
    }

    QCommandLineParser parser;
    // Else "-key=..." would be taken, and its unknown letters told, one by one.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    for (const char* name : {"database", "key", "keys-file", "latest-version"}) {
        parser.addOption({QLatin1String(name), {}, QStringLiteral("VALUE")});
    }
    parser.addOption({QStringLiteral("host"), {}, QStringLiteral("VALUE"), QStringLiteral("127.0.0.1")});
    parser.addOption({QStringLiteral("port"), {}, QStringLiteral("VALUE"), QStringLiteral("0")});
    parser.addOption(QCommandLineOption(QStringLiteral("help")));
    parser.addOption(QCommandLineOption(QStringLiteral("version")));

    CommandLine commandLine;
    if (!parser.parse(list)) {
        commandLine.error = parser.errorText().toStdString();
    } else if (parser.isSet(QStringLiteral("help"))) {
        commandLine.action = CommandLine::Action::ShowHelp;
    } else if (parser.isSet(QStringLiteral("version"))) {
        commandLine.action = CommandLine::Action::ShowVersion;
    } else if (const auto error = readOptions(parser, commandLine.options)) {
        commandLine.error = *error;
    } else {
        commandLine.action = CommandLine::Action::Serve;
    }
    return commandLine;
}

std::string helpText()
{
    return kHelp;
}

}  // namespace tessera_local
