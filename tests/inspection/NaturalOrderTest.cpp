#include "app/inspection/NaturalOrder.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(NaturalOrder, TakesDigitsAsNumbers) {
    std::vector<std::wstring> names{L"Cab_10.9fcoef", L"Cab_9.9fcoef", L"Cab_1.9fcoef",
                                    L"Cab_2.9fcoef",  L"Cab",          L"B_100"};
    std::sort(names.begin(), names.end(), IsBeforeNaturally);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"B_100", L"Cab", L"Cab_1.9fcoef", L"Cab_2.9fcoef",
                                                L"Cab_9.9fcoef", L"Cab_10.9fcoef"}));
}

TEST(NaturalOrder, ComparesEveryNumberOfAName) {
    EXPECT_TRUE(IsBeforeNaturally(L"r2c9", L"r2c10"));
    EXPECT_TRUE(IsBeforeNaturally(L"r2c10", L"r10c1"));
    EXPECT_FALSE(IsBeforeNaturally(L"r10c1", L"r2c10"));
}

TEST(NaturalOrder, BearsNumbersOfAnyLengthAndZerosBeforeThem) {
    EXPECT_TRUE(IsBeforeNaturally(L"99999999999999999999998", L"99999999999999999999999"));
    EXPECT_TRUE(IsBeforeNaturally(L"a007b", L"a8a"));
    EXPECT_TRUE(IsBeforeNaturally(L"a0", L"a1"));
}

TEST(NaturalOrder, IsStrict) {
    EXPECT_FALSE(IsBeforeNaturally(L"a1", L"a1"));
    EXPECT_NE(IsBeforeNaturally(L"a1", L"a01"), IsBeforeNaturally(L"a01", L"a1"));
    EXPECT_FALSE(IsBeforeNaturally(L"", L""));
    EXPECT_TRUE(IsBeforeNaturally(L"", L"0"));
}

} // namespace
} // namespace trevolt
