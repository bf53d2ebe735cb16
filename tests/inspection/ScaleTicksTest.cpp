#include "app/inspection/ScaleTicks.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

std::vector<std::string> TickTexts(const SValueRange& range, std::size_t most) {
    std::vector<std::string> texts;
    for (const SScaleTick& tick : RoundTicks(range, most)) {
        EXPECT_GE(tick.value, range.low - 1e-9 * (range.high - range.low));
        EXPECT_LE(tick.value, range.high + 1e-9 * (range.high - range.low));
        texts.push_back(tick.text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(ScaleTicks, AreRoundNumbersInTheRange) {
    EXPECT_EQ(TickTexts({0.854, 1.01}, 5), (Texts{"0.90", "0.95", "1.00"}));
    EXPECT_EQ(TickTexts({0, 1}, 6), (Texts{"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}));
    EXPECT_EQ(TickTexts({0, 1}, 5), (Texts{"0.0", "0.5", "1.0"}));
    EXPECT_EQ(TickTexts({0, 1}, 11).size(), 11U);
    EXPECT_EQ(TickTexts({17, 4100}, 5), (Texts{"1000", "2000", "3000", "4000"}));
}

TEST(ScaleTicks, IncludeEndsThatRoundingPutBeside) {
    EXPECT_EQ(TickTexts({0.1, 0.3}, 3), (Texts{"0.1", "0.2", "0.3"}));
    EXPECT_EQ(TickTexts({0.7, 0.8999999999999999}, 3), (Texts{"0.7", "0.8", "0.9"}));
}

TEST(ScaleTicks, HaveARealMinusSignAndNoNegativeZero) {
    EXPECT_EQ(TickTexts({-0.1, 0.1}, 3), (Texts{"\u22120.1", "0.0", "0.1"}));
    EXPECT_EQ(ShownNumber(-0.0), "0");
    EXPECT_EQ(ShownNumber(-2.5), "\u22122.5");
}

TEST(ScaleTicks, ArePresentInAnyRange) {
    for (const double size : {1e-30, 1e-12, 0.3, 7.0, 3e7, 1e37})
        for (const std::size_t most : {2U, 7U}) {
            const std::size_t count = RoundTicks({-size, size}, most).size();
            EXPECT_GE(count, 1U) << size;
            EXPECT_LE(count, most) << size;
        }
    EXPECT_EQ(TickTexts({-3e8, 3e8}, 3), (Texts{"\u22122e+08", "0", "2e+08"}));
}

TEST(ScaleTicks, ShowNumbersByFourDigits) {
    EXPECT_EQ(ShownNumber(0.854321), "0.8543");
    EXPECT_EQ(ShownNumber(65535), "6.554e+04");
    EXPECT_EQ(ShownNumber(1), "1");
}

} // namespace
} // namespace trevolt
