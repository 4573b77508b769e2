// The texts that the program and its helper exchange: the command line and the messages.
#include "monitor/helper_command_line.h"
#include "monitor/helper_message.h"

#include <gtest/gtest.h>

namespace {

using monitor::encodeMessage;
using monitor::MessageKind;
using std::string_literals::operator""s;

TEST(HelperCommandLine, QuotesByTheRulesOfWindows)
{
    const char* const rows[][2] = {{"", R"("")"},
                                   {"two words", R"("two words")"},
                                   {R"(C:\a\b)", R"("C:\a\b")"},
                                   {R"(E:\)", R"("E:\\")"},
                                   {R"(a\\)", R"("a\\\\")"},
                                   {R"(a"b)", R"("a\"b")"},
                                   {R"(a\"b)", R"("a\\\"b")"},
                                   {R"(a\b\\"\c")", R"("a\b\\\\\"\c\"")"}};
    for (const auto& [argument, quoted] : rows) {
        EXPECT_EQ(monitor::quoteArgument(argument), quoted);
    }
}

TEST(HelperMessage, IsHeaderAndPayloadCutAtTheEndOfACharacter)
{
    const std::string full(monitor::kMaximumPayloadBytes, 'x');
    const std::string noText(full.size() + 9, '\x80');
    const struct {
        std::string payload;
        std::string header;
        std::string sent;
    } rows[] = {
        {"/a", "\3\0\0\0\2\0\0\0"s, "/a"},
        {"", "\3\0\0\0\0\0\0\0"s, ""},
        {full.substr(0, 0x102), "\3\0\0\0\2\1\0\0"s, full.substr(0, 0x102)},
        {full, "\3\0\0\0\0\0\1\0"s, full},
        {full + "y", "\3\0\0\0\0\0\1\0"s, full},
        {full.substr(1) + "\xC3\xA9", "\3\0\0\0\xFF\xFF\0\0"s, full.substr(1)},
        {full.substr(3) + "\xF0\x9F\x92\xBF", "\3\0\0\0\xFD\xFF\0\0"s, full.substr(3)},
        {full.substr(4) + "\xF0\x9F\x92\xBFy", "\3\0\0\0\0\0\1\0"s, full.substr(4) + "\xF0\x9F\x92\xBF"},
        {noText, "\3\0\0\0\0\0\1\0"s, noText.substr(9)}};
    for (const auto& row : rows) {
        EXPECT_TRUE(encodeMessage(MessageKind::Closed, row.payload) == row.header + row.sent)
            << row.payload.size() << ' ' << row.payload.substr(0, 10);
    }
}

}  // namespace
