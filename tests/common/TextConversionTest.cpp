#include "common/TextConversion.h"

#include <iterator>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(TextConversion, FoldsTheLettersAToZOnly) {
    EXPECT_EQ(ToLowerAscii(L"AZaz@[`{09.9FCoef"), L"azaz@[`{09.9fcoef");
    EXPECT_EQ(ToLowerAscii(L"\u00C4\u0130\u0391"), L"\u00C4\u0130\u0391");
    EXPECT_EQ(ToLowerAscii(L""), L"");
}

TEST(TextConversion, TakesTheIntegerThatATextBeginsWith) {
    struct Row {
        const wchar_t* text;
        std::int32_t value;
    };
    for (const Row& row : {Row{L"0", 0},
                           Row{L"128", 128},
                           Row{L" \t128", 128},
                           Row{L"+7", 7},
                           Row{L"-7", -7},
                           Row{L"12px", 12},
                           Row{L"12 34", 12},
                           Row{L"007", 7},
                           Row{L"9/:", 9},
                           Row{L"", 0},
                           Row{L"  ", 0},
                           Row{L"x12", 0},
                           Row{L"-", 0},
                           Row{L"+", 0},
                           Row{L"+-3", 0},
                           Row{L"- 3", 0},
                           Row{L"\n5", 0},
                           Row{L"2147483647", 2147483647},
                           Row{L"2147483648", 2147483647},
                           Row{L"-2147483648", -2147483647 - 1},
                           Row{L"-2147483649", -2147483647 - 1},
                           Row{L"4294967296", 2147483647},
                           Row{L"99999999999999999999999999", 2147483647},
                           Row{L"-99999999999999999999999999", -2147483647 - 1}})
        EXPECT_EQ(LeadingInteger(row.text), row.value) << std::wstring_view(row.text).size();
    EXPECT_EQ(LeadingInteger(std::wstring_view(L"1234").substr(0, 2)), 12);
    EXPECT_EQ(LeadingInteger(std::wstring_view(L"-34").substr(0, 1)), 0);
}

TEST(TextConversion, MovesBehindTheIntegerThatItTakes) {
    const char* at = "-12,x";
    EXPECT_EQ(TakeSaturatedInteger(at, std::unreachable_sentinel), -12);
    EXPECT_STREQ(at, ",x");
    EXPECT_EQ(TakeSaturatedInteger(at, std::unreachable_sentinel), std::nullopt);
    EXPECT_STREQ(at, ",x");
    const char* sign = "-x";
    EXPECT_EQ(TakeSaturatedInteger(sign, std::unreachable_sentinel), std::nullopt);
    EXPECT_STREQ(sign, "x");
}

} // namespace
} // namespace trevolt
