#include "service/http_client.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fault_table.h"

using namespace Qt::StringLiterals;
using service::HttpOutcome;
using service::HttpRequest;
using testsupport::ScopedEnvironment;
using testsupport::ScriptedReply;

namespace {

HttpRequest getRequest()
{
    HttpRequest request;
    request.path = u"/api/thing/?id=5"_s;
    request.headers = {service::apiKeyHeader(u"some key"_s)};
    return request;
}

class HttpClient : public ServiceTest {};

}  // namespace

TEST_F(HttpClient, OnlyACompleteTransferWithStatus200Succeeds)
{
    struct Case {
        ScriptedReply reply;
        bool ok;
        std::string bodyOrErrorText;
    };
    const Case cases[] = {
        {{.status = 200, .body = "fine"}, true, "fine"},
        {{.status = 200}, true, ""},
        {{.status = 201, .body = "made"}, false, "made"},
        {{.status = 201}, false, "Tessera returned HTTP 201."},
        {{.status = 204}, false, "Tessera returned HTTP 204."},
        {{.status = 302, .headerLines = {"Location: /elsewhere/"}}, false, "Tessera returned HTTP 302."},
        {{.status = 403, .body = "Key revoked.\r\n\xC3\xBC\n"}, false, "Key revoked.\r\n\xC3\xBC\n"},
        {{.status = 500}, false, "Tessera returned HTTP 500."},
        {{.status = 200, .body = "0123456789", .bodyBytesBeforeCut = 4}, false, "0123"},
        {{.status = 500, .body = "0123456789", .bodyBytesBeforeCut = 0},
         false,
         "Network error: Transferred a partial file"},
        {{.rawBytes = ""}, false, "Network error: Server returned nothing (no headers, no data)"},
        {{.rawBytes = "no HTTP\r\n\r\n"}, false, "Network error: Unsupported protocol"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bodyOrErrorText);
        m_server.play(c.reply);
        const HttpOutcome outcome = service::perform(getRequest());
        EXPECT_EQ(outcome.ok, c.ok);
        EXPECT_EQ(outcome.body.toStdString(), c.ok ? c.bodyOrErrorText : "");
        EXPECT_EQ(outcome.errorText.toStdString(), c.ok ? "" : c.bodyOrErrorText);
    }
    EXPECT_EQ(m_server.requests().size(), std::size(cases));  // nothing is retried, no redirect followed
}

TEST_F(HttpClient, CutsAStalledReplyAtTheTransferLimit)
{
    EXPECT_EQ(service::HttpLimits().connectSeconds, 10);
    EXPECT_EQ(service::HttpLimits().transferSeconds, 30);
    m_server.play({.body = "too late", .isHeld = true});
    EXPECT_EQ(service::perform(getRequest(), {.transferSeconds = 1}).errorText.toStdString(),
              "Network error: Timeout was reached");
}

TEST_F(HttpClient, ReplyBeyondItsLimitFailsTheTransfer)
{
    EXPECT_EQ(service::HttpLimits().replyBytes, 1073741824);
    m_server.playFor("/api/thing/", {.body = "0123456789"});
    EXPECT_TRUE(service::perform(getRequest(), {.replyBytes = 10}).ok);
    EXPECT_EQ(service::perform(getRequest(), {.replyBytes = 9}).errorText.toStdString(),
              "Network error: Failed writing received data to disk/application");
    testsupport::recordFault("Service: a reply beyond the limit of 1 GiB", "an error that says so");
}

TEST_F(HttpClient, SendsAGetWithItsQueryAndItsHeaders)
{
    m_server.play({});
    EXPECT_TRUE(service::perform(getRequest()).ok);
    const testsupport::RecordedRequest request = m_server.requests().at(0);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, "/api/thing/?id=5");
    EXPECT_EQ(ownHeaderLines(request), (Strings{"User-Agent: Platterscope/1.2.1", "apiKey: some key"}));
    EXPECT_EQ(request.body, "");
}

TEST_F(HttpClient, LoopbackIsNeverReachedThroughAProxy)
{
    testsupport::ScriptedServer proxy;
    const ScopedEnvironment http("http_proxy", proxy.url());
    const ScopedEnvironment all("all_proxy", proxy.url());
    m_server.play({});
    EXPECT_TRUE(service::perform(getRequest()).ok);
    EXPECT_TRUE(proxy.requests().empty());
    testsupport::recordFault("Service: a proxy in the environment",
                             "not used for an address of this computer", 2);
}

TEST_F(HttpClient, OtherHostsAreReachedThroughTheEnvironmentsProxy)
{
    testsupport::ScriptedServer proxy;
    proxy.play({.status = 407});
    const ScopedEnvironment https("https_proxy", proxy.url());
    const ScopedEnvironment none("no_proxy", "");
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "https://tessera.example");
    EXPECT_FALSE(service::perform(getRequest()).ok);
    ASSERT_EQ(proxy.requests().size(), 1U);
    EXPECT_EQ(proxy.requests()[0].method, "CONNECT");
    EXPECT_EQ(proxy.requests()[0].target, "tessera.example:443");
    EXPECT_EQ(proxy.requests()[0].header("apiKey"), "");
    testsupport::recordFault("Service: a proxy in the environment",
                             "sees neither the key nor the request over https");
}

TEST_F(HttpClient, SendsNothingThatItShouldNot)
{
    HttpRequest request = getRequest();
    request.path.clear();
    EXPECT_EQ(service::perform(request).errorText.toStdString(), "Tessera request is missing required data.");

    request = getRequest();
    request.headers = {service::apiKeyHeader(u"key\r\nX-Other: 1"_s)};
    request.unpreparedText = "Not prepared.";
    EXPECT_EQ(service::perform(request).errorText.toStdString(),
              "Unable to prepare the Tessera authentication request.");
    request.headers = {"X-Other: a\nb"};
    EXPECT_EQ(service::perform(request).errorText.toStdString(), "Not prepared.");

    const std::string plainAddress =
        "http://localhost.example" + m_server.url().substr(m_server.url().rfind(':'));
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", plainAddress);
    EXPECT_EQ(service::perform(getRequest()).errorText.toStdString(),
              "The Tessera service address must use https; http is allowed for this computer alone.");
    EXPECT_TRUE(m_server.requests().empty());
}
