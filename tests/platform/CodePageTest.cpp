#include "platform/CodePage.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(CodePage, BytesAreReadInTheGivenPage) {
    const auto western = CodePageToWide("D:\\M\xFCller \x80\\", 1252);
    const auto chinese = CodePageToWide("D:\\\xCF\xE4\xCC\xE5 1\\", 936);
#ifdef _WIN32
    EXPECT_EQ(western, L"D:\\M\u00FCller \u20AC\\");
    EXPECT_EQ(chinese, L"D:\\\u7BB1\u4F53 1\\");
    EXPECT_EQ(CodePageToWide("", 936), L"");
#else
    EXPECT_EQ(western, std::nullopt);
    EXPECT_EQ(chinese, std::nullopt);
#endif
}

TEST(CodePage, UnknownPagesAreTold) { EXPECT_EQ(CodePageToWide("a\xE4", 54321), std::nullopt); }

TEST(CodePage, TheSystemsIsThatOfItsLanguageAndNotUtf8) {
    // The tests run on a system in English; where there are no code pages it is assumed.
    EXPECT_EQ(SystemCodePage(), 1252U);
}

} // namespace
} // namespace trevolt
