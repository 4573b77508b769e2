#include "tests/tessera_local/test_package.h"
#include "tools/tessera_local/options.h"

#include <gtest/gtest.h>

#include <fstream>

namespace tessera_local {

namespace {

using Action = CommandLine::Action;

// The error of a command line that must be refused.
std::string refusalOf(const std::vector<std::string>& arguments)
{
    const CommandLine commandLine = parseCommandLine(arguments);
    EXPECT_EQ(commandLine.action, Action::Refuse);
    return commandLine.error;
}

}  // namespace

TEST(Options, ReadsUsersInOrderFromTheLineAndFromFiles)
{
    const TemporaryFolder folder;
    std::ofstream(folder.file("keys")) << "# a comment=nobody\n\nfile==key==carol\r\nlast=d\xC3\xA4ve";
    const CommandLine commandLine =
        parseCommandLine({"--keys-file", folder.file("keys"), "--database=x.db", "--key", "k1=alice", "--key",
                          "k2=bob", "--port", "65535"});
    ASSERT_EQ(commandLine.action, Action::Serve) << commandLine.error;
    EXPECT_EQ(commandLine.options.databasePath, "x.db");
    EXPECT_EQ(commandLine.options.host, "127.0.0.1");
    EXPECT_EQ(commandLine.options.port, 65535);
    const std::vector<User>& users = commandLine.options.users;
    ASSERT_EQ(users.size(), 4U);
    const std::vector<std::pair<std::string, std::string>> expected{
        {"k1", "alice"}, {"k2", "bob"}, {"file==key=", "carol"}, {"last", "d\xC3\xA4ve"}};
    for (std::size_t i = 0; i < users.size(); ++i) {
        EXPECT_EQ(users[i].uid, static_cast<std::int64_t>(i) + 1);
        EXPECT_EQ(std::pair(users[i].key, users[i].name), expected[i]);
    }
}

TEST(Options, RefusesWrongUseWithoutTellingAKey)
{
    const TemporaryFolder folder;
    std::ofstream(folder.file("keys")) << "good=alice\nSECRET\n";
    const std::vector<std::string> start{"--database", "x.db"};
    const std::vector<std::vector<std::string>> endings{{"--key", "SECRET"},
                                                        {"--key", "=alice"},
                                                        {"--key", "SECRET="},
                                                        {"--key", "SECRET X=alice"},
                                                        {"--key", "SEC%52ET=a"},
                                                        {"--key", "SECRET=a", "--key", "SECRET=b"},
                                                        {"-key=SECRET"},
                                                        {"--kye", "SECRET=alice"},
                                                        {"--key", "SECRET=a\x01"},
                                                        {"--keys-file", folder.file("keys")},
                                                        {"SECRET"},
                                                        {}};
    for (const std::vector<std::string>& ending : endings) {
        std::vector<std::string> arguments = start;
        arguments.insert(arguments.end(), ending.begin(), ending.end());
        const std::string error = refusalOf(arguments);
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(error.find("SECRET"), std::string::npos) << error;
    }
    EXPECT_NE(refusalOf({"--database", "x", "--keys-file", folder.file("keys")}).find("line 2"),
              std::string::npos);
    EXPECT_NE(refusalOf({"--database", "x", "--keys-file", folder.file("none")}).find("cannot read"),
              std::string::npos);
    refusalOf({"--key", "k=alice"});
    for (const char* port : {"-1", "65536", "", "80x"}) {
        refusalOf({"--database", "x", "--key", "k=a", std::string("--port=") + port});
    }
}

TEST(Options, HelpAndVersionNeedNothingElse)
{
    EXPECT_EQ(parseCommandLine({"--help"}).action, Action::ShowHelp);
    EXPECT_EQ(parseCommandLine({"--version"}).action, Action::ShowVersion);
}

}  // namespace tessera_local
