#include "etw_helper/helper_arguments.h"
#include "etw_helper/trace_session.h"

#include <gtest/gtest.h>

#include <vector>

using etw_helper::parseHelperArguments;

namespace {

using Arguments = std::vector<const wchar_t*>;

const Arguments kRight = {L"--pipe",       L"p\u00E9",        L"--root",       L"D:\\Film \u20AC",
                          L"--stop-event", L"Local\\stop-it", L"--parent-pid", L"4294967295"};

TEST(HelperArguments, AreExact)
{
    const auto parsed = parseHelperArguments(kRight);
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->pipe, "p\xC3\xA9");
    EXPECT_TRUE(parsed->root == L"D:\\Film \u20AC");
    EXPECT_EQ(parsed->stopEvent, "Local\\stop-it");
    EXPECT_EQ(parsed->parentProcessId, 4'294'967'295U);

    EXPECT_EQ(parseHelperArguments({}), std::nullopt);
    Arguments longer = kRight;
    longer.push_back(L"more");
    EXPECT_EQ(parseHelperArguments(longer), std::nullopt);
    for (std::size_t i = 0; i < kRight.size(); ++i) {
        Arguments wrong = kRight;
        wrong[i] = L"";
        EXPECT_EQ(parseHelperArguments(wrong), std::nullopt) << i;
        EXPECT_EQ(parseHelperArguments(std::span(kRight).first(i)), std::nullopt) << i;
    }
    Arguments otherOrder = kRight;
    std::swap(otherOrder[0], otherOrder[2]);
    EXPECT_EQ(parseHelperArguments(otherOrder), std::nullopt);
}

TEST(HelperArguments, ProcessIdIsDecimalAndNotZero)
{
    for (const wchar_t* number :
         {L"0", L"-1", L"+1", L" 1", L"1 ", L"0x10", L"12a", L"4294967296", L"99999999999999999999999999"}) {
        Arguments wrong = kRight;
        wrong.back() = number;
        EXPECT_EQ(parseHelperArguments(wrong), std::nullopt);
    }
}

// What a helper that was killed leaves behind is found by the name of its session.
TEST(TraceSession, IsNamedByItsProcess)
{
    EXPECT_EQ(etw_helper::sessionProcessId(etw_helper::sessionName(4711)), 4711U);
    for (const wchar_t* other :
         {L"", L"NT Kernel Logger", L"Platterscope-ETW-Helper-", L"Platterscope-ETW-Helper-x",
          L"x Platterscope-ETW-Helper-1", L"Platterscope-ETW-Helper-0"}) {
        EXPECT_EQ(etw_helper::sessionProcessId(other), std::nullopt);
    }
}

}  // namespace
