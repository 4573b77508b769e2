#include "tools/tessera_local/configuration_form.h"

#include <gtest/gtest.h>

namespace tessera_local {

namespace {

ConfigurationForm parsed(const std::string& body)
{
    const std::optional<ConfigurationForm> form = parseConfigurationForm(body);
    EXPECT_TRUE(form) << body;
    return form.value_or(ConfigurationForm());
}

// The fields with a problem, each with a blank behind it.
std::string wrongFields(const std::string& row, DiscKind kind = DiscKind::Dvd,
                        const std::string& disc = "disc_name=D&language_code=en&")
{
    std::string fields;
    for (const FormProblem& problem : problemsOf(parsed(disc + row), kind)) {
        EXPECT_FALSE(problem.text.isEmpty() || problem.label.isEmpty());
        fields += problem.field.toStdString() + ' ';
    }
    return fields;
}

}  // namespace

TEST(ConfigurationForm, DecodesWhatABrowserSendsAndWhatNoneDoes)
{
    const std::vector<std::pair<std::string, QString>> texts{
        {"a+b%2Bc%26%3d=%25", QStringLiteral("a b+c&==%")},
        {"L%C3%a9on\xC3\xA9%4", QStringLiteral("L\u00e9on\u00e9%4")},
        {"100%", QStringLiteral("100%")},
        {"%g1%1g%-1", QStringLiteral("%g1%1g%-1")},
        {"++a%0D%0Ab%0Dc%0A", QStringLiteral("a\nb\nc")},
        {"%ff%C3", QStringLiteral("\ufffd\ufffd")},
        {"%00", QString(QChar(u'\0'))},
    };
    for (const auto& [sent, text] : texts) {
        EXPECT_EQ(parsed("disc_name=" + sent).discName, text) << sent;
    }
    const ConfigurationForm odd =
        parsed("&&=&x&title_&title_0_id=1&title_2_&title_x_id=1&title_1_typ=1&action=more");
    EXPECT_TRUE(odd.rows.empty());
    EXPECT_TRUE(odd.wantsMore);
    EXPECT_EQ(parsed("title_200_id=7").rows.size(), kMaximumRows);
    EXPECT_FALSE(parseConfigurationForm("title_201_id=7"));
}

TEST(ConfigurationForm, NamesTheFieldsThatCannotBeKept)
{
    EXPECT_EQ(wrongFields(""), "");
    EXPECT_EQ(wrongFields("title_1_id=99&title_2_id=&title_2_type=0&title_3_id=1&title_3_type=14"), "");
    EXPECT_EQ(wrongFields("title_1_id=00000&title_2_id=99999", DiscKind::Bluray), "");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_first_chapter=9999&title_1_last_chapter=9999"), "");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_last_chapter=1&title_1_note=a%0D%0Ab"), "");

    EXPECT_EQ(wrongFields("", DiscKind::Dvd, ""), "disc_name language_code ");
    EXPECT_EQ(wrongFields("", DiscKind::Dvd, "disc_name=+%0A&language_code=en-"), "disc_name language_code ");
    for (const char* code : {"e", "engl", "en_US", "en-%C3%A9", "en%0Ax", "12", "en-x"}) {
        EXPECT_EQ(wrongFields("", DiscKind::Dvd, std::string("disc_name=D&language_code=") + code),
                  "language_code ")
            << code;
    }
    for (const char* id : {"0", "100", "-1", "1.0", "1x", "99999999999"}) {
        EXPECT_EQ(wrongFields(std::string("title_2_id=") + id), "title_2_id ") << id;
    }
    EXPECT_EQ(wrongFields("title_1_id=100000", DiscKind::Bluray), "title_1_id ");
    EXPECT_EQ(wrongFields("title_1_type=15"), "title_1_id title_1_type ");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_type=-1"), "title_1_type ");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_first_chapter=x&title_1_last_chapter=10000"),
              "title_1_first_chapter title_1_last_chapter ");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_first_chapter=0"), "title_1_first_chapter ");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_first_chapter=3&title_1_last_chapter=2"),
              "title_1_last_chapter ");
    for (const std::string text : {"a%0Ab", "a%00b", "a%7Fb", "a%C2%85b", "a%FFb", "a%ED%A0%80b"}) {
        EXPECT_EQ(wrongFields("title_1_id=1&title_1_name=" + text), "title_1_name ") << text;
    }
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_note=a%09b"), "title_1_note ");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_name=" + std::string(200, 'n')), "");
    EXPECT_EQ(wrongFields("title_1_id=1&title_1_name=" + std::string(201, 'n')), "title_1_name ");
}

TEST(ConfigurationForm, IsKeptWithItsFilesOnceAndWithoutWhatWasNotGiven)
{
    const ConfigurationForm form = parsed(
        "disc_name=%22D%22&language_code=en&title_1_id=800&title_1_type=2&title_1_file=b.m2ts&title_1_name="
        "One&"
        "title_1_note=x%0D%0Ay&title_1_first_chapter=1&title_1_last_chapter=12&title_3_id=0&title_4_id=7&"
        "title_4_file=a.m2ts&title_5_id=7&title_5_file=b.m2ts&title_6_type=0");
    EXPECT_EQ(
        configurationData(form),
        R"({"disc_name":"\"D\"","paths":["b.m2ts","a.m2ts"],"titles":[)"
        R"({"first_chapter":1,"id":800,"last_chapter":12,"name":"One","note":"x\ny","path":0,"type":2},)"
        R"({"id":0,"path":null,"type":0},{"id":7,"path":1,"type":0},{"id":7,"path":0,"type":0}]})");
}

}  // namespace tessera_local
