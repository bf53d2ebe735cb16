#include "cli/JsonValue.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "tests/cli/PrintedText.h"

namespace trevolt {
namespace {

std::string JsonOf(const CJson& value) {
    return test::Printed([&](std::FILE* stream) {
        CJsonLine line(stream);
        line.Put(value);
        line.End();
    });
}

TEST(JsonValue, WritesSingleValues) {
    EXPECT_EQ(JsonOf({}), "null\n");
    EXPECT_EQ(JsonOf(nullptr), "null\n");
    EXPECT_EQ(JsonOf(true), "true\n");
    EXPECT_EQ(JsonOf(false), "false\n");
    EXPECT_EQ(JsonOf(-7), "-7\n");
    EXPECT_EQ(JsonOf(std::uint8_t{65}), "65\n");
    EXPECT_EQ(JsonOf(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615\n");
    EXPECT_EQ(JsonOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808\n");
    EXPECT_EQ(JsonOf("a"), "\"a\"\n");
    EXPECT_EQ(JsonOf(std::string("b")), "\"b\"\n");
}

TEST(JsonValue, WritesTheShortestNumberThatReadsBack) {
    EXPECT_EQ(JsonOf(0.1), "0.1\n");
    EXPECT_EQ(JsonOf(-2.0), "-2.0\n");
    EXPECT_EQ(JsonOf(-0.0), "-0.0\n");
    EXPECT_EQ(JsonOf(123456789.0), "123456789.0\n");
    EXPECT_EQ(JsonOf(1e300), "1e+300\n");
    EXPECT_EQ(JsonOf(-2.2250738585072014e-308), "-2.2250738585072014e-308\n");
    EXPECT_EQ(JsonOf(0.1F), "0.10000000149011612\n") << "as the float is";
    EXPECT_EQ(JsonOf(std::numeric_limits<double>::infinity()), "null\n");
    EXPECT_EQ(JsonOf(std::numeric_limits<double>::quiet_NaN()), "null\n");
}

TEST(JsonValue, EscapesTexts) {
    EXPECT_EQ(JsonOf("\"\\/\b\f\n\r\t\x01\x1F"), "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\"\n");
    EXPECT_EQ(JsonOf("90\u00B0 \u7BB1 \U0001F4A1 ~\x7F"), "\"90\u00B0 \u7BB1 \U0001F4A1 ~\x7F\"\n");
    EXPECT_EQ(JsonOf("a\xFFz\xE2\x80"), "\"a\uFFFDz\uFFFD\uFFFD\"\n");
}

TEST(JsonValue, WritesTextsOfAnyLength) {
    for (const std::size_t before : {470U, 476U, 477U, 478U, 479U, 480U, 481U, 2000U}) {
        const std::string text = std::string(before, 'a') + "\u7BB1\n\u00B0";
        EXPECT_EQ(JsonOf(text), '"' + std::string(before, 'a') + "\u7BB1\\n\u00B0\"\n") << before;
    }
}

TEST(JsonValue, KeepsTheOrderOfMembers) {
    EXPECT_EQ(JsonOf({{"b", 1}, {"a", {{"y", 2}, {"x", nullptr}}}}),
              "{\"b\":1,\"a\":{\"y\":2,\"x\":null}}\n");
    EXPECT_EQ(JsonOf({{"a \"name\"", 0}}), "{\"a \\\"name\\\"\":0}\n");
    EXPECT_EQ(JsonOf(JsonMembers{}), "{}\n");
    const auto both = [](JsonMembers first, JsonMembers more) {
        return test::Printed([&](std::FILE* stream) {
            CJsonLine line(stream);
            line.PutObject(first, more);
            line.End();
        });
    };
    EXPECT_EQ(both({{"b", 1}}, {{"a", 2}, {"c", 3}}), "{\"b\":1,\"a\":2,\"c\":3}\n");
    EXPECT_EQ(both({}, {{"a", 2}}), "{\"a\":2}\n");
}

TEST(JsonValue, WritesArrays) {
    EXPECT_EQ(JsonOf(CJson::Array()), "[]\n");
    EXPECT_EQ(JsonOf(CJson::Array({1, 2.5, true, {{"b", "c"}}})), "[1,2.5,true,{\"b\":\"c\"}]\n");
    const std::vector<std::string> texts{"a", ""};
    EXPECT_EQ(JsonOf(texts), "[\"a\",\"\"]\n");
    EXPECT_EQ(JsonOf(std::vector<std::string>{}), "[]\n");
}

TEST(JsonValue, WritesWhatIsMadeWhenItIsWritten) {
    const std::vector<int> numbers{3, 1, 2};
    const auto putSmall = [](CJsonLine& line, const std::vector<int>& all) {
        CJsonElements elements(line);
        for (const int number : all)
            if (number < 3)
                elements.Add({{"number", number}});
        elements.End();
    };
    EXPECT_EQ(JsonOf({{"small", CJson::Of(numbers, putSmall)}}),
              "{\"small\":[{\"number\":1},{\"number\":2}]}\n");
    const std::vector<int> none;
    EXPECT_EQ(JsonOf(CJson::Of(none, putSmall)), "[]\n");
}

} // namespace
} // namespace trevolt
