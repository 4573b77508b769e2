#include "etw_helper/watched_root.h"

#include <gtest/gtest.h>

#include <filesystem>

using etw_helper::deviceForm;
using etw_helper::WatchedRoot;
namespace fs = std::filesystem;

namespace {

TEST(WatchedRoot, NamesFilesBelowItByItsDosForm)
{
    const WatchedRoot film(L"C:\\D\\Film", L"\\Device\\V3\\D\\Film");
    const WatchedRoot drive(L"D:\\", L"\\Device\\CdRom0\\");
    const WatchedRoot letter(L"D:\\\u00E9\\", L"\\Device\\CdRom0\\\u00E9\\");
    const struct {
        const WatchedRoot& root;
        std::wstring devicePath;
        std::wstring dosPath;  // "": the file is not below the root
    } rows[] = {{film, L"\\Device\\V3\\D\\Film\\B\\A.m2ts", L"C:\\D\\Film\\B\\A.m2ts"},
                {film, L"\\DEVICE\\v3\\d\\FILM\\a", L"C:\\D\\Film\\a"},
                {film, L"\\Device\\V3\\D\\Film", L""},
                {film, L"\\Device\\V3\\D\\Film\\", L""},
                {film, L"\\Device\\V3\\D\\Film 2\\a", L""},
                {film, L"\\Device\\V33\\D\\Film\\a", L""},
                {film, L"C:\\D\\Film\\a", L""},
                {film, L"", L""},
                {drive, L"\\Device\\CdRom0\\B\\a", L"D:\\B\\a"},
                {drive, L"\\Device\\CdRom01\\a", L""},
                {drive, L"\\Device\\CdRom0\\", L""},
                // Upper and lower case as the file system pairs them.
                {letter, L"\\Device\\CdRom0\\\u00C9\\a", L"D:\\\u00E9\\a"},
                {letter, L"\\Device\\CdRom0\\e\\a", L""}};
    for (const auto& row : rows) {
        EXPECT_EQ(fs::path(row.root.dosPath(row.devicePath).value_or(L"")), fs::path(row.dosPath));
    }
}

TEST(WatchedRoot, DeviceFormIsTheSystems)
{
    const fs::path folder = fs::canonical(fs::temp_directory_path()) / L"Disc \u20AC";
    fs::create_directory(folder);
    DWORD errorNumber = 0;
    const auto device = deviceForm(folder.native(), errorNumber);
    ASSERT_TRUE(device.has_value()) << errorNumber;
    EXPECT_TRUE(device->starts_with(L"\\Device\\"));
    EXPECT_TRUE(device->ends_with(L"\\Disc \u20AC"));
    fs::remove(folder);
    EXPECT_EQ(deviceForm(folder.native(), errorNumber), std::nullopt);
    EXPECT_EQ(errorNumber, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

}  // namespace
