// A folder of its own for each test, on every system.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace native_test {

class FolderTest : public testing::Test {
protected:
    FolderTest() { std::filesystem::create_directory(m_folder); }
    ~FolderTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    static void write(const std::filesystem::path& path, const std::string& content)
    {
        std::ofstream file(path, std::ios::binary);
        file << content;
        ASSERT_TRUE(file.flush()) << path;
    }

    [[nodiscard]] static std::string contentOf(const std::filesystem::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // As the program would pass it: in UTF-8, with slashes.
    [[nodiscard]] static std::string text(const std::filesystem::path& path)
    {
        const std::u8string utf8 = path.generic_u8string();
        return {utf8.begin(), utf8.end()};
    }

    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() /
                                           ("platterscope-native-" + std::to_string(std::random_device()()));
};

}  // namespace native_test
