// Every operation of a scan with memory that ends at the first allocation, at the second, and so on until it ends
// nowhere: each must come back with an error or with all it was asked for, and never throw.
#include "bdmeta/bluray_disc.h"
#include "dvdmeta/dvd_disc.h"
#include "scan/disc_scanner.h"
#include "tests/scan/failing_allocation.h"
#include "tests/support/captured_log.h"
#include "tests/support/fault_table.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

namespace {

using testsupport::DiscForm;

// Lets memory end at every allocation of `operation` in turn and calls `judge` after each, which is to be told
// whether it did. Gives how often it ended.
std::size_t exhaust(const std::function<void()>& operation, const std::function<void(bool)>& judge)
{
    std::size_t cases = 0;
    for (const bool isForGood : {false, true}) {
        for (long allocations = 0;; ++allocations, ++cases) {
            const bool isOut = testsupport::runsOut(allocations, isForGood, operation);
            judge(isOut);
            if (!isOut) { break; }
            if (testing::Test::HasFailure()) {
                ADD_FAILURE() << "memory ended after " << allocations
                              << " allocations, for good: " << isForGood;
                return cases;
            }
        }
    }
    return cases;
}

class Exhaustion : public testing::Test {
protected:
    Exhaustion()
    {
        m_scanner.setApiKey(QStringLiteral("the-key"));
        for (const char* const kind : {"dvd", "bluray"}) {
            const std::string base = std::string("/api/tessera/") + kind;
            m_server.playFor(base + "/find/", {.body = "{}"});
            m_server.playFor(base + "/add/", {.body = "23"});
            m_server.playFor(
                base + "/configurations/get/",
                {.body = R"([{"UID": 5, "Data": "{\"paths\": [\"a\"], \"titles\": [{\"id\": 1}]}"}])"});
        }
        m_server.playFor("/api/tessera/user/", {.body = R"({"UID": 17, "Username": "ada"})"});
    }

    // Scans a disc, which must end in all that `whole` holds or in an error.
    std::size_t exhaustScan(const std::string& path)
    {
        const testsupport::CapturedLog log;
        const QString disc = QString::fromStdString(path);
        const DiscScanResult whole = m_scanner.scan(disc, true);
        EXPECT_EQ(whole.ok, 1) << whole.errorMessage.toStdString();
        DiscScanResult result;
        return exhaust([&] { result = m_scanner.scan(disc, true); },
                       [&](bool isOut) {
                           EXPECT_TRUE(isOut || result.ok == 1);
                           EXPECT_EQ(result.errorMessage.isEmpty(), result.ok == 1);
                           if (result.discType == DiscType::None) {
                               EXPECT_TRUE(result.dvdTitles.isEmpty() && result.blurayTitles.isEmpty());
                               EXPECT_TRUE(result.dvdPackage.isEmpty() && result.blurayPackage.isEmpty());
                               return;
                           }
                           EXPECT_EQ(result.discType, whole.discType);
                           EXPECT_EQ(result.dvdTitles.size(), whole.dvdTitles.size());
                           EXPECT_EQ(result.blurayTitles.size(), whole.blurayTitles.size());
                           EXPECT_EQ(result.dvdPackage, whole.dvdPackage);
                           EXPECT_EQ(result.blurayPackage, whole.blurayPackage);
                       });
    }

    testsupport::ScriptedServer m_server;
    testsupport::ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
    testsupport::TemporaryFolder m_dvds;
    testsupport::TemporaryFolder m_blurays;
    DiscScanner m_scanner;
};

}  // namespace

TEST_F(Exhaustion, OfAScanIsAnErrorOrAWholeResult)
{
    std::size_t cases = 0;
    for (const DiscForm form : {DiscForm::Directory, DiscForm::Iso}) {
        cases += exhaustScan(testsupport::sampleDvd().write(form, m_dvds));
    }
    for (const DiscForm form : {DiscForm::Directory, DiscForm::Udf}) {
        cases += exhaustScan(testsupport::sampleBluray().write(form, m_blurays));
    }
    EXPECT_GT(cases, 1000U);
    testsupport::recordFault(
        "Memory: it ends at the first allocation, the second, and so on, once or for good",
        "a scan ends in an error or in a whole result", 8);
}

TEST_F(Exhaustion, OfTheReadersLeavesNothingHalfRead)
{
    const std::string dvdPath = testsupport::sampleDvd().write(DiscForm::Directory, m_dvds);
    const std::string blurayPath = testsupport::sampleBluray().write(DiscForm::Directory, m_blurays);
    std::array<char, 256> error = {};
    int status = 0;

    dvdmeta::DvdDisc dvd;
    std::size_t cases = exhaust(
        [&] {
            dvd = {};
            error = {};
            status = dvdmeta::readDvdDisc(dvdPath.c_str(), &dvd, error.data(), error.size());
        },
        [&](bool isOut) {
            EXPECT_TRUE(isOut || status == 0);
            EXPECT_TRUE(status != 0 || error[0] == '\0');
            EXPECT_EQ(dvd.titles.size(), status == 0 ? 2U : 0U);
        });

    bdmeta::BlurayDisc bluray;
    cases += exhaust(
        [&] {
            bluray = {};
            error = {};
            status = bdmeta::readBlurayDisc(blurayPath.c_str(), &bluray, error.data(), error.size());
        },
        [&](bool isOut) {
            EXPECT_TRUE(isOut || status == 0);
            EXPECT_TRUE(status != 0 || error[0] == '\0');
            EXPECT_EQ(bluray.playlists.size(), status == 0 ? 3U : 0U);
        });
    EXPECT_GT(cases, 500U);
    testsupport::recordFault(
        "Memory: it ends at the first allocation, the second, and so on, once or for good",
        "a reader fails, or has read the whole disc", 4);
}

TEST_F(Exhaustion, OfAnAuthenticationOrARefreshIsAnErrorOrAWholeResult)
{
    const testsupport::CapturedLog log;
    service::AuthenticationOutcome user;
    std::size_t cases = exhaust([&] { user = m_scanner.authenticate(); },
                                [&](bool isOut) {
                                    EXPECT_TRUE(isOut || user.ok);
                                    EXPECT_EQ(user.errorText.isEmpty(), user.ok);
                                    EXPECT_EQ(user.user.uid, user.ok ? 17 : 0);
                                });

    DiscScanResult previous;
    previous.ok = 1;
    previous.discType = DiscType::Dvd;
    previous.discId = 17;
    previous.inDatabase = true;
    previous.dvdTitles.resize(2);
    DiscScanResult result;
    cases += exhaust([&] { result = m_scanner.refreshConfigurations(previous); },
                     [&](bool isOut) {
                         EXPECT_TRUE(isOut || result.ok == 1);
                         EXPECT_EQ(result.errorMessage.isEmpty(), result.ok == 1);
                         EXPECT_EQ(result.configurations.size(), result.ok);
                         EXPECT_EQ(result.dvdTitles.size(), 2);
                     });
    EXPECT_GT(cases, 10U);
    testsupport::recordFault(
        "Memory: it ends at the first allocation, the second, and so on, once or for good",
        "a request ends in an error or in a whole result", 4);
}
