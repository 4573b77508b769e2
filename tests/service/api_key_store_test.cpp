#include "tests/service/key_home.h"
#include "tests/support/fault_table.h"

#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;
using testsupport::recordFault;
using testsupport::ScopedEnvironment;
namespace fs = std::filesystem;

namespace {

constexpr char kNotConfigured[] = "Tessera API key is not configured.";
constexpr char kOthersHaveAccess[] = "The API key file can be accessed by other users.";

using ApiKeyStore = KeyHome;

}  // namespace

TEST_F(ApiKeyStore, SavesAndLoadsTheKeyTrimmed)
{
    EXPECT_EQ(service::apiKeyFilePath().toStdString(), m_file);
    EXPECT_EQ(loaded(), "<" + std::string(kNotConfigured) + ">");
    EXPECT_EQ(saved(u" \t k\u00E9y 1\n"_s), "");
    EXPECT_EQ(fileContent(), "k\u00E9y 1");
    EXPECT_EQ(loaded(), "k\u00E9y 1");
    EXPECT_EQ(saved(u"another"_s), "");
    EXPECT_EQ(loaded(), "another");
    EXPECT_EQ(entryCount(), 1);
}

TEST_F(ApiKeyStore, LoadsWhatAnEditorMayHaveWritten)
{
    writeFile("\r\n  key \r\n");
    EXPECT_EQ(loaded(), "key");
    writeFile("\xEF\xBB\xBFkey\n");
    EXPECT_EQ(loaded(), "key");
    writeFile("REPLACE_WITH_YOUR_API_KEY\n");
    EXPECT_EQ(loaded(), "REPLACE_WITH_YOUR_API_KEY");
    EXPECT_FALSE(service::isConfiguredKey(u"REPLACE_WITH_YOUR_API_KEY"_s));
    for (const std::string& content :
         {std::string(), std::string(" \t\r\n"), std::string("a\nb"), std::string("a\0b", 3),
          std::string("a\x7F"
                      "b")}) {
        writeFile(content);
        EXPECT_EQ(loaded(), "<" + std::string(kNotConfigured) + ">") << content;
    }
    writeFile(std::string(1'000'000, 'k'));
    EXPECT_EQ(loaded(), readFailure());
}

TEST_F(ApiKeyStore, OutputsMayBeMissing)
{
    writeFile("key");
    QString key;
    QString errorText;
    EXPECT_TRUE(service::loadApiKey(&key));
    EXPECT_FALSE(service::loadApiKey(nullptr));
    EXPECT_FALSE(service::loadApiKey(nullptr, &errorText));
    EXPECT_EQ(errorText.toStdString(), "No API key output was provided.");
    EXPECT_TRUE(service::saveApiKey(key));
}

TEST_F(ApiKeyStore, NothingIsEverOpenToOthers)
{
    ::umask(0);
    EXPECT_EQ(saved(u"key"_s), "");
    EXPECT_EQ(rightsOf(m_file), 0600U);
    EXPECT_EQ(rightsOf(m_directory), 0700U);
    // Saving puts a new file in the place of one whose rights were wide.
    ASSERT_EQ(::chmod(m_file.c_str(), 0666), 0);
    EXPECT_EQ(saved(u"other key"_s), "");
    EXPECT_EQ(rightsOf(m_file), 0600U);
}

TEST_F(ApiKeyStore, LoadingSetsTheRightsAgain)
{
    for (const mode_t mode : {0666U, 0644U, 0604U, 0400U, 0U, 04755U}) {
        writeFile("key", mode);
        EXPECT_EQ(loaded(), "key") << mode;
        EXPECT_EQ(rightsOf(m_file), 0600U) << mode;
        fs::remove(m_file);
    }
    recordFault("Key file: readable by others", "its rights are narrowed before it is read", 6);
}

TEST_F(ApiKeyStore, OnlyARegularFileIsRead)
{
    fs::create_directory(m_directory);
    const fs::path target = m_home / "target";
    std::ofstream(target) << "key";
    ASSERT_EQ(::chmod(target.c_str(), 0644), 0);
    fs::create_symlink(target, m_file);
    EXPECT_EQ(loaded(), readFailure());
    EXPECT_EQ(rightsOf(target), 0644U);

    fs::remove(m_file);
    fs::create_symlink(m_home / "nowhere", m_file);
    EXPECT_EQ(loaded(), readFailure());

    fs::remove(m_file);
    fs::create_directory(m_file);
    EXPECT_EQ(loaded(), readFailure());

    fs::remove(m_file);
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    EXPECT_EQ(loaded(), readFailure());  // and does not wait for a writer
    recordFault("Key file: a link, a directory or a pipe in its place", "refused at once, untouched", 4);
}

