#include "etw_helper/access_report.h"

#include <gtest/gtest.h>

#include <vector>

using etw_helper::AccessReport;
using etw_helper::WatchedRoot;
using monitor::MessageKind;

namespace {

constexpr std::uint32_t kDone = 0;
constexpr std::uint32_t kPending = 0x103;
constexpr std::uint32_t kReparse = 0x104;
constexpr std::uint32_t kNotFound = 0xC000'0034;

class AccessReportTest : public testing::Test {
protected:
    // A whole open: what is traced of it.
    void open(std::uint64_t fileObject, const std::wstring& name, std::uint32_t status = kDone)
    {
        m_report.openBegins(++m_request, fileObject, LR"(\Device\CdRom0\)" + name);
        m_report.requestEnds(m_request, status);
    }

    [[nodiscard]] std::vector<std::string> taken() { return std::exchange(m_messages, {}); }

    std::vector<std::string> m_messages;
    std::uint64_t m_request = 0;
    AccessReport m_report{WatchedRoot(LR"(D:\)", LR"(\Device\CdRom0\)"),
                          [this](MessageKind kind, const std::string& payload) {
                              m_messages.push_back(std::to_string(static_cast<int>(kind)) + ' ' + payload);
                          }};
};

using Messages = std::vector<std::string>;

TEST_F(AccessReportTest, OpenAndCloseOfAFileBelowTheRoot)
{
    m_report.openBegins(7, 100, LR"(\device\cdrom0\BDMV\00001.M2TS)");
    EXPECT_EQ(taken(), Messages()) << "it may fail yet";
    EXPECT_TRUE(m_report.awaitsRequests());
    m_report.requestEnds(8, kDone);
    EXPECT_EQ(taken(), Messages()) << "another request";
    m_report.requestEnds(7, kDone);
    EXPECT_EQ(taken(), Messages({R"(2 D:\BDMV\00001.M2TS)"}));
    EXPECT_FALSE(m_report.awaitsRequests());
    EXPECT_TRUE(m_report.awaitsCloses());
    m_report.lastHandleCloses(101);
    EXPECT_EQ(taken(), Messages()) << "another file";
    m_report.lastHandleCloses(100);
    m_report.lastHandleCloses(100);
    EXPECT_EQ(taken(), Messages({R"(3 D:\BDMV\00001.M2TS)"}));
    EXPECT_FALSE(m_report.awaitsCloses());
}

TEST_F(AccessReportTest, WhatIsNoOpenOfTheDisc)
{
    open(1, L"absent", kNotFound);
    open(2, L"link", kReparse);
    m_report.openBegins(1000, 3, LR"(\Device\CdRom1\file)");
    EXPECT_FALSE(m_report.awaitsRequests());
    m_report.requestEnds(1000, kDone);
    for (const std::uint64_t fileObject : {1U, 2U, 3U}) {
        m_report.lastHandleCloses(fileObject);
    }
    EXPECT_EQ(taken(), Messages());
    open(4, L"later", kPending);
    EXPECT_EQ(taken(), Messages({R"(2 D:\later)"}));
}

TEST_F(AccessReportTest, EachFileObjectOfAPathCounts)
{
    open(1, L"\u00E9");
    open(2, L"\u00E9");
    m_report.lastHandleCloses(1);
    m_report.lastHandleCloses(2);
    EXPECT_EQ(taken(), Messages({"2 D:\\\xC3\xA9", "2 D:\\\xC3\xA9", "3 D:\\\xC3\xA9", "3 D:\\\xC3\xA9"}));
}

TEST_F(AccessReportTest, NumbersThatComeAgainEndWhatTheyNamedBefore)
{
    open(1, L"a");
    open(1, L"b");
    EXPECT_EQ(taken(), Messages({R"(2 D:\a)", R"(3 D:\a)", R"(2 D:\b)"}));
    m_report.openBegins(9, 5, LR"(\Device\CdRom0\c)");
    m_report.openBegins(9, 6, LR"(\Device\Elsewhere)");
    m_report.requestEnds(9, kDone);
    EXPECT_EQ(taken(), Messages());
}

TEST_F(AccessReportTest, WhatIsRememberedHasALimit)
{
    for (std::uint64_t i = 0; i < 3 * etw_helper::kMaximumFiles; ++i) {
        m_report.openBegins(i, i, LR"(\Device\CdRom0\never ended)");
    }
    EXPECT_EQ(taken(), Messages());
    for (std::uint64_t i = 0; i < etw_helper::kMaximumFiles; ++i) {
        open(1'000'000 + i, L"x");
    }
    EXPECT_EQ(taken().back(), R"(2 D:\x)");
    open(1, L"one too many");
    EXPECT_EQ(taken(), Messages({"4 The Windows ETW helper cannot follow so many open files."}));
    m_report.lastHandleCloses(1'000'000);
    m_report.fail("again");
    EXPECT_EQ(taken(), Messages()) << "nothing follows a failure";
}

}  // namespace
