#include "service/api_key_store.h"
#include "tests/support/scoped_environment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

using namespace Qt::StringLiterals;
using testsupport::ScopedEnvironment;
namespace fs = std::filesystem;

namespace {

constexpr char kNotConfigured[] = "Tessera API key is not configured.";
constexpr char kOthersHaveAccess[] = "The API key file can be accessed by other users.";

// A home directory of its own. Rights mean nothing to root, who therefore becomes another user meanwhile.
class ApiKeyStore : public testing::Test {
protected:
    static constexpr uid_t kNobody = 65534;

    static void become(uid_t user)
    {
        ASSERT_EQ(::seteuid(user), 0);
        ::prctl(PR_SET_DUMPABLE, 1);  // or /proc/self would belong to root
    }

    void SetUp() override
    {
        ASSERT_TRUE(m_temporary.isValid());
        if (m_isRoot) {
            ASSERT_EQ(::chown(m_home.c_str(), kNobody, kNobody), 0);
            become(kNobody);
        }
    }

    void TearDown() override
    {
        ::umask(022);
        if (m_isRoot) { become(0); }
        fs::permissions(m_home, fs::perms::owner_all);
        if (fs::is_directory(m_directory)) { fs::permissions(m_directory, fs::perms::owner_all); }
    }

    void writeFile(const std::string& content, mode_t mode = 0600) const
    {
        fs::create_directory(m_directory);
        std::ofstream(m_file, std::ios::binary) << content;
        ASSERT_EQ(::chmod(m_file.c_str(), mode), 0);
    }

    [[nodiscard]] std::string fileContent() const
    {
        std::ifstream file(m_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    [[nodiscard]] static unsigned rightsOf(const fs::path& path)
    {
        return static_cast<unsigned>(fs::symlink_status(path).permissions());
    }

    // The key loaded, or the failure's text in angle brackets.
    [[nodiscard]] static std::string loaded()
    {
        QString key = u"old content"_s;
        QString errorText = u"old text"_s;
        if (service::loadApiKey(&key, &errorText)) {
            EXPECT_TRUE(errorText.isEmpty());
            return key.toStdString();
        }
        EXPECT_TRUE(key.isEmpty());
        return "<" + errorText.toStdString() + ">";
    }

    // The failure's text; empty on success.
    [[nodiscard]] static std::string saved(const QString& key)
    {
        QString errorText = u"old text"_s;
        const bool isSaved = service::saveApiKey(key, &errorText);
        EXPECT_EQ(isSaved, errorText.isEmpty());
        EXPECT_FALSE(errorText.contains(key.trimmed()));
        return errorText.toStdString();
    }

    [[nodiscard]] std::string readFailure() const
    {
        return "<Failed to read API key file: " + m_file.string() + ">";
    }

    [[nodiscard]] std::string writeFailure() const
    {
        return "Failed to write API key file: " + m_file.string();
    }

    // So many entries beside the key file: what a failed save left behind would count.
    [[nodiscard]] std::ptrdiff_t entryCount() const
    {
        return std::distance(fs::directory_iterator(m_directory), fs::directory_iterator());
    }

    const bool m_isRoot = ::geteuid() == 0;
    QTemporaryDir m_temporary;
    const fs::path m_home = m_temporary.path().toStdString();
    const fs::path m_directory = m_home / ".127.0.0.1";
    const fs::path m_file = m_directory / "ApiKey.txt";
    const ScopedEnvironment m_homeVariable{"HOME", m_home};
    const ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", "http://127.0.0.1:8080"};
};

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
}

TEST_F(ApiKeyStore, AnUnsearchableDirectoryHidesTheOwner)
{
    writeFile("key");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0), 0);
    EXPECT_EQ(loaded(), "<Could not read the API key file owner (error 13).>");
}

TEST_F(ApiKeyStore, OldKeySurvivesADirectoryThatCannotBeWritten)
{
    EXPECT_EQ(saved(u"old"_s), "");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0500), 0);
    EXPECT_EQ(saved(u"new"_s), writeFailure());
    EXPECT_EQ(loaded(), "old");
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
}

TEST_F(ApiKeyStore, WhatCannotBeReplacedStays)
{
    fs::create_directories(m_file / "inside");
    EXPECT_EQ(saved(u"new"_s), writeFailure());
    EXPECT_TRUE(fs::is_directory(m_file / "inside"));
    EXPECT_EQ(entryCount(), 1);
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
