#include "app/log.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

TEST(Log, WritesOneUtf8LineWithComponentAndLevel)
{
    const testsupport::CapturedLog log;
    logging::log(logging::kBdmeta, logging::kWarning,
                 QString::fromUtf8("Gr\xC3\xBC\xC3\x9F"
                                   "e \xE2\x82\xAC %s %n"));
    EXPECT_EQ(log.lines(), (Lines{"bdmeta: warning: Gr\xC3\xBC\xC3\x9F"
                                  "e \xE2\x82\xAC %s %n"}));
}

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
    EXPECT_EQ(log.lines(), (Lines{"tessera: info: other thread", "platterscope: info: started",
                                  "tessera: error: on again"}));
}

}  // namespace
