#include "service/authentication.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fault_table.h"

using namespace Qt::StringLiterals;
using service::AuthenticationOutcome;

namespace {

class Authentication : public ServiceTest {
protected:
    // Authenticates, and keeps what was written to standard error meanwhile.
    AuthenticationOutcome authenticate(const QString& key)
    {
        testing::internal::CaptureStderr();
        AuthenticationOutcome outcome = service::authenticate(key);
        m_log = testing::internal::GetCapturedStderr();
        return outcome;
    }

    // One request that is answered 200 with this body.
    AuthenticationOutcome authenticateWithReply(const std::string& body)
    {
        m_server.play({.body = body});
        return authenticate(u"some key"_s);
    }

    static std::string failureLog(const std::string& text)
    {
        return "tessera: info: authentication started\ntessera: error: " + text + "\n";
    }

    std::string m_log;
};

}  // namespace

TEST_F(Authentication, SendsTheKeyInAHeaderAndAnEmptyForm)
{
    const AuthenticationOutcome outcome =
        authenticateWithReply(R"({"UID": 17, "Username": "\u00C5da", "LatestVersion": "1.3.0"})");
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.user.uid, 17);
    EXPECT_EQ(outcome.user.username.toStdString(), "\u00C5da");
    EXPECT_EQ(outcome.user.latestVersion.toStdString(), "1.3.0");
    EXPECT_EQ(m_log, "tessera: info: authentication started\ntessera: info: authentication succeeded\n");

    ASSERT_EQ(m_server.requests().size(), 1U);
    const testsupport::RecordedRequest request = m_server.requests()[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/api/tessera/user/");
    EXPECT_EQ(ownHeaderLines(request), (Strings{"User-Agent: Platterscope/1.2.1", "apiKey: some key",
                                                "Content-Type: application/x-www-form-urlencoded"}));
    EXPECT_EQ(request.header("Content-Length"), "0");
    EXPECT_EQ(request.body, "");
}

TEST_F(Authentication, AcceptsTheFormsOfAUserRecord)
{
    struct Case {
        const char* body;
        qint64 uid;
    };
    const Case cases[] = {
        {R"({"UID": 0, "Username": "a"})", 0},
        {R"({"UID": 9007199254740991, "Username": "a"})", 9007199254740991},
        {R"({"UID": -9007199254740991, "Username": "a"})", -9007199254740991},
        {R"({"UID": "9223372036854775807", "Username": "a"})", 9223372036854775807},
        {R"({"UID": "-12", "Username": "a", "LatestVersion": null})", -12},
        {R"({"UID": 1e3, "Username": "a", "LatestVersion": 2})", 1000},
        {R"({"uid": 4, "UID": 5, "UID": 6, "Username": "a", "LatestVersion": ""})", 5},
    };
    for (const Case& c : cases) {
        const AuthenticationOutcome outcome = authenticateWithReply(c.body);
        EXPECT_TRUE(outcome.ok) << c.body;
        EXPECT_EQ(outcome.user.uid, c.uid) << c.body;
        EXPECT_TRUE(outcome.user.latestVersion.isEmpty()) << c.body;
    }
}

TEST_F(Authentication, RefusesAnythingElse)
{
    const char* const bodies[] = {
        "",
        "OK",
        "[]",
        R"([{"UID": 1, "Username": "a"}])",
        R"({"UID": 1, "Username": "a"} x)",
        R"({"UID": 1, "Username": "a")",
        R"({"Username": "a"})",
        R"({"uid": 1, "Username": "a"})",
        R"({"UID": null, "Username": "a"})",
        R"({"UID": 1.5, "Username": "a"})",
        R"({"UID": 9007199254740992, "Username": "a"})",
        R"({"UID": 1e999, "Username": "a"})",
        R"({"UID": true, "Username": "a"})",
        R"({"UID": "", "Username": "a"})",
        R"({"UID": "12a", "Username": "a"})",
        R"({"UID": " 12", "Username": "a"})",
        R"({"UID": "9223372036854775808", "Username": "a"})",
        R"({"UID": 1})",
        R"({"UID": 1, "Username": ""})",
        R"({"UID": 1, "Username": 2})",
    };
    for (const char* const body : bodies) {
        const AuthenticationOutcome outcome = authenticateWithReply(body);
        EXPECT_FALSE(outcome.ok) << body;
        EXPECT_EQ(outcome.errorText.toStdString(), "Tessera returned an invalid authentication response.")
            << body;
        EXPECT_EQ(m_log, failureLog("Tessera returned an invalid authentication response.")) << body;
    }
    testsupport::recordFault("Service: a reply with status 200 that says nothing of use",
                             "refused, in words of the operation", std::size(bodies));
}

TEST_F(Authentication, UnusableKeysAreRefusedWithoutARequest)
{
    struct Case {
        QString key;
        const char* text;
    };
    const Case cases[] = {
        {u""_s, "Tessera API key is not configured."},
        {u"REPLACE_WITH_YOUR_API_KEY"_s, "Tessera API key is not configured."},
        {u"a\nb"_s, "The API key contains characters that are not allowed."},
        {u"a\tb"_s, "The API key contains characters that are not allowed."},
        {u"a\u0085b"_s, "The API key contains characters that are not allowed."},
        {u"a\u2028b"_s, "The API key contains characters that are not allowed."},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(authenticate(c.key).errorText.toStdString(), c.text);
        EXPECT_EQ(m_log, failureLog(c.text));
    }
    EXPECT_TRUE(m_server.requests().empty());
    testsupport::recordFault("Service: a key that is none or holds control characters",
                             "refused without a request", std::size(cases));
}

TEST_F(Authentication, FailuresAreLoggedAndNeverNameTheKey)
{
    const testsupport::ScriptedReply replies[] = {
        {.status = 401},  {.status = 403, .body = "Key revoked."},
        {.body = "{}"},   {.body = "some text", .bodyBytesBeforeCut = 0},
        {.rawBytes = ""},
    };
    for (const testsupport::ScriptedReply& reply : replies) {
        m_server.play(reply);
        const AuthenticationOutcome outcome = authenticate(u"K3Y-5ECRET"_s);
        EXPECT_FALSE(outcome.ok);
        EXPECT_FALSE(outcome.errorText.isEmpty());
        EXPECT_EQ(m_log, failureLog(outcome.errorText.toStdString()));
        EXPECT_EQ(m_log.find("K3Y-5ECRET"), std::string::npos);
    }
}
