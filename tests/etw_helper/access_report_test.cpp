#include "etw_helper/access_report.h"

#include <gtest/gtest.h>

#include <utility>

using etw_helper::AccessReport;
using etw_helper::kMaximumFiles;

namespace {

class AccessReportTest : public testing::Test {
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
    AccessReport m_report{etw_helper::WatchedRoot(LR"(D:\)", LR"(\Device\CdRom0\)"),
                          [this](monitor::MessageKind kind, const std::string& payload) {
                              m_messages += std::to_string(static_cast<int>(kind)) + ' ' + payload + "; ";
                          }};
};

TEST_F(AccessReportTest, JoinsTheEventsOfAFile)
{
    begin(7, 100, L"cdrom0\\B\\1.M2TS");
    m_report.requestEnds(8, 0);
    EXPECT_EQ(m_messages, "");
    EXPECT_TRUE(m_report.awaitsRequests() && !m_report.awaitsCloses());
    m_report.requestEnds(7, 0);
    EXPECT_TRUE(!m_report.awaitsRequests() && m_report.awaitsCloses());
    for (const std::uint64_t fileObject : {101U, 100U, 100U}) {
        m_report.lastHandleCloses(fileObject);
    }
    EXPECT_EQ(m_messages, "2 D:\\B\\1.M2TS; 3 D:\\B\\1.M2TS; ");
    EXPECT_FALSE(m_report.awaitsCloses());
}

TEST_F(AccessReportTest, CountsOpensThatSucceed)
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

TEST_F(AccessReportTest, RemembersALimitedNumberOfFiles)
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

}  // namespace
