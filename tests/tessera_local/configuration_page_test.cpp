// The web pages as a browser meets them.
#include "tests/support/fault_table.h"
#include "tests/tessera_local/service_fixture.h"

#include <map>

namespace tessera_local {

namespace {

constexpr char kDvdPage[] = "/tessera/dvd/new/?uid=1";
constexpr char kFormType[] = "application/x-www-form-urlencoded";
constexpr char kDisc[] = "disc_name=Disc&language_code=en&action=save";

std::size_t countOf(const std::string& part, const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// Disc 1 is a DVD and disc 2 a Blu-ray.
class ConfigurationPage : public Service {
protected:
    void SetUp() override
    {
        start();
        ASSERT_EQ(post("/add/", Upload(DiscKind::Dvd, package(DiscKind::Dvd, "one")))->body, "1");
        ASSERT_EQ(post("/add/", Upload(DiscKind::Bluray, package(DiscKind::Bluray, "two")))->body, "2");
    }
    httplib::Result submit(const std::string& body, const httplib::Headers& headers)
    {
        return client().Post(kDvdPage, headers, body, kFormType);
    }
    httplib::Result submit(const std::string& body, const std::string& address = kDvdPage)
    {
        return client().Post(address, {{"Origin", service().baseUrl()}}, body, kFormType);
    }
    std::string keptOfDvd() { return getConfigurations(DiscKind::Dvd, "?discId=1")->body; }
};

// The status of a page, which must be one and tell the browser to keep to itself.
int statusOf(const httplib::Result& result)
{
    if (!result) { return 0; }
    EXPECT_TRUE(result->body.starts_with("<!DOCTYPE html>\n<html lang=\"en\">")) << result->body;
    EXPECT_EQ(result->get_header_value("Content-Type"), "text/html; charset=utf-8");
    EXPECT_TRUE(result->get_header_value("Content-Security-Policy")
                    .starts_with("default-src 'none'; style-src 'sha"));
    EXPECT_EQ(result->get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(result->get_header_value("Referrer-Policy"), "same-origin");
    EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store");
    EXPECT_EQ(countOf("<script", result->body), 0U);
    return result->status;
}

}  // namespace

TEST_F(ConfigurationPage, AddsAConfigurationThatARestartKeeps)
{
    const std::string address = "/tessera/bluray/new/?uid=2";
    const httplib::Result empty = client().Get(address);
    ASSERT_EQ(statusOf(empty), 200);
    EXPECT_EQ(countOf("<fieldset>", empty->body), 4U);
    EXPECT_EQ(countOf("<label for=", empty->body), countOf(" name=\"", empty->body) - 3U)
        << "viewport and buttons";

    const httplib::Result saved = submit(
        "disc_name=L%C3%A9on&language_code=pt-BR&title_1_id=00800&title_1_type=1&action=save", address);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->status, 303) << saved->body;
    EXPECT_EQ(saved->get_header_value("Location"), address + "&saved=1");
    EXPECT_EQ(countOf("id=\"saved\" role=\"status\"", client().Get(address + "&saved=1")->body), 1U);
    EXPECT_EQ(countOf("id=\"saved\"", client().Get(address + "&saved=2")->body), 0U) << "there is none";

    EXPECT_EQ(service().stop(), 0);
    start();
    EXPECT_EQ(getConfigurations(DiscKind::Bluray, "?discId=2")->body,
              R"([{"Added By UID":1,"Added By Username":"local","Data":"{\"disc_name\":\"L)"
              "\xC3\xA9"
              R"(on\",\"paths\":[],\"titles\":[{\"id\":800,\"path\":null,\"type\":1}]}",)"
              R"("Disc ID":2,"Language Code":"pt-BR","UID":1}])");
    EXPECT_EQ(firstRow(database(), "PRAGMA user_version"), std::vector<std::string>{"1"}) << "same layout";
}

TEST_F(ConfigurationPage, ShowsWhatWasTypedAsText)
{
    const std::string evil = "%22%3E%3Cscript%3Ealert(1)%3C/script%3E%26%27%00";
    const std::string shown = "&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;&amp;'\xEF\xBF\xBD";
    std::string body = "disc_name=" + evil + "&language_code=" + evil;
    for (const char* field : {"id", "name", "file", "note", "first_chapter", "last_chapter", "type"}) {
        body.append("&title_1_").append(field).append("=").append(evil);
    }
    for (const auto& [action, status] : std::map<std::string, int>{{"more", 200}, {"save", 422}}) {
        const httplib::Result page = submit(std::string(body).append("&action=").append(action));
        ASSERT_EQ(statusOf(page), status);
        EXPECT_EQ(countOf(shown, page->body), 8U) << "all but the type, which is chosen";
        EXPECT_EQ(countOf("<fieldset>", page->body), action == "more" ? 5U : 1U);
        EXPECT_EQ(countOf("<li><a href=\"#", page->body), action == "more" ? 0U : 9U);
        EXPECT_EQ(countOf("aria-invalid=\"true\"", page->body), action == "more" ? 0U : 9U);
    }
    EXPECT_EQ(keptOfDvd(), "[]");
    testsupport::recordFault("Local service: a form with HTML in every field", "shown as text, not kept", 2);
}

TEST_F(ConfigurationPage, KeepsSqlAsText)
{
    const httplib::Result saved = submit("disc_name=x%27%29%3B+DROP+TABLE+discs%3B--&language_code=en&title_"
                                         "1_id=1&title_1_type=1&action=save");
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->status, 303) << saved->body;
    EXPECT_EQ(countOf("x'); DROP TABLE discs;--", keptOfDvd()), 1U);
    EXPECT_EQ(firstRow(database(), "SELECT count(*) FROM discs"), std::vector<std::string>{"2"});
    testsupport::recordFault("Local service: a form with SQL in a field", "kept as text");
}

TEST_F(ConfigurationPage, RefusesOtherSitesOtherNamesAndOtherDiscs)
{
    const std::string own = service().baseUrl();
    for (const std::string& origin :
         {std::string("null"), std::string("http://evil.example"), "ftp" + own.substr(4),
          own + ".evil.example", std::string("http://127.0.0.1")}) {
        EXPECT_EQ(statusOf(submit(kDisc, {{"Origin", origin}})), 403) << origin;
    }
    EXPECT_EQ(statusOf(submit(kDisc, httplib::Headers())), 403) << "no Origin";
    EXPECT_EQ(statusOf(submit(kDisc, {{"Origin", own}, {"Origin", own}})), 403) << "two of them";
    EXPECT_EQ(statusOf(submit(kDisc, {{"Origin", own}, {"Sec-Fetch-Site", "same-site"}})), 403);
    for (const std::string host :
         {"evil.example", "localhost.evil.example", "127.0.0.1.evil", "[::1", "", ":1", "[evil]"}) {
        EXPECT_EQ(statusOf(client().Get(kDvdPage, {{"Host", host}})), 403) << host;
        EXPECT_EQ(statusOf(submit(kDisc, {{"Host", host}, {"Origin", "http://" + host}})), 403) << host;
    }
    for (const std::string host : {"LOCALHOST", "[::1]:80", "192.168.0.9"}) {
        EXPECT_EQ(statusOf(client().Get(kDvdPage, {{"Host", host}})), 200) << host;
    }
    EXPECT_EQ(statusOf(client().Post(kDvdPage, {{"Origin", own}}, kDisc, "text/plain")), 415);
    for (const char* query : {"?uid=2", "?uid=3", "?uid=-1"}) {
        EXPECT_EQ(statusOf(client().Get(std::string("/tessera/dvd/new/") + query)), 404) << query;
        EXPECT_EQ(statusOf(submit(kDisc, std::string("/tessera/dvd/new/") + query)), 404) << query;
    }
    EXPECT_EQ(statusOf(client().Get("/tessera/dvd/new/?uid=1x")), 400);
    const httplib::Result put = client().Put(kDvdPage, "", kFormType);
    EXPECT_EQ(put->status, 405);
    EXPECT_EQ(put->get_header_value("Allow"), "GET, POST");
    EXPECT_EQ(keptOfDvd(), "[]");
    testsupport::recordFault("Local service: a form of another site, or by a foreign name for this computer",
                             "refused, nothing is kept", 22);
}

TEST_F(ConfigurationPage, TakesLongFormsUpToItsLimits)
{
    const std::string row = std::string(kDisc) + "&title_1_id=1&title_1_note=";
    EXPECT_EQ(submit(row + std::string(10'000, 'n'))->status, 303);
    EXPECT_EQ(countOf(std::string(10'000, 'n'), keptOfDvd()), 1U);
    EXPECT_EQ(statusOf(submit(row + std::string(10'001, 'n'))), 422);
    const std::string unknown = std::string(kDisc) + "&x=";
    const std::size_t room = (std::size_t{4} << 20) - unknown.size();
    EXPECT_EQ(submit(unknown + std::string(room, 'x'))->status, 303) << "exactly 4 MiB";
    EXPECT_EQ(statusOf(submit(unknown + std::string(room + 1, 'x'))), 413);
    EXPECT_EQ(statusOf(submit(std::string(kDisc) + "&title_201_id=1")), 413);
    testsupport::recordFault("Local service: a form over its limits", "refused", 3);

    const httplib::Result most = submit("title_198_id=198&action=more");
    EXPECT_EQ(countOf("<fieldset>", most->body), 200U);
    EXPECT_EQ(countOf(" disabled>Add More Titles", most->body), 1U);
}

TEST_F(ConfigurationPage, AFormThatCannotBeKeptComesBackFilledIn)
{
    const auto expectFormOf = [](const httplib::Result& reply, int status) {
        EXPECT_EQ(statusOf(reply), status);
        EXPECT_EQ(countOf("<div id=\"problems\"", reply->body), 1U);
        EXPECT_EQ(countOf(" value=\"typed\"", reply->body), 1U);
    };
    const std::string typed = std::string(kDisc) + "&title_1_id=1&title_1_name=typed";
    EXPECT_EQ(submit(typed)->status, 303);
    firstRow(database(), "UPDATE configurations SET data = hex(zeroblob(2097152))");
    expectFormOf(submit(typed), 409);
    firstRow(database(), "DELETE FROM configurations");
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(submit(typed)->status, 303) << i;
    }
    expectFormOf(submit(typed), 409);
    EXPECT_EQ(submit(kDisc, "/tessera/bluray/new/?uid=2")->status, 303);
    firstRow(database(), "DROP TABLE configurations");
    expectFormOf(submit(typed), 503);
}

}  // namespace tessera_local
