// The helper's parts, and the real helper. If it cannot trace (wine has no tracing), it reports that and ends; these tests
// go no further.
#include "etw_helper/access_report.h"
#include "etw_helper/helper_arguments.h"
#include "etw_helper/trace_session.h"
#include "monitor/helper_watch.h"
#include "tests/monitor/reports.h"

#include <windows.h>
#include <gtest/gtest.h>
#include <process.h>

#include <filesystem>
#include <utility>

using etw_helper::kMaximumFiles;
using etw_helper::WatchedRoot;
namespace fs = std::filesystem;

namespace {

TEST(HelperArguments, AreExact)
{
    using Arguments = std::vector<const wchar_t*>;
    const Arguments right = {L"--pipe",       L"p\u00E9",        L"--root",       L"D:\\Film \u20AC",
                             L"--stop-event", L"Local\\stop-it", L"--parent-pid", L"4294967295"};
    const auto parsed = etw_helper::parseHelperArguments(right);
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->pipe + ' ' + parsed->stopEvent, "p\xC3\xA9 Local\\stop-it");
    EXPECT_TRUE(parsed->root == L"D:\\Film \u20AC");
    EXPECT_EQ(parsed->parentProcessId, 4'294'967'295U);
    std::vector<Arguments> wrong = {right, right};
    wrong[0].push_back(L"more");
    std::swap(wrong[1][0], wrong[1][2]);
    for (std::size_t i = 0; i < right.size(); ++i) {
        wrong.emplace_back(right.begin(), right.begin() + static_cast<std::ptrdiff_t>(i));
        wrong.push_back(right);
        wrong.back()[i] = L"";
    }
    for (const wchar_t* id :
         {L"0", L"-1", L"+1", L" 1", L"1 ", L"0x10", L"4294967296", L"18446744073709551617"}) {
        wrong.push_back(right);
        wrong.back().back() = id;
    }
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        EXPECT_EQ(etw_helper::parseHelperArguments(wrong[i]), std::nullopt) << i;
    }
}

// The next helper finds the session of a killed one by its name.
TEST(TraceSession, IsNamedByItsProcess)
{
    EXPECT_EQ(etw_helper::sessionProcessId(etw_helper::sessionName(4711)), 4711U);
    for (const wchar_t* other : {L"", L"Platterscope-ETW-Helper-", L"Platterscope-ETW-Helper-x",
                                 L"x Platterscope-ETW-Helper-1", L"Platterscope-ETW-Helper-0"}) {
        EXPECT_EQ(etw_helper::sessionProcessId(other), std::nullopt);
    }
}

TEST(WatchedRoot, NamesFilesBelowItByItsDosForm)
{
    const WatchedRoot film(L"C:\\D\\Film", L"\\Device\\V3\\D\\Film");
    const WatchedRoot drive(L"D:\\", L"\\Device\\CdRom0\\");
    const WatchedRoot letter(L"D:\\\u00E9\\", L"\\Device\\CdRom0\\\u00E9\\");
    const std::tuple<const WatchedRoot&, std::wstring, std::wstring> rows[] = {
        // L"": the file is not below the root
        {film, L"\\Device\\V3\\D\\Film\\B\\A.m2ts", L"C:\\D\\Film\\B\\A.m2ts"},
        {film, L"\\DEVICE\\v3\\d\\FILM\\a", L"C:\\D\\Film\\a"},
        {film, L"\\Device\\V3\\D\\Film", L""},
        {film, L"\\Device\\V3\\D\\Film\\", L""},
        {film, L"\\Device\\V3\\D\\Film 2\\a", L""},
        {film, L"C:\\D\\Film\\a", L""},
        {drive, L"\\Device\\CdRom0\\B\\a", L"D:\\B\\a"},
        {drive, L"\\Device\\CdRom01\\a", L""},
        {drive, L"\\Device\\CdRom0\\", L""},
        // Upper and lower case as the file system pairs them.
        {letter, L"\\Device\\CdRom0\\\u00C9\\a", L"D:\\\u00E9\\a"},
        {letter, L"\\Device\\CdRom0\\e\\a", L""}};
    for (const auto& [root, devicePath, dosPath] : rows) {
        EXPECT_EQ(fs::path(root.dosPath(devicePath).value_or(L"")), fs::path(dosPath));
    }
}

