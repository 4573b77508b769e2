// The command line of the local Tessera service.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tessera_local {

// A user of the service. The key is a secret: it is compared, never shown and never logged.
struct User {
    std::int64_t uid = 0;
    std::string name;
    std::string key;
};

struct Options {
    std::string databasePath;
    std::string host;
    int port = 0;               // 0: any free one
    std::string latestVersion;  // of the program, for the reply to its authentication; empty: none
    std::vector<User> users;    // uids from 1 in the order given
};

struct CommandLine {
    enum class Action { Serve, ShowHelp, ShowVersion, Refuse };

    Action action = Action::Refuse;
    Options options;    // for Serve
    std::string error;  // for Refuse: one sentence, without any key
};

// Reads the arguments (UTF-8, without the program's name) and the key files that they name.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace tessera_local
