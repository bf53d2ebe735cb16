#include "platform/TrimmedText.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(TrimmedText, LacksTheBlanksAndTabsAroundIt) {
    EXPECT_EQ(Trimmed<char>(" \ta b\t "), "a b");
    EXPECT_EQ(Trimmed<char>(" \t"), "");
    EXPECT_EQ(Trimmed<char>(""), "");
    EXPECT_EQ(Trimmed<wchar_t>(L"\t\u00B0 \r "), L"\u00B0 \r");
}

} // namespace
} // namespace trevolt