TEST_F(ApiKeyStore, AnotherUsersFileIsNotRead)
{
    if (!m_isRoot) { GTEST_SKIP() << "only root can make a file of another user"; }
    writeFile("key", 0644);
    become(0);
    EXPECT_EQ(loaded(), "<Could not restrict the API key file to its owner (error 1).>");
    ASSERT_EQ(::chown(m_file.c_str(), 0, 0), 0);
    become(kNobody);
    EXPECT_EQ(loaded(), "<Could not restrict the API key file to its owner (error 1).>");
    EXPECT_EQ(rightsOf(m_file), 0644U);
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), kOthersHaveAccess);
    recordFault("Key file: it belongs to another user", "not read, its rights untouched", 2);
}

TEST_F(ApiKeyStore, AnUnsearchableDirectoryHidesTheOwner)
{
    writeFile("key");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0), 0);
    EXPECT_EQ(loaded(), "<Could not read the API key file owner (error 13).>");
    recordFault("Key file: its directory cannot be searched", "not read, with a message");
}

TEST_F(ApiKeyStore, OldKeySurvivesADirectoryThatCannotBeWritten)
{
    EXPECT_EQ(saved(u"old"_s), "");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0500), 0);
    EXPECT_EQ(saved(u"new"_s), writeFailure());
    EXPECT_EQ(loaded(), "old");
    recordFault("Key file: its directory is read-only", "not saved, the old key stands");
}

TEST_F(ApiKeyStore, OldKeySurvivesAWriteThatFallsShort)
{
    EXPECT_EQ(saved(u"old"_s), "");
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit tiny = former;
    tiny.rlim_cur = 5;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
    const std::string text = saved(u"a longer key"_s);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &former), 0);
    std::signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(text, writeFailure());
    EXPECT_EQ(loaded(), "old");
    EXPECT_EQ(entryCount(), 1);
    recordFault("Key file: a disk that fills up", "not saved, the old key stands");
}

TEST_F(ApiKeyStore, WhatCannotBeReplacedStays)
{
    fs::create_directories(m_file / "inside");
    EXPECT_EQ(saved(u"new"_s), writeFailure());
    EXPECT_TRUE(fs::is_directory(m_file / "inside"));
    EXPECT_EQ(entryCount(), 1);
    recordFault("Key file: a directory in its place, when it is saved", "not saved, nothing changed");
}

TEST_F(ApiKeyStore, SaysThatTheDirectoryCannotBeMade)
{
    const std::string text = "Failed to create configuration directory: " + m_directory.string();
    std::ofstream(m_directory) << "a file";
    EXPECT_EQ(saved(u"key"_s), text);
    EXPECT_EQ(loaded(), "<" + std::string(kNotConfigured) + ">");
    fs::remove(m_directory);
    ASSERT_EQ(::chmod(m_home.c_str(), 0500), 0);
    EXPECT_EQ(saved(u"key"_s), text);
    recordFault("Key file: its directory cannot be made", "not saved, with a message", 2);
}

TEST_F(ApiKeyStore, MissingParentsAreMade)
{
    const ScopedEnvironment deeper("HOME", m_home / "a" / "b");
    EXPECT_EQ(saved(u"key"_s), "");
    EXPECT_EQ(rightsOf(m_home / "a" / "b" / ".127.0.0.1" / "ApiKey.txt"), 0600U);
}

TEST_F(ApiKeyStore, SecurityCheckSeesWhoElseCouldReadOrReplaceTheFile)
{
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), "");
    writeFile("key", 0600);
    ASSERT_EQ(::chmod(m_directory.c_str(), 0755), 0);
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), "");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0775), 0);
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), kOthersHaveAccess);
    EXPECT_EQ(saved(u"key"_s), "");
    EXPECT_EQ(rightsOf(m_directory), 0755U) << "saving takes away what the check complains of";
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), "");
    for (const mode_t mode : {0640U, 0604U, 0602U, 0610U}) {
        writeFile("key", mode);
        EXPECT_EQ(service::apiKeyFileProblem().toStdString(), kOthersHaveAccess) << mode;
        EXPECT_EQ(rightsOf(m_file), mode);
    }
    fs::rename(m_file, m_directory / "target");
    fs::create_symlink("target", m_file);
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), kOthersHaveAccess);
}

TEST_F(ApiKeyStore, RefusedServiceAddressTouchesNoFile)
{
    writeFile("key", 0644);
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", "http://tessera.example");
    const std::string problem =
        "The Tessera service address must use https; http is allowed for this computer alone.";
    EXPECT_EQ(loaded(), "<" + problem + ">");
    EXPECT_EQ(saved(u"key"_s), problem);
    EXPECT_EQ(service::apiKeyFileProblem().toStdString(), "");
    EXPECT_EQ(service::apiKeyFilePath().toStdString(), "");
    EXPECT_EQ(rightsOf(m_file), 0644U);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_home), fs::directory_iterator()), 1);
}
