// Reading a find reply's configurations, and the bounds of JSON texts.
#include "service/configurations.h"
#include "service/json_value.h"
#include "tests/service/tables.h"
#include "tests/support/golden.h"

#include <QDebug>

using namespace Qt::StringLiterals;
using service::JsonDocument;

namespace {

// A line for each configuration, and under it one for each of its titles.
QString described(const QList<service::DiscConfiguration>& configurations)
{
    QString text;
    QDebug out(&text);
    for (const service::DiscConfiguration& c : configurations) {
        out << c.uid << c.discId << c.languageCode << c.addedByUsername << c.addedByUid << c.discName
            << c.paths << '\n';
        for (const service::ConfigurationTitle& t : c.titles) {
            out << "   " << t.id << t.type << (t.pathIndex ? QString::number(*t.pathIndex) : u"no path"_s)
                << t.name << t.note << t.firstChapter << t.lastChapter << '\n';
        }
    }
    return text.replace(u" \n "_s, u"\n"_s);
}

QByteArray arrayOf(qsizetype count, const QByteArray& element)
{
    return '[' + (element + ',').repeated(count).chopped(1) + ']';
}

}  // namespace

TEST(Replies, ConfigurationsAreReadPieceByPiece)
{
    const auto reply = service::parseConfigurationReply(readFile("configurations.json"));
    ASSERT_TRUE(reply);
    const std::string text = described(reply->configurations).toStdString();
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/configurations.txt"), "");
}

TEST(Replies, TooManyEntriesOrValuesAndTooDeepNestingAreRefused)
{
    const auto isTaken = [](const QByteArray& array) {
        return service::parseConfigurationReply(R"({"Disc ID": 17, "Configurations": )" + array + '}')
            .has_value();
    };
    EXPECT_TRUE(isTaken(arrayOf(service::kMaximumConfigurations, "{}")));
    EXPECT_FALSE(isTaken(arrayOf(service::kMaximumConfigurations + 1, "{}")));
    for (const char* const member : {"paths", "titles"}) {
        const QByteArray begin = QByteArray(R"([{"Data": "{\")") + member + R"(\": )";
        EXPECT_TRUE(isTaken(begin + arrayOf(service::kMaximumEntries - 1, "{}") + R"(}"}])")) << member;
        EXPECT_FALSE(isTaken(begin + arrayOf(service::kMaximumEntries, "{}") + R"(}"}])")) << member;
    }
    EXPECT_FALSE(JsonDocument::parse(arrayOf(JsonDocument::kMaximumValues, "0")));
    EXPECT_TRUE(JsonDocument::parse(QByteArray(900, '[') + QByteArray(900, ']')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(2000, '[') + QByteArray(2000, ']')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(5'000'000, '[')));
    EXPECT_TRUE(JsonDocument::parse(QByteArrayView("{}garbage", 2))) << "a text need not end with a NUL";
}
