#include "app/inspection/CellPainter.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(CellPainter, ScalesDownToWhatFitsAndUpByWholeNumbers) {
    EXPECT_EQ(PlotScale({400, 100}, {200, 200}), 0.5);
    EXPECT_EQ(PlotScale({100, 400}, {200, 100}), 0.25);
    EXPECT_EQ(PlotScale({100, 50}, {390, 1000}), 3);
    EXPECT_EQ(PlotScale({1, 1}, {1000, 1000}), 64);
    EXPECT_EQ(PlotScale({200, 200}, {200, 200}), 1);
}

TEST(CellPainter, ShapesPlotsOfAnySize) {
    EXPECT_EQ(PlotShape({400, 100}, 0.5), (SPlotShape{200, 50, 1, 1}));
    EXPECT_EQ(PlotShape({4, 3}, 5), (SPlotShape{4, 3, 5, 5}));
    EXPECT_EQ(PlotShape({65535, 1}, 0.02), (SPlotShape{1311, 1, 1, 1}));
    EXPECT_EQ(PlotShape({65535, 1}, 0.02, 16), (SPlotShape{1311, 1, 1, 16}));
    EXPECT_EQ(PlotShape({5, 100}, 1, 16), (SPlotShape{5, 100, 4, 1}));
    EXPECT_EQ(PlotShape({5, 100}, 1, 16).Width(), 20);
    EXPECT_EQ(PlotShape({5, 100}, 1, 16).Height(), 100);
}

TEST(CellPainter, FindsTheRangeOfWhatIsFinite) {
    EXPECT_EQ(RangeOf({2, 2, 1, {kNan, 3, -1, 2}, 1}), (SValueRange{-1, 3}));
    EXPECT_EQ(RangeOf({1, 1, 1, {kNan}, 1}), std::nullopt);
    EXPECT_EQ(JoinedRange(SValueRange{1, 2}, SValueRange{0, 1.5}), (SValueRange{0, 2}));
    EXPECT_EQ(JoinedRange(std::nullopt, SValueRange{0, 1.5}), (SValueRange{0, 1.5}));
    EXPECT_EQ(JoinedRange(SValueRange{0, 1.5}, std::nullopt), (SValueRange{0, 1.5}));
}

/// So many of one value, and some others.
std::vector<float> Mostly(std::size_t count, float value, std::vector<float> others) {
    others.insert(others.end(), count, value);
    return others;
}

TEST(CellPainter, LeavesOutOfAScaleTheFewThatAreFarFromAllOthers) {
    EXPECT_EQ(UsualRange({}), std::nullopt);
    EXPECT_EQ(UsualRange(std::vector{kNan, -kInfinity}), std::nullopt);
    EXPECT_EQ(UsualRange(std::vector{kNan, 3.0F, kInfinity}), (SValueRange{3, 3}));
    EXPECT_EQ(UsualRange(std::vector{5.0F, 1.0F}), (SValueRange{1, 5}));

    std::vector<float> spread; // 0 to 999, the middle one 500
    for (int i = 0; i < 1000; ++i)
        spread.push_back(static_cast<float>(i));
    EXPECT_EQ(UsualRange(spread), (SValueRange{0, 999}));
    for (const float wild : {1e30F, -1e30F, 3e38F, 5600.0F, -4600.0F})
        EXPECT_EQ(UsualRange(Mostly(3, wild, spread)), (SValueRange{0, 999})) << wild;
    EXPECT_EQ(UsualRange(Mostly(3, 5400, spread)), (SValueRange{0, 5400}));
    EXPECT_EQ(UsualRange(Mostly(3, -4400, spread)), (SValueRange{-4400, 999}));
    EXPECT_EQ(UsualRange(Mostly(10, 1e30F, spread))->high, 999);  // of 1010
    EXPECT_GT(UsualRange(Mostly(12, 1e30F, spread))->high, 1e29); // no longer few
}

TEST(CellPainter, FindsTheMiddleOfManyValuesOfBothSigns) {
    // Each 19 from the next, in no order: -950,000 to 949,981. Half of them are within 475,000 of the
    // middle, all but one in a hundred within 940,500; ten times that are usual.
    std::vector<float> values;
    for (int i = 0; i < 100000; ++i)
        values.push_back(static_cast<float>(19 * (i * 7919 % 100000 - 50000)));
    EXPECT_EQ(UsualRange(values), (SValueRange{-950000, 949981}));
    for (const float wild : {9.5e6F, -9.5e6F})
        EXPECT_EQ(UsualRange(Mostly(9, wild, values)), (SValueRange{-950000, 949981})) << wild;
    EXPECT_EQ(UsualRange(Mostly(9, 9.4e6F, values))->high, 9.4e6);
    EXPECT_EQ(UsualRange(Mostly(9, -9.4e6F, values))->low, -9.4e6);
}