TEST(WatchedRoot, DeviceFormIsTheSystems)
{
    const fs::path folder = fs::canonical(fs::temp_directory_path()) / L"Disc \u20AC";
    fs::create_directory(folder);
    DWORD errorNumber = 0;
    const std::wstring device = etw_helper::deviceForm(folder.native(), errorNumber).value_or(L"none");
    EXPECT_TRUE(device.starts_with(L"\\Device\\") && device.ends_with(L"\\Disc \u20AC")) << errorNumber;
    fs::remove(folder);
    EXPECT_EQ(etw_helper::deviceForm(folder.native(), errorNumber), std::nullopt);
    EXPECT_EQ(errorNumber, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

class AccessReport : public testing::Test {
protected:
    void begin(std::uint64_t request, std::uint64_t fileObject, const std::wstring& name)
    {
        m_report.openBegins(request, fileObject, LR"(\Device\)" + name);
    }
    void open(std::uint64_t request, std::uint64_t fileObject, const std::wstring& name,
              std::uint32_t status = 0)
    {
        begin(request, fileObject, name);
        m_report.requestEnds(request, status);
    }

    std::string m_messages;  // "2 path; " opened, "3 path; " closed, "4 text; " failed
    etw_helper::AccessReport m_report{WatchedRoot(LR"(D:\)", LR"(\Device\CdRom0\)"),
                                      [this](monitor::MessageKind kind, const std::string& payload) {
                                          m_messages +=
                                              std::to_string(static_cast<int>(kind)) + ' ' + payload + "; ";
                                      }};
};

TEST_F(AccessReport, JoinsTheEventsOfAFile)
{
    begin(7, 100, L"cdrom0\\B\\1.M2TS");
    m_report.requestEnds(8, 0);
    EXPECT_TRUE(m_messages.empty() && m_report.awaitsRequests() && !m_report.awaitsCloses());
    m_report.requestEnds(7, 0);
    EXPECT_TRUE(!m_report.awaitsRequests() && m_report.awaitsCloses());
    for (const std::uint64_t fileObject : {101U, 100U, 100U}) {
        m_report.lastHandleCloses(fileObject);
    }
    EXPECT_EQ(m_messages, "2 D:\\B\\1.M2TS; 3 D:\\B\\1.M2TS; ");
    EXPECT_FALSE(m_report.awaitsCloses());
}

TEST_F(AccessReport, CountsOpensThatSucceed)
{
    open(1, 1, L"CdRom0\\not found", 0xC000'0034);
    open(2, 2, L"CdRom0\\opened again under another name", 0x104);
    open(3, 3, L"CdRom0\\pending", 0x103);
    open(4, 4, L"CdRom1\\of another device");
    open(5, 5, L"CdRom0\\\u00E9");
    open(6, 6, L"CdRom0\\\u00E9");
    open(7, 6, L"CdRom0\\same number");
    begin(8, 8, L"CdRom0\\same request");
    open(8, 9, L"CdRom1\\a");
    for (std::uint64_t fileObject = 1; fileObject < 10; ++fileObject) {
        m_report.lastHandleCloses(fileObject);
    }
    EXPECT_EQ(m_messages, "2 D:\\pending; 2 D:\\\xC3\xA9; 2 D:\\\xC3\xA9; 3 D:\\\xC3\xA9; 2 D:\\same number; "
                          "3 D:\\pending; 3 D:\\\xC3\xA9; 3 D:\\same number; ");
}

TEST_F(AccessReport, RemembersALimitedNumberOfFiles)
{
    for (std::uint64_t i = 0; i < 3 * kMaximumFiles; ++i) {
        begin(i, i, L"CdRom0\\never ended");
    }
    for (std::uint64_t i = 0; i < kMaximumFiles; ++i) {
        open(1'000'000 + i, i, L"CdRom0\\x");
    }
    EXPECT_EQ(std::exchange(m_messages, {}).size(), kMaximumFiles * std::string("2 D:\\x; ").size());
    open(1, 1'000'000, L"CdRom0\\one too many");
    m_report.lastHandleCloses(1);
    EXPECT_EQ(m_messages, "4 The Windows ETW helper cannot follow so many open files.; ");
}

TEST(HelperProcess, ConnectsAndEndsWhenItIsStopped)
{
    const auto run = [](auto... arguments) {
        return ::_spawnl(_P_WAIT, ETW_HELPER, "helper", arguments..., nullptr);
    };
    const std::string id = std::to_string(::GetCurrentProcessId());
    EXPECT_EQ(run("--help"), 2);
    EXPECT_EQ(run("--pipe", "none", "--root", "C:\\", "--stop-event", "none", "--parent-pid", id.c_str()), 1);
    const std::string folder = fs::temp_directory_path().string();
    const char* const noFolder = "The Windows ETW helper could not find the disc's directory (error 2).";
    for (const bool exists : {true, false}) {
        testsupport::Reports reports;
        monitor::HelperWatch watch(monitor::makeHelperChannel(), ETW_HELPER, "etw-test");
        ASSERT_EQ(testsupport::textOf(watch.start(folder + (exists ? "" : "\\none"), reports.sink())), "");
        if (!exists) { EXPECT_EQ(reports.after("FAILED"), std::string("FAILED HelperFailed ") + noFolder); }
        const auto begin = std::chrono::steady_clock::now();
        watch.stop();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));  // after 5 it gives up
        EXPECT_EQ(reports.text().find("stopped"), std::string::npos);
    }
}

}  // namespace
