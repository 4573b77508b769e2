#include "tests/support/temporary_folder.h"
#include "tools/tessera_local/options.h"

#include <gtest/gtest.h>

namespace tessera_local {

using Action = CommandLine::Action;

TEST(Options, ReadsUsersInOrderFromTheLineAndFromFiles)
{
    const testsupport::TemporaryFolder folder;
    std::ofstream(folder / "keys") << "# a comment=nobody\n\nfile==key==carol\r\nlast=d\xC3\xA4ve";
    const CommandLine line = parseCommandLine({"--keys-file", folder / "keys", "--database=x.db", "--key",
                                               "k1=alice", "--key", "k2=bob", "--port", "65535"});
    ASSERT_EQ(line.action, Action::Serve) << line.error;
    EXPECT_EQ(line.options.databasePath + line.options.host + std::to_string(line.options.port),
              "x.db127.0.0.165535");
    std::string users;
    for (const User& user : line.options.users) {
        users += std::to_string(user.uid) + " " + user.name + " " + user.key + "\n";
    }
    EXPECT_EQ(users, "1 alice k1\n2 bob k2\n3 carol file==key=\n4 d\xC3\xA4ve last\n");
    EXPECT_EQ(parseCommandLine({"--help"}).action, Action::ShowHelp);
    EXPECT_EQ(parseCommandLine({"--version"}).action, Action::ShowVersion);
}

TEST(Options, RefusesWrongUseWithoutTellingAKey)
{
    const testsupport::TemporaryFolder folder;
    std::ofstream(folder / "keys") << "good=alice\nSECRET\n";
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
        {{"--key", "SECRET"}, "KEY=USER"},
        {{"--key", "=alice"}, "KEY=USER"},
        {{"--key", "SECRET="}, "KEY=USER"},
        {{"--key", "SECRET X=alice"}, "printable ASCII"},
        {{"--key", "SEC\x7FRET=alice"}, "printable ASCII"},
        {{"--key", "SEC%52ET=a"}, "printable ASCII"},
        {{"--key", "SECRET=a\x01"}, "printable UTF-8"},
        {{"--key", "SECRET=a", "--key", "SECRET=b"}, "two users"},
        {{"-key=SECRET"}, "KEY=USER"},
        {{"--kye", "SECRET=alice"}, "kye"},
        {{"--keys-file", folder / "keys"}, "line 2"},
        {{"--keys-file", folder / "none"}, "cannot read"},
        {{"SECRET"}, "no option"},
        {{}, "nobody"},
        {{"--key=k=a", "--port=-1"}, "--port"},
        {{"--key=k=a", "--port=65536"}, "--port"},
        {{"--key=k=a", "--port=80x"}, "--port"},
        {{"--key=k=a", "--host="}, "--host"},
        {{"--key=k=a", "--database="}, "no database"},
    };
    for (const auto& [arguments, part] : rows) {
        std::vector<std::string> all{"--database", "x.db"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const CommandLine line = parseCommandLine(all);
        EXPECT_EQ(line.action, Action::Refuse) << line.error;
        EXPECT_NE(line.error.find(part), std::string::npos) << line.error;
        EXPECT_EQ(line.error.find("SECRET"), std::string::npos) << line.error;
    }
}

}  // namespace tessera_local
