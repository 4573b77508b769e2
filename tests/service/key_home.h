// What the tests of the key store start from: a home of its own, in which the key file is.
#pragma once

#include "service/api_key_store.h"
#include "tests/support/scoped_environment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

// A home directory of its own. Rights mean nothing to root, who therefore becomes another user meanwhile.
class KeyHome : public testing::Test {
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
        std::filesystem::permissions(m_home, std::filesystem::perms::owner_all);
        if (std::filesystem::is_directory(m_directory)) {
            std::filesystem::permissions(m_directory, std::filesystem::perms::owner_all);
        }
    }

    void writeFile(const std::string& content, mode_t mode = 0600) const
    {
        std::filesystem::create_directory(m_directory);
        std::ofstream(m_file, std::ios::binary) << content;
        ASSERT_EQ(::chmod(m_file.c_str(), mode), 0);
    }

    [[nodiscard]] std::string fileContent() const
    {
        std::ifstream file(m_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    [[nodiscard]] static unsigned rightsOf(const std::filesystem::path& path)
    {
        return static_cast<unsigned>(std::filesystem::symlink_status(path).permissions());
    }

    // The key loaded, or the failure's text in angle brackets.
    [[nodiscard]] static std::string loaded()
    {
        QString key = QStringLiteral("old content");
        QString errorText = QStringLiteral("old text");
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
        QString errorText = QStringLiteral("old text");
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
        return std::distance(std::filesystem::directory_iterator(m_directory),
                             std::filesystem::directory_iterator());
    }

    const bool m_isRoot = ::geteuid() == 0;
    QTemporaryDir m_temporary;
    const std::filesystem::path m_home = m_temporary.path().toStdString();
    const std::filesystem::path m_directory = m_home / ".127.0.0.1";
    const std::filesystem::path m_file = m_directory / "ApiKey.txt";
    const testsupport::ScopedEnvironment m_homeVariable{"HOME", m_home};
    const testsupport::ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", "http://127.0.0.1:8080"};
};
