#include "service/configurations.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

using service::ConfigurationReply;
using service::ConfigurationTitle;
using service::DiscConfiguration;
using service::parseConfigurationReply;

namespace {

// A find reply for disc 17 with this array of configurations.
std::optional<ConfigurationReply> parseConfigurations(const QByteArray& array)
{
    return parseConfigurationReply(R"({"Disc ID": 17, "Configurations": )" + array + "}");
}

// The one configuration whose "Data" is this document.
DiscConfiguration parseData(QByteArray data)
{
    data.replace('\\', "\\\\").replace('"', "\\\"");
    const auto reply = parseConfigurations(R"([{"UID": 3, "Data": ")" + data + R"("}])");
    return reply.value().configurations.at(0);
}

}  // namespace

TEST(Configurations, ReadsAWholeConfiguration)
{
    const auto reply = parseConfigurations(R"([{"UID": 3, "Disc ID": "17", "Language Code": "en",
        "Added By Username": "\u00C5da", "Added By UID": "8", "Data": "{\"disc_name\": \"Disc \\u00FC\",
        \"paths\": [\"a/b\", \"\"], \"titles\": [{\"id\": 1, \"type\": 2, \"path\": 1, \"name\": \"One\",
        \"note\": \"N\", \"first_chapter\": 3, \"last_chapter\": 12}, {\"id\": 2, \"path\": null}]}"}, {}])");
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply->isFound);
    EXPECT_EQ(reply->discId, 17);
    ASSERT_EQ(reply->configurations.size(), 2);

    const DiscConfiguration& configuration = reply->configurations[0];
    EXPECT_EQ(configuration.uid, 3);
    EXPECT_EQ(configuration.discId, 17);
    EXPECT_EQ(configuration.languageCode.toStdString(), "en");
    EXPECT_EQ(configuration.addedByUsername.toStdString(), "\u00C5da");
    EXPECT_EQ(configuration.addedByUid, 8);
    EXPECT_EQ(configuration.discName.toStdString(), "Disc \u00FC");
    EXPECT_EQ(configuration.paths.join(QLatin1Char('|')).toStdString(), "a/b|");
    ASSERT_EQ(configuration.titles.size(), 2);

    const ConfigurationTitle& title = configuration.titles[0];
    EXPECT_EQ(title.id, 1);
    EXPECT_EQ(title.type, 2);
    EXPECT_EQ(title.pathIndex, 1);
    EXPECT_EQ(title.name.toStdString(), "One");
    EXPECT_EQ(title.note.toStdString(), "N");
    EXPECT_EQ(title.firstChapter, 3);
    EXPECT_EQ(title.lastChapter, 12);

    EXPECT_FALSE(configuration.titles[1].pathIndex);
    EXPECT_TRUE(configuration.titles[1].name.isEmpty());
    EXPECT_EQ(configuration.titles[1].firstChapter, 0);
    EXPECT_TRUE(reply->configurations[1].titles.isEmpty());
}

TEST(Configurations, ListThatIsNoListHoldsNothing)
{
    for (const char* const array : {"[]", "null", "{}", "5", "\"[{}]\"", R"([1, "x", null, [{}]])"}) {
        const auto reply = parseConfigurations(array);
        ASSERT_TRUE(reply) << array;
        EXPECT_TRUE(reply->isFound) << array;
        EXPECT_TRUE(reply->configurations.isEmpty()) << array;
    }
}

TEST(Configurations, OddFieldsAreEmpty)
{
    const auto reply = parseConfigurations(
        R"([{"UID": 1.5, "Disc ID": "17x", "Language Code": 5, "Added By Username": null,
             "Added By UID": [], "data": "{\"disc_name\": \"x\"}", "Data": {"disc_name": "y"}}, {"uid": 4}])");
    ASSERT_TRUE(reply);
    ASSERT_EQ(reply->configurations.size(), 2);
    for (const DiscConfiguration& configuration : reply->configurations) {
        EXPECT_EQ(configuration.uid, 0);
        EXPECT_EQ(configuration.discId, 0);
        EXPECT_TRUE(configuration.languageCode.isEmpty());
        EXPECT_TRUE(configuration.addedByUsername.isEmpty());
        EXPECT_EQ(configuration.addedByUid, 0);
        EXPECT_TRUE(configuration.discName.isEmpty());
    }
}

