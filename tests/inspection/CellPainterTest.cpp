#include "app/inspection/CellPainter.h"

#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

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

TEST(CellPainter, GivesEveryScaleARange) {
    constexpr auto kScale = EColourScale::FalseColour;
    EXPECT_EQ(ScaleRange(kScale, {}, SValueRange{1, 2}), (SValueRange{1, 2}));
    EXPECT_EQ(ScaleRange(kScale, SValueRange{5, 6}, SValueRange{1, 2}), (SValueRange{5, 6}));
    EXPECT_EQ(ScaleRange(kScale, {}, {}), (SValueRange{0, 1}));
    EXPECT_EQ(ScaleRange(kScale, {}, SValueRange{4, 4}), (SValueRange{2, 6}));
    EXPECT_EQ(ScaleRange(kScale, {}, SValueRange{0, 0}), (SValueRange{-0.5, 0.5}));
    EXPECT_EQ(ScaleRange(EColourScale::Diverging, {}, SValueRange{-1, 3}), (SValueRange{-3, 3}));
    EXPECT_EQ(ScaleRange(EColourScale::Diverging, {}, SValueRange{0, 0}), (SValueRange{-0.5, 0.5}));
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
    EXPECT_EQ(picture.At(0, 0), picture.At(1, 0));
    EXPECT_EQ(picture.At(4, 0), picture.At(2, 0));
}

TEST(CellPainter, PaintsThreeValuesAsLight) {
    const SValueCells cells{2, 1, 3, {0, 1, 2, 2, -1, 3}, 0};
    CCellPainter painter(EColourScale::FalseColour, {0, 2});
    CPicture picture(2, 1, {});
    painter.Paint(picture, 0, 0, cells, {2, 1});
    EXPECT_EQ(picture.At(0, 0), (SColour{0, 188, 255}));
    EXPECT_EQ(picture.At(1, 0), (SColour{255, 0, 255}));
    const SPaintedValues painted = painter.Painted({}, 0);
    EXPECT_TRUE(painted.isLight);
    EXPECT_EQ(painted.below, 1U);
    EXPECT_EQ(painted.above, 1U);
}

} // namespace
} // namespace trevolt