TEST(CellPainter, TellsWhatIsFarAmongValuesThatAreNearlyAllTheSame) {
    EXPECT_EQ(UsualRange(Mostly(1000, 1, {1.2F, 0, 2})), (SValueRange{0, 2}));
    EXPECT_EQ(UsualRange(Mostly(1000, 1, {1e30F, 0.5F, -0.5F})), (SValueRange{0.5, 1}));
    EXPECT_EQ(UsualRange(Mostly(1000, -1, {1e30F, -1.5F})), (SValueRange{-1.5, -1}));
    EXPECT_EQ(UsualRange(Mostly(1000, 0, {0.25F, 0.5F, 2, 1e30F})), (SValueRange{0, 2}));
    EXPECT_EQ(UsualRange(Mostly(1000, 0, {0.25F, 0.5F, 1, 6})), (SValueRange{0, 6}));
    EXPECT_EQ(UsualRange(Mostly(1000, 0, {})), (SValueRange{0, 0}));
    // Rounding is no difference.
    EXPECT_EQ(UsualRange(Mostly(1000, 1, Mostly(100, 1.0000001F, {0.5F, 1e30F})))->low, 0.5);
}

TEST(CellPainter, TellsOneThatIsFarAmongFew) {
    EXPECT_EQ(UsualRange(std::vector{1.0F, 1.0F, 1e30F}), (SValueRange{1, 1}));
    EXPECT_EQ(UsualRange(std::vector{1.0F, 1.01F, 0.99F, 1e30F}).value().high, 1.01F);
    EXPECT_EQ(UsualRange(std::vector{1.0F, 1.01F, 0.99F, 2.0F}).value().high, 2);
    std::vector<float> many{1.1F, 1.01F, 2.0F};
    for (int i = 0; i < 10; ++i)
        many.push_back(static_cast<float>(i) / 10);
    EXPECT_EQ(UsualRange(Mostly(3, 1e30F, many)), (SValueRange{0, 2})); // of 16
    EXPECT_EQ(UsualRange(Mostly(4, 1e30F, many)), (SValueRange{0, 2}));
    EXPECT_GT(UsualRange(Mostly(5, 1e30F, Mostly(10, 1, many)))->high, 1e29); // four at most
}

TEST(CellPainter, GivesEveryScaleARange) {
    const std::vector<float> two{1, 2};
    const std::vector<float> zero{0};
    EXPECT_EQ(ScaleRange({}, two), (SValueRange{1, 2}));
    EXPECT_EQ(ScaleRange({.given = SValueRange{5, 6}}, two), (SValueRange{5, 6}));
    EXPECT_EQ(ScaleRange({}, {}), (SValueRange{0, 1}));
    EXPECT_EQ(ScaleRange({}, std::vector{4.0F}), (SValueRange{2, 6}));
    EXPECT_EQ(ScaleRange({}, zero), (SValueRange{-0.5, 0.5}));
    constexpr SScaleEnds kDiverging{EColourScale::Diverging, {}, false};
    EXPECT_EQ(ScaleRange(kDiverging, std::vector{-1.0F, 3.0F, 1.0F}), (SValueRange{-3, 3}));
    EXPECT_EQ(ScaleRange(kDiverging, zero), (SValueRange{-0.5, 0.5}));
    constexpr SScaleEnds kFromZero{EColourScale::FalseColour, {}, true};
    EXPECT_EQ(ScaleRange(kFromZero, two), (SValueRange{0, 2}));
    EXPECT_EQ(ScaleRange(kFromZero, zero), (SValueRange{0, 1}));
    EXPECT_EQ(ScaleRange(kFromZero, std::vector{-4.0F}), (SValueRange{0, 1}));
    EXPECT_EQ(ScaleRange({{}, SValueRange{5, 6}, true}, two), (SValueRange{5, 6}));
}

