#include "trevolt/Utf8.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(Utf8, ConvertsEverySequenceLengthBothWays) {
    const std::wstring wide = L"A\u00B0\u7BB1\U0001F600";
    const std::string narrow = "A\xC2\xB0\xE7\xAE\xB1\xF0\x9F\x98\x80";
    EXPECT_EQ(WideToUtf8(wide), narrow);
    EXPECT_EQ(Utf8ToWide(narrow), wide);
}

TEST(Utf8, RefusesWhatIsNotUtf8) {
    for (const char* bad :
         {"\xFF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xE7\xAE", "\xE7\xAE\x41", "\x80"})
        EXPECT_EQ(Utf8ToWide(bad), std::nullopt) << bad;
}

TEST(Utf8, RefusesLoneSurrogatesAndShowsThemAsReplacement) {
    const std::wstring lone(1, static_cast<wchar_t>(0xD800));
    EXPECT_EQ(WideToUtf8(lone), std::nullopt);
    EXPECT_EQ(WideToShownUtf8(L"a" + lone + L"b"), "a\xEF\xBF\xBD"
                                                   "b");
}

TEST(Utf8, KeepsEmptyTextAndNul) {
    EXPECT_EQ(WideToUtf8(L""), "");
    EXPECT_EQ(Utf8ToWide(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
}

} // namespace
} // namespace trevolt
