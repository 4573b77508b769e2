#include "monitor/helper_command_line.h"

#include <gtest/gtest.h>

namespace {

using monitor::quoteArgument;

TEST(HelperCommandLine, QuotesByTheRulesOfWindows)
{
    EXPECT_EQ(quoteArgument(""), R"("")");
    EXPECT_EQ(quoteArgument("two words"), R"("two words")");
    EXPECT_EQ(quoteArgument(R"(C:\a\b)"), R"("C:\a\b")");
    EXPECT_EQ(quoteArgument(R"(E:\)"), R"("E:\\")");
    EXPECT_EQ(quoteArgument(R"(a\\)"), R"("a\\\\")");
    EXPECT_EQ(quoteArgument(R"(a"b)"), R"("a\"b")");
    EXPECT_EQ(quoteArgument(R"(a\"b)"), R"("a\\\"b")");
    EXPECT_EQ(quoteArgument(R"(a\b\\"\c")"), R"("a\b\\\\\"\c\"")");
}

TEST(HelperCommandLine, NamesOneWatchByItsUuid)
{
    const monitor::HelperNames names = monitor::helperNames("01234567-89ab-4cde-8f01-23456789abcd");
    EXPECT_EQ(names.pipe, "Platterscope-ETW-01234567-89ab-4cde-8f01-23456789abcd");
    EXPECT_EQ(names.stopEvent, R"(Local\Platterscope-ETW-Stop-01234567-89ab-4cde-8f01-23456789abcd)");
    EXPECT_EQ(monitor::helperParameters(names, R"(E:\)", 4711),
              R"(--pipe "Platterscope-ETW-01234567-89ab-4cde-8f01-23456789abcd" --root "E:\\" )"
              R"(--stop-event "Local\Platterscope-ETW-Stop-01234567-89ab-4cde-8f01-23456789abcd" )"
              R"(--parent-pid 4711)");
}

}  // namespace
