#include "tools/tessera_local/options.h"

#include <QCommandLineParser>
#include <QStringDecoder>

#include <algorithm>
#include <fstream>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

using WrongUse = std::invalid_argument;  // what() becomes CommandLine::error

// Adds the user of one KEY=USER text. The errors quote no part of the text, which may be a key.
void addUser(std::vector<User>& users, const std::string& text)
{
    const std::size_t split = text.rfind('=');
    if (split == std::string::npos || split == 0 || split + 1 == text.size()) {
        throw WrongUse("a key must be given as KEY=USER");
    }
    User user{static_cast<std::int64_t>(users.size()) + 1, text.substr(split + 1), text.substr(0, split)};
    // The HTTP library decodes "%" sequences in header values, so a key with one could never match.
    const auto isAllowed = [](char c) { return c > ' ' && c < 0x7F && c != '%'; };
    if (!std::all_of(user.key.begin(), user.key.end(), isAllowed)) {
        throw WrongUse("a key may hold printable ASCII characters only, and neither blank nor \"%\"");
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString name = utf8(user.name);
    if (utf8.hasError() || std::any_of(name.begin(), name.end(), [](QChar c) { return !c.isPrint(); })) {
        throw WrongUse("a user's name must be printable UTF-8 text");
    }
    const auto isSameKey = [&user](const User& other) { return other.key == user.key; };
    if (std::any_of(users.begin(), users.end(), isSameKey)) { throw WrongUse("a key is given to two users"); }
    users.push_back(std::move(user));
}

void addUsersOfFile(std::vector<User>& users, const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') { line.pop_back(); }
        if (line.empty() || line.front() == '#') { continue; }
        try {
            addUser(users, line);
        } catch (const WrongUse& error) {
            throw WrongUse("'" + path + "' line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (!file.eof()) { throw WrongUse("cannot read '" + path + "'"); }
}

Options readOptions(const QCommandLineParser& parser)
{
    if (!parser.positionalArguments().isEmpty()) { throw WrongUse("an argument that is no option"); }
    bool isNumber = false;
    Options options{.databasePath = parser.value(u"database"_s).toStdString(),
                    .host = parser.value(u"host"_s).toStdString(),
                    .port = parser.value(u"port"_s).toUShort(&isNumber),
                    .latestVersion = parser.value(u"latest-version"_s).toStdString(),
                    .users = {}};
    if (options.databasePath.empty()) { throw WrongUse("no database: give --database FILE"); }
    if (options.host.empty()) { throw WrongUse("--host needs an address"); }
    if (!isNumber) { throw WrongUse("--port needs a number from 0 to 65535"); }
    for (const QString& text : parser.values(u"key"_s)) {
        addUser(options.users, text.toStdString());
    }
    for (const QString& path : parser.values(u"keys-file"_s)) {
        addUsersOfFile(options.users, path.toStdString());
    }
    if (options.users.empty()) {
        throw WrongUse("nobody could use the service: give --key KEY=USER or --keys-file FILE");
    }
    return options;
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    using Action = CommandLine::Action;
    QStringList list{u"tessera_local"_s};
    for (const std::string& argument : arguments) {
        list << QString::fromStdString(argument);
    }
    QCommandLineParser parser;
    // Otherwise Qt would take "-key=..." for single letters and quote the unknown ones in its error.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    for (const char* name : {"database", "key", "keys-file", "latest-version"}) {
        parser.addOption({QLatin1String(name), {}, u"VALUE"_s});
    }
    parser.addOption({u"host"_s, {}, u"VALUE"_s, u"127.0.0.1"_s});
    parser.addOption({u"port"_s, {}, u"VALUE"_s, u"0"_s});
    parser.addOption(QCommandLineOption(u"help"_s));
    parser.addOption(QCommandLineOption(u"version"_s));
    if (!parser.parse(list)) { return {Action::Refuse, {}, parser.errorText().toStdString()}; }
    if (parser.isSet(u"help"_s)) { return {Action::ShowHelp, {}, {}}; }
    if (parser.isSet(u"version"_s)) { return {Action::ShowVersion, {}, {}}; }
    try {
        return {Action::Serve, readOptions(parser), {}};
    } catch (const WrongUse& error) {
        return {Action::Refuse, {}, error.what()};
    }
}

}  // namespace tessera_local
