#include "service/json_value.h"
#include "tests/support/fault_table.h"

#include <gtest/gtest.h>

using service::JsonDocument;

TEST(JsonDocument, IsOneWholeText)
{
    for (const char* const text : {"{}", " [1, 2]\r\n", "5", "\"x\"", "null", "\xEF\xBB\xBF{}"}) {
        EXPECT_TRUE(JsonDocument::parse(text)) << text;
    }
    for (const char* const text :
         {"", " ", "{}{}", "{} x", "{},", "[1,]", "{'a': 1}", "nul", "\"x", "// no\n{}"}) {
        EXPECT_FALSE(JsonDocument::parse(text)) << text;
    }
    EXPECT_FALSE(JsonDocument::parse(QByteArray("{}\0", 3)));
    EXPECT_FALSE(JsonDocument::parse(QByteArray("{}\0{}", 5)));
    // Bytes that no NUL follows, as in a part of a longer text.
    EXPECT_TRUE(JsonDocument::parse(QByteArray::fromRawData("{}garbage", 2)));
}

TEST(JsonDocument, BoundsDepthAndNumberOfValues)
{
    EXPECT_TRUE(JsonDocument::parse(QByteArray(900, '[') + QByteArray(900, ']')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(5'000'000, '[')));
    EXPECT_FALSE(JsonDocument::parse(QByteArray(2000, '[') + QByteArray(2000, ']')));
    QByteArray many = "[0";
    for (int i = 0; i < 4'000'000; ++i) {
        many += ",0";
    }
    EXPECT_FALSE(JsonDocument::parse(many + ']'));
    testsupport::recordFault("Service: a reply nested too deep or with more than four million values",
                             "refused", 3);
}

TEST(JsonValue, LookUpsInAbsentValuesAnswerNothing)
{
    const auto document = JsonDocument::parse(R"({"a": [{"b": "c"}], "n": null})");
    ASSERT_TRUE(document);
    const service::JsonValue absent = document->root().member("x").member("y");
    EXPECT_TRUE(absent.isAbsentOrNull());
    EXPECT_TRUE(document->root().member("n").isAbsentOrNull());
    EXPECT_TRUE(absent.elements().empty());
    EXPECT_FALSE(absent.integer() || absent.clampedNumber());
    EXPECT_TRUE(absent.text().isEmpty() && absent.utf8().isEmpty());
    EXPECT_TRUE(document->root().member("a").member("b").isAbsentOrNull());  // an array has no members
    EXPECT_EQ(document->root().member("a").elements().at(0).member("b").utf8(), "c");
}
