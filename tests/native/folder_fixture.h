// A folder of its own for each test, on every system; and rights to files by the system's means (rights_posix.cpp,
// rights_windows.cpp).
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace native_test {

// Lets everybody read the file or directory, and write it if `canWrite`.
[[nodiscard]] bool giveEverybody(const std::filesystem::path& path, bool canWrite);

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
        ASSERT_TRUE((std::ofstream(path, std::ios::binary) << content).flush()) << path;
    }

    // The path as the program passes it: in UTF-8, with slashes.
    [[nodiscard]] static std::string text(const std::filesystem::path& path)
    {
        const std::u8string utf8 = path.generic_u8string();
        return {utf8.begin(), utf8.end()};
    }

    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() /
                                           ("platterscope-native-" + std::to_string(std::random_device()()));
};

}  // namespace native_test