TEST(CellPainter, TurnsCellsAsMapsAreTurned) {
    const SValueCells cells{3, 2, 1, {1, 2, 3, 4, 5, 6}, 7};
    const SValueCells quarter = TurnedCells(cells, 1);
    EXPECT_EQ(quarter.width, 2U);
    EXPECT_EQ(quarter.height, 3U);
    EXPECT_EQ(quarter.values, (std::vector<float>{4, 1, 5, 2, 6, 3}));
    EXPECT_EQ(quarter.notFinite, 7U);
    EXPECT_EQ(TurnedCells(cells, 2).values, (std::vector<float>{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(TurnedCells(cells, 3).values, (std::vector<float>{3, 6, 2, 5, 1, 4}));
    const SValueCells light{1, 2, 3, {1, 2, 3, 4, 5, 6}, 0};
    EXPECT_EQ(TurnedCells(light, 1).values, (std::vector<float>{4, 5, 6, 1, 2, 3}));
}

TEST(CellPainter, PaintsEachCellInItsColour) {
    const SValueCells cells{2, 2, 1, {0, 10, 5, kNan}, 1};
    CCellPainter painter(EColourScale::Grey, {0, 10});
    CPicture picture(9, 7, {1, 2, 3});
    painter.Paint(picture, 2, 1, cells, {2, 2, 3, 2});
    const CColourScale scale(EColourScale::Grey);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) {
            SColour wanted{1, 2, 3};
            if (x >= 2 && x < 8 && y >= 1 && y < 5) {
                const int cell = (x - 2) / 3 + 2 * ((y - 1) / 2);
                wanted = cell == 3 ? kNoNumberColour : scale.At(cell == 2 ? 0.5 : cell);
            }
            EXPECT_EQ(picture.At(x, y), wanted) << x << ", " << y;
        }
}

TEST(CellPainter, CountsWhatIsBeyondTheEnds) {
    const SValueCells cells{6, 1, 1, {-1, 0, 1, 1.5F, 2, kNan}, 1};
    CCellPainter painter(EColourScale::Grey, {0, 1});
    CPicture picture(6, 1, {});
    painter.Paint(picture, 0, 0, cells, {6, 1});
    const SPaintedValues painted = painter.Painted(SValueRange{-1, 2}, 1);
    EXPECT_EQ(painted.cells, 6U);
    EXPECT_EQ(painted.below, 1U);
    EXPECT_EQ(painted.above, 2U);
    EXPECT_EQ(painted.notFinite, 1U);
    EXPECT_EQ(painted.range, (SValueRange{0, 1}));
    EXPECT_EQ(painted.found, (SValueRange{-1, 2}));
    EXPECT_FALSE(painted.isLight);
    EXPECT_EQ(picture.At(0, 0), kBelowColour);
    EXPECT_EQ(picture.At(1, 0), CColourScale(EColourScale::Grey).At(0));
    EXPECT_EQ(picture.At(2, 0), CColourScale(EColourScale::Grey).At(1));
    EXPECT_EQ(picture.At(3, 0), kAboveColour);
    EXPECT_EQ(picture.At(5, 0), kNoNumberColour);
}

TEST(CellPainter, PaintsAndCountsTheSameWithEveryNumberOfThreads) {
    constexpr std::size_t kWide = 5;
    constexpr std::size_t kHigh = 7;
    SValueCells cells{kWide, kHigh, 1, {}, 0};
    for (std::size_t i = 0; i < kWide * kHigh; ++i)
        cells.values.push_back(static_cast<float>(i) - 10);
    const auto painted = [&](std::size_t jobs) {
        CCellPainter painter(EColourScale::Grey, {0, 20}, jobs);
        CPicture picture(10, 7, {});
        painter.Paint(picture, 0, 0, cells, {kWide, kHigh, 2, 1});
        const SPaintedValues counts = painter.Painted({}, 0);
        EXPECT_EQ(counts.cells, kWide * kHigh);
        EXPECT_EQ(counts.below, 10U);
        EXPECT_EQ(counts.above, 4U);
        return picture;
    };
    const CPicture one = painted(1);
    EXPECT_EQ(one.At(9, 6), kAboveColour);
    for (const std::size_t jobs : {0U, 2U, 3U, 100U})
        EXPECT_TRUE(std::ranges::equal(painted(jobs).Bytes(), one.Bytes())) << jobs;
}

TEST(CellPainter, PaintsThreeValuesAsLight) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const SValueCells cells{3, 1, 3, {0, 1, 2, 2, -1, 3, 1, 1, nan}, 1};
    CCellPainter painter(EColourScale::FalseColour, {0, 2});
    CPicture picture(3, 1, {});
    painter.Paint(picture, 0, 0, cells, {3, 1});
    EXPECT_EQ(picture.At(0, 0), (SColour{0, 188, 255}));
    EXPECT_EQ(picture.At(1, 0), (SColour{255, 0, 255}));
    EXPECT_EQ(picture.At(2, 0), kNoNumberColour);
    const SPaintedValues painted = painter.Painted({}, 0);
    EXPECT_TRUE(painted.isLight);
    EXPECT_EQ(painted.below, 1U);
    EXPECT_EQ(painted.above, 1U);
}

} // namespace
} // namespace trevolt
