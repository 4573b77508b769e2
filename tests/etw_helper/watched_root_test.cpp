#include "etw_helper/watched_root.h"

#include <gtest/gtest.h>

#include <filesystem>

using etw_helper::deviceForm;
using etw_helper::WatchedRoot;
namespace fs = std::filesystem;

namespace {

std::wstring dosPath(const WatchedRoot& root, std::wstring_view devicePath)
{
    return root.dosPath(devicePath).value_or(L"none");
}

TEST(WatchedRoot, NamesFilesBelowItByItsDosForm)
{
    for (const wchar_t* end : {L"", L"\\"}) {
        const WatchedRoot root(LR"(C:\Discs\Film)" + std::wstring(end),
                               LR"(\Device\HarddiskVolume3\Discs\Film)" + std::wstring(end));
        EXPECT_TRUE(dosPath(root, LR"(\Device\HarddiskVolume3\Discs\Film\BDMV\A.m2ts)") ==
                    LR"(C:\Discs\Film\BDMV\A.m2ts)");
        EXPECT_TRUE(dosPath(root, LR"(\DEVICE\harddiskvolume3\DISCS\film\a)") == LR"(C:\Discs\Film\a)");
        for (const wchar_t* other :
             {LR"(\Device\HarddiskVolume3\Discs\Film)", LR"(\Device\HarddiskVolume3\Discs\Film\)",
              LR"(\Device\HarddiskVolume3\Discs\Film 2\a)", LR"(\Device\HarddiskVolume3\Discs\a)",
              LR"(\Device\HarddiskVolume33\Discs\Film\a)", LR"(C:\Discs\Film\a)", L""}) {
            EXPECT_EQ(root.dosPath(other), std::nullopt);
        }
    }
}

TEST(WatchedRoot, MayBeAWholeDrive)
{
    const WatchedRoot root(LR"(D:\)", LR"(\Device\CdRom0\)");
    EXPECT_TRUE(dosPath(root, LR"(\Device\CdRom0\BDMV\a)") == LR"(D:\BDMV\a)");
    EXPECT_EQ(root.dosPath(LR"(\Device\CdRom01\a)"), std::nullopt);
    EXPECT_EQ(root.dosPath(LR"(\Device\CdRom0\)"), std::nullopt);
}

TEST(WatchedRoot, LetterCaseIsThatOfTheFileSystem)
{
    const WatchedRoot root(L"D:\\caf\u00E9", L"\\Device\\CdRom0\\caf\u00E9");
    EXPECT_TRUE(root.dosPath(L"\\Device\\CdRom0\\CAF\u00C9\\a").has_value());
    EXPECT_FALSE(root.dosPath(L"\\Device\\CdRom0\\cafe\\a").has_value());
}

TEST(WatchedRoot, DeviceFormIsTheSystems)
{
    const fs::path folder = fs::canonical(fs::temp_directory_path()) / L"Disc \u20AC";
    fs::create_directory(folder);
    DWORD errorNumber = 0;
    const auto device = deviceForm(folder.native(), errorNumber);
    ASSERT_TRUE(device.has_value()) << errorNumber;
    EXPECT_TRUE(device->starts_with(LR"(\Device\)"));
    EXPECT_TRUE(device->ends_with(LR"(\Disc )"
                                  L"\u20AC"));
    const WatchedRoot root(folder.native(), *device);
    EXPECT_TRUE(dosPath(root, *device + LR"(\file)") == folder.native() + LR"(\file)");
    fs::remove(folder);
    EXPECT_EQ(deviceForm(folder.native(), errorNumber), std::nullopt);
    EXPECT_EQ(errorNumber, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

}  // namespace
