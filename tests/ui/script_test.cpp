// Plays the scripts. tools/golden.sh writes anew what is seen.
#include "tests/ui/window_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class Scripts : public testing::TestWithParam<std::string> {};

TEST_P(Scripts, ShowWhatTheyDid)
{
    EXPECT_EQ(difference(WindowFixture().play(GetParam()), "scripts/" + GetParam()), "");
}

std::vector<std::string> names()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(PLATTERSCOPE_UI_SCRIPTS)) {
        names.push_back(entry.path().stem());
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Window, Scripts, testing::ValuesIn(names()),
                         [](const auto& test) { return test.param; });

}  // namespace
