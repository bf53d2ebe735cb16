#include "app/inspection/ScaleTicks.h"

#include <cmath>
#include <utility>

#include <gtest/gtest.h>

#include "app/inspection/Lettering.h"

namespace trevolt {
namespace {

std::vector<std::string> TextsOf(const std::vector<SScaleTick>& ticks) {
    std::vector<std::string> texts;
    for (const SScaleTick& tick : ticks)
        texts.push_back(tick.text);
    return texts;
}

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

TEST(ScaleTicks, AreTwoAtLeastAndApart) {
    constexpr int kTickSize = 14;
    for (const SValueRange& range :
         {SValueRange{0.8389, 0.971}, SValueRange{0, 1}, SValueRange{5.5, 14.5},
          SValueRange{1.5, 8.5}, SValueRange{0.99999, 1.00001}, SValueRange{-1e30, 3e30},
          SValueRange{-4e-12, 1e-12}, SValueRange{1000000, 1000003}})
        for (int width = 144; width <= 760; ++width) {
            const std::vector<SScaleTick> ticks = ScaleTicks(range, width, kTickSize);
            ASSERT_GE(ticks.size(), 2U) << range.low << ", " << width;
            if (ticks.front().value == range.low && ticks.back().value == range.high)
                continue; // both ends have the whole scale
            for (std::size_t i = 1; i < ticks.size(); ++i) {
                const int right = TickPlace(ticks[i - 1], range, width) +
                                  TextWidth(ticks[i - 1].text, kTickSize) / 2;
                const int left =
                    TickPlace(ticks[i], range, width) - TextWidth(ticks[i].text, kTickSize) / 2;
                ASSERT_LT(right + 4, left) << range.low << ", " << width << ", " << i;
            }
        }
    EXPECT_EQ(TextsOf(ScaleTicks({0.8389, 0.971}, 144, kTickSize)),
              (Texts{"0.85", "0.90", "0.95"}));
    EXPECT_EQ(TextsOf(ScaleTicks({0.99999, 1.00001}, 100, kTickSize)), (Texts{"0.99999", "1"}));
    EXPECT_EQ(TextsOf(ScaleTicks({1.9e-7, 0.001999}, 144, kTickSize)), (Texts{"0", "0.001999"}));
    EXPECT_EQ(TextsOf(ScaleTicks({-0.001999, -1.9e-7}, 144, kTickSize)),
              (Texts{"\u22120.001999", "0"}));
}

TEST(ScaleTicks, ShowNumbersByFourDigits) {
    EXPECT_EQ(ShownNumber(0.854321), "0.8543");
    EXPECT_EQ(ShownNumber(65535), "6.554e+04");
    EXPECT_EQ(ShownNumber(1), "1");
    EXPECT_EQ(ShownNumber(0.854321, 3), "0.854");
}

TEST(ScaleTicks, ShowEndsByDigitsThatTellThemApart) {
    using Ends = std::pair<std::string, std::string>;
    EXPECT_EQ(ShownEnds({0.854321, 0.954321}), Ends("0.8543", "0.9543"));
    EXPECT_EQ(ShownEnds({0.99999, 1.00001}), Ends("0.99999", "1"));
    EXPECT_EQ(ShownEnds({-2.9999988, -2.9999986}, 3), Ends("\u22122.9999988", "\u22122.9999986"));
    EXPECT_EQ(ShownEnds({0.1, std::nextafter(0.1, 1)}),
              Ends("0.10000000000000001", "0.10000000000000002"));
}

} // namespace
} // namespace trevolt