TEST(Configurations, DataThatIsNoDocumentLeavesTheHeaderFields)
{
    for (const char* const data : {"", "{", "{} x", "[]", "null", "5"}) {
        const DiscConfiguration configuration = parseData(data);
        EXPECT_EQ(configuration.uid, 3) << data;
        EXPECT_TRUE(configuration.discName.isEmpty()) << data;
        EXPECT_TRUE(configuration.paths.isEmpty()) << data;
        EXPECT_TRUE(configuration.titles.isEmpty()) << data;
    }
}

TEST(Configurations, OddPathsKeepTheirPlaceAndOddTitlesAreSkipped)
{
    const DiscConfiguration configuration = parseData(
        R"({"disc_name": 5, "paths": [1, "b", null, "d"], "titles": [7, {"id": 9}, null, "x", {}]})");
    EXPECT_TRUE(configuration.discName.isEmpty());
    EXPECT_EQ(configuration.paths.join(QLatin1Char('|')).toStdString(), "|b||d");
    ASSERT_EQ(configuration.titles.size(), 2);
    EXPECT_EQ(configuration.titles[0].id, 9);
    EXPECT_EQ(configuration.titles[1].id, 0);
}

TEST(Configurations, NumbersAreClampedAndCut)
{
    const ConfigurationTitle title =
        parseData(R"({"titles": [{"id": 1e300, "type": -99999999999, "path": -1.9,
        "name": 1, "first_chapter": 2.9, "last_chapter": "3"}]})")
            .titles.at(0);
    EXPECT_EQ(title.id, 2147483647);
    EXPECT_EQ(title.type, -2147483647 - 1);
    EXPECT_EQ(title.pathIndex, -1);
    EXPECT_TRUE(title.name.isEmpty());
    EXPECT_EQ(title.firstChapter, 2);
    EXPECT_EQ(title.lastChapter, 0);
    EXPECT_FALSE(parseData(R"({"titles": [{"path": "0"}]})").titles.at(0).pathIndex);
}

TEST(Configurations, EveryPrefixOfAReplyIsRefused)
{
    const QByteArray text =
        R"({"Disc ID": 17, "Configurations": [{"UID": -1.5e3, "Data": "{\"titles\": [{\"id\": 1}]}\u00FC"}]})";
    ASSERT_TRUE(parseConfigurationReply(text));
    for (qsizetype length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(parseConfigurationReply(text.first(length))) << length;
    }
    testsupport::recordFault("Service: a find reply that is cut short, at every length", "refused",
                             static_cast<std::size_t>(text.size()));
}

TEST(Configurations, AReplyOfTooManyEntriesIsRefused)
{
    const auto arrayOf = [](qsizetype count) {
        QByteArray array = "[{}";
        for (qsizetype i = 1; i < count; ++i) {
            array += ",{}";
        }
        return array + "]";
    };
    const auto most = parseConfigurations(arrayOf(service::kMaximumConfigurations));
    ASSERT_TRUE(most);
    EXPECT_EQ(most->configurations.size(), service::kMaximumConfigurations);
    EXPECT_FALSE(parseConfigurations(arrayOf(service::kMaximumConfigurations + 1)));
    for (const char* const member : {"titles", "paths"}) {
        const auto replyOf = [&](qsizetype count) {
            return parseConfigurations(QByteArray(R"([{"Data": "{\"%1\": %2}"}])")
                                           .replace("%1", member)
                                           .replace("%2", arrayOf(count)));
        };
        EXPECT_TRUE(replyOf(service::kMaximumEntries - 1)) << member;
        EXPECT_FALSE(replyOf(service::kMaximumEntries)) << member;
    }
    testsupport::recordFault("Service: a reply with too many configurations, titles or paths", "refused", 3);
}
