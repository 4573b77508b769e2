#include "app/log.h"
#include "scan/disc_scanner.h"
#include "tests/support/captured_log.h"
#include "tests/support/fault_table.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testsupport::CapturedLog;
using testsupport::ScriptedReply;
using Lines = std::vector<std::string>;

class ConfigurationRefreshTest : public testing::Test {
protected:
    // A known DVD with one configuration.
    ConfigurationRefreshTest()
    {
        m_scanner.setApiKey(QStringLiteral("the-key"));
        m_previous.ok = 1;
        m_previous.discType = DiscType::Dvd;
        m_previous.discId = 9007199254740993;
        m_previous.inDatabase = true;
        m_previous.configurations.resize(1);
        m_previous.configurations[0].uid = 3;
        m_previous.newDiscUrl = QStringLiteral("https://example.org/new");
        m_previous.dvdPackage = "package";
        m_previous.dvdTitles.resize(2);
    }

    // Refreshes the known DVD; the lines behind "configuration refresh started".
    Lines refresh()
    {
        const CapturedLog log;
        m_result = m_scanner.refreshConfigurations(m_previous);
        Lines lines = log.lines();
        EXPECT_EQ(lines.at(0), "tessera: info: configuration refresh started");
        lines.erase(lines.begin());
        return lines;
    }

    // Refreshes, which must fail with `message`, be logged once, and change nothing else.
    void expectFailure(const std::string& message)
    {
        EXPECT_EQ(refresh(), Lines{"tessera: error: " + message}) << message;
        EXPECT_EQ(m_result.ok, 0) << message;
        EXPECT_EQ(m_result.errorMessage.toStdString(), message);
        EXPECT_EQ(m_result.discType, m_previous.discType);
        EXPECT_EQ(m_result.discId, m_previous.discId);
        EXPECT_EQ(m_result.inDatabase, m_previous.inDatabase);
        ASSERT_EQ(m_result.configurations.size(), 1);
        EXPECT_EQ(m_result.configurations[0].uid, 3);
        EXPECT_EQ(m_result.dvdTitles.size(), 2);
        EXPECT_EQ(m_result.dvdPackage, m_previous.dvdPackage);
    }

    testsupport::ScriptedServer m_server;
    testsupport::ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
    DiscScanner m_scanner;
    DiscScanResult m_previous;
    DiscScanResult m_result;
};

TEST_F(ConfigurationRefreshTest, ReplacesTheConfigurationsAndNothingElse)
{
    m_previous.errorMessage = QStringLiteral("a note of the scan");
    m_server.play(
        {.body = R"([{"UID": 5, "Disc ID": "17", "Data": "{\"disc_name\": \"New\"}"}, {"UID": 6}])"});
    EXPECT_EQ(refresh(), Lines{"tessera: info: configuration refresh finished: 2 configuration(s)"});
    EXPECT_EQ(m_result.ok, 1);
    EXPECT_EQ(m_result.errorMessage, m_previous.errorMessage);
    ASSERT_EQ(m_result.configurations.size(), 2);
    EXPECT_EQ(m_result.configurations[0].discName, QStringLiteral("New"));
    EXPECT_EQ(m_result.discId, m_previous.discId);
    EXPECT_EQ(m_result.newDiscUrl, m_previous.newDiscUrl);
    EXPECT_EQ(m_result.dvdTitles.size(), 2);
    EXPECT_EQ(m_result.dvdPackage, m_previous.dvdPackage);
    EXPECT_EQ(m_previous.configurations[0].uid, 3);

    m_previous.discType = DiscType::Bluray;
    m_server.play({.body = " [ ] "});
    EXPECT_EQ(refresh(), Lines{"tessera: info: configuration refresh finished: 0 configuration(s)"});
    EXPECT_TRUE(m_result.configurations.isEmpty());

    const auto requests = m_server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/api/tessera/dvd/configurations/get/?discId=9007199254740993");
    EXPECT_EQ(requests[0].header("apiKey"), "the-key");
    EXPECT_EQ(requests[0].header("Content-Type"), "");
    EXPECT_EQ(requests[0].header("User-Agent"), "Platterscope/1.2.1");
    EXPECT_EQ(requests[1].target, "/api/tessera/bluray/configurations/get/?discId=9007199254740993");
}

TEST_F(ConfigurationRefreshTest, WhatCannotBeAskedIsToldWithoutARequest)
{
    m_previous.discType = DiscType::None;
    expectFailure("The disc type is not supported by Tessera.");
    m_previous.inDatabase = false;
    expectFailure("This disc has not been added to Tessera.");
    m_previous.inDatabase = true;
    m_previous.discId = 0;
    expectFailure("This disc has not been added to Tessera.");
    for (const char* key : {"", "REPLACE_WITH_YOUR_API_KEY"}) {
        m_scanner.setApiKey(QString::fromUtf8(key));
        expectFailure("Tessera API key is not configured.");
    }
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(ConfigurationRefreshTest, AFailedRequestOrReplyKeepsWhatWasThere)
{
    struct Case {
        ScriptedReply reply;
        std::string message;
    };
    std::string tooMany = "[{}";
    for (qsizetype i = 0; i < service::kMaximumConfigurations; ++i) {
        tooMany += ",{}";
    }
    tooMany += "]";
    const std::string invalid = "Tessera returned an invalid configurations response.";
    for (const Case& failing : {
             Case{{.status = 404, .body = "No such disc."}, "No such disc."},
             Case{{.status = 204}, "Tessera returned HTTP 204."},
             Case{{.body = "[]", .bodyBytesBeforeCut = 1}, "["},
             Case{{.rawBytes = ""}, "Network error: Server returned nothing (no headers, no data)"},
             Case{{.body = ""}, invalid},
             Case{{.body = "{}"}, invalid},
             Case{{.body = "null"}, invalid},
             Case{{.body = "[{}"}, invalid},
             Case{{.body = "[] []"}, invalid},
             Case{{.body = tooMany}, "Unable to refresh Tessera configurations."},
         }) {
        m_server.play(failing.reply);
        expectFailure(failing.message);
    }
    testsupport::recordFault("Scan: a refresh of the configurations that fails",
                             "an error; all that was there stays", 10);
}

TEST_F(ConfigurationRefreshTest, FollowsTheScannersLoggingSwitch)
{
    m_scanner.setLoggingEnabled(false);
    m_server.play({.status = 500});
    const CapturedLog log;
    EXPECT_EQ(m_scanner.refreshConfigurations(m_previous).ok, 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(logging::isEnabled());
}

}  // namespace
