#include "cli/JsonValue.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(JsonValue, WritesSingleValues) {
    EXPECT_EQ(CJson().Text(), "null");
    EXPECT_EQ(CJson(nullptr).Text(), "null");
    EXPECT_EQ(CJson(true).Text(), "true");
    EXPECT_EQ(CJson(false).Text(), "false");
    EXPECT_EQ(CJson(-7).Text(), "-7");
    EXPECT_EQ(CJson(std::numeric_limits<std::uint64_t>::max()).Text(), "18446744073709551615");
    EXPECT_EQ(CJson(std::numeric_limits<std::int64_t>::min()).Text(), "-9223372036854775808");
    EXPECT_EQ(CJson("a").Text(), R"("a")");
}

TEST(JsonValue, WritesTheShortestNumberThatReadsBack) {
    EXPECT_EQ(CJson(0.1).Text(), "0.1");
    EXPECT_EQ(CJson(-2.0).Text(), "-2.0");
    EXPECT_EQ(CJson(1e300).Text(), "1e+300");
    EXPECT_EQ(CJson(0.1F).Text(), "0.10000000149011612") << "as the float is";
    EXPECT_EQ(CJson(std::numeric_limits<double>::infinity()).Text(), "null");
    EXPECT_EQ(CJson(std::numeric_limits<double>::quiet_NaN()).Text(), "null");
}

TEST(JsonValue, EscapesTexts) {
    EXPECT_EQ(CJson("\"\\/\b\f\n\r\t\x01").Text(), R"("\"\\/\b\f\n\r\t\u0001")");
    EXPECT_EQ(CJson("90\u00B0 \u7BB1").Text(), "\"90\u00B0 \u7BB1\"");
    EXPECT_EQ(CJson("a\xFFz").Text(), "\"a\uFFFDz\"");
}

TEST(JsonValue, KeepsTheOrderOfMembers) {
    CJson object{{"b", 1}, {"a", {{"y", 2}, {"x", nullptr}}}};
    EXPECT_EQ(object.Text(), R"({"b":1,"a":{"y":2,"x":null}})");
    object.Set({{"c", "new"}, {"b", "other"}});
    EXPECT_EQ(object.Text(), R"({"b":"other","a":{"y":2,"x":null},"c":"new"})");
    object["a"] = 5;
    object["d"];
    EXPECT_EQ(object.Text(), R"({"b":"other","a":5,"c":"new","d":null})");
    EXPECT_EQ((CJson{{"a \"name\"", 0}}).Text(), R"({"a \"name\"":0})");
}

TEST(JsonValue, WritesArrays) {
    CJson array = CJson::Array();
    EXPECT_EQ(array.Text(), "[]");
    array.Add("a");
    array.Add({{"b", CJson::Array({1, 2.5, true})}});
    EXPECT_EQ(array.Text(), R"(["a",{"b":[1,2.5,true]}])");
    EXPECT_EQ(CJson(std::vector<std::string>{"a", ""}).Text(), R"(["a",""])");
    EXPECT_EQ(CJson(std::vector<std::string>{}).Text(), "[]");
    EXPECT_EQ(CJson(CJson::Members{}).Text(), "{}");
}

} // namespace
} // namespace trevolt
