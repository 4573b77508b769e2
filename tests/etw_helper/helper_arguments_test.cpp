#include "etw_helper/helper_arguments.h"
#include "etw_helper/trace_session.h"

#include <gtest/gtest.h>

#include <vector>

using etw_helper::parseHelperArguments;

namespace {

TEST(HelperArguments, AreExact)
{
    using Arguments = std::vector<const wchar_t*>;
    const Arguments right = {L"--pipe",       L"p\u00E9",        L"--root",       L"D:\\Film \u20AC",
                             L"--stop-event", L"Local\\stop-it", L"--parent-pid", L"4294967295"};
    const auto parsed = parseHelperArguments(right);
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->pipe, "p\xC3\xA9");
    EXPECT_TRUE(parsed->root == L"D:\\Film \u20AC");
    EXPECT_EQ(parsed->stopEvent, "Local\\stop-it");
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
         {L"0", L"-1", L"+1", L" 1", L"1 ", L"0x10", L"4294967296", L"99999999999999999999999"}) {
        wrong.push_back(right);
        wrong.back().back() = id;
    }
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        EXPECT_EQ(parseHelperArguments(wrong[i]), std::nullopt) << i;
    }
}

// The next helper finds the session of a killed one by its name.
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
