#include "base/log.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// The golden files of tests/report and tests/scan show how messages are rewritten.
TEST(Log, TheSwitchSilencesItsOwnThreadAlone)
{
    const testsupport::CapturedLog log;
    {
        const logging::ScopedSwitch off(false);
        logging::log(logging::kTessera, logging::kInfo, QStringLiteral("not written"));
        std::thread([] {
            logging::log(logging::kTessera, logging::kInfo, QStringLiteral("other thread"));
        }).join();
        logging::logStarted();
    }
    logging::log(logging::kTessera, logging::kError, QStringLiteral("on again"));
    const std::vector<std::string> expected = {"tessera: info: other thread", "platterscope: info: started",
                                               "tessera: error: on again"};
    EXPECT_EQ(log.lines(), expected);
}

}  // namespace
