#include "app/inspection/AreaAverage.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

SValueRows RowsOf(const std::vector<float>& values, std::size_t width, std::size_t height,
                  std::size_t channels = 1) {
    return {width, height, channels, [&values, width, channels](std::size_t y, float* row) {
                for (std::size_t i = 0; i < width * channels; ++i)
                    row[i] = values[y * width * channels + i];
            }};
}

/// Values without a pattern that a wrong weight could hide in.
std::vector<float> RoughValues(std::size_t count) {
    std::vector<float> values;
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525U + 1013904223U;
        values.push_back(static_cast<float>(state >> 8) / 16777216.0F + 0.25F);
    }
    return values;
}

double Overlap(double beginA, double endA, double beginB, double endB) {
    return std::max(0.0, std::min(endA, endB) - std::max(beginA, beginB));
}

/// The mean of what a cell covers, from every pixel of the source.
double SlowMean(const std::vector<float>& values, std::size_t width, std::size_t height,
                double left, double top, double right, double bottom) {
    double sum = 0;
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const auto px = static_cast<double>(x);
            const auto py = static_cast<double>(y);
            sum += static_cast<double>(values[y * width + x]) * Overlap(left, right, px, px + 1) *
                   Overlap(top, bottom, py, py + 1);
        }
    return sum / ((right - left) * (bottom - top));
}

TEST(AreaAverage, GivesTheMeanOfWholePixels) {
    const std::vector<float> values{1, 2, 3, 4, 5, 6, 7, 8};
    const SValueCells cells = AverageByArea(RowsOf(values, 4, 2), 2, 1, 1);
    EXPECT_EQ(cells.width, 2U);
    EXPECT_EQ(cells.height, 1U);
    EXPECT_EQ(cells.values, (std::vector<float>{3.5F, 5.5F}));
    EXPECT_EQ(cells.notFinite, 0U);
}

TEST(AreaAverage, CountsPixelsAtEdgesByTheirParts) {
    const std::vector<float> values{3, 6, 9};
    // Each cell covers one pixel and a half.
    const SValueCells cells = AverageByArea(RowsOf(values, 3, 1), 2, 1, 1);
    EXPECT_EQ(cells.values, (std::vector<float>{4, 8}));
    EXPECT_EQ(AverageByArea(RowsOf(values, 1, 3), 1, 2, 1).values, (std::vector<float>{4, 8}));
}

TEST(AreaAverage, IsTheMeanOfTheAreaInAnyShape) {
    constexpr std::size_t kWidth = 37;
    constexpr std::size_t kHeight = 23;
    const std::vector<float> values = RoughValues(kWidth * kHeight);
    for (const std::size_t width : {1U, 5U, 11U, 36U, 37U})
        for (const std::size_t height : {1U, 7U, 22U, 23U}) {
            const SValueCells cells =
                AverageByArea(RowsOf(values, kWidth, kHeight), width, height, 1);
            const double stepX = static_cast<double>(kWidth) / static_cast<double>(width);
            const double stepY = static_cast<double>(kHeight) / static_cast<double>(height);
            for (std::size_t y = 0; y < height; ++y)
                for (std::size_t x = 0; x < width; ++x) {
                    const double left = stepX * static_cast<double>(x);
                    const double top = stepY * static_cast<double>(y);
                    ASSERT_NEAR(
                        *cells.Cell(x, y),
                        SlowMean(values, kWidth, kHeight, left, top, left + stepX, top + stepY),
                        1e-6)
                        << width << " x " << height << " at " << x << ", " << y;
                }
        }
}

TEST(AreaAverage, KeepsValuesBitByBitWhereNothingIsReduced) {
    const std::vector<float> values = RoughValues(6 * 5);
    EXPECT_EQ(AverageByArea(RowsOf(values, 6, 5), 6, 5, 2).values, values);
}

TEST(AreaAverage, KeepsChannelsApart) {
    const std::vector<float> values{1, 10, 100, 3, 30, 300};
    const SValueCells cells = AverageByArea(RowsOf(values, 2, 1, 3), 1, 1, 1);
    EXPECT_EQ(cells.values, (std::vector<float>{2, 20, 200}));
}

TEST(AreaAverage, DoesNotDependOnThreads) {
    const std::vector<float> values = RoughValues(50 * 41);
    const SValueCells alone = AverageByArea(RowsOf(values, 50, 41), 13, 17, 1);
    for (const std::size_t jobs : {2U, 3U, 40U})
        EXPECT_EQ(AverageByArea(RowsOf(values, 50, 41), 13, 17, jobs).values, alone.values) << jobs;
}

TEST(AreaAverage, MarksCellsOverWhatIsNoNumberAndCountsItsPixelsOnce) {
    std::vector<float> values(9 * 9, 1.0F);
    values[4 * 9 + 4] = std::numeric_limits<float>::quiet_NaN(); // in four cells of 2 x 2
    values[0] = std::numeric_limits<float>::infinity();
    values[8] = -std::numeric_limits<float>::infinity();
    for (const std::size_t jobs : {1U, 2U}) {
        const SValueCells cells = AverageByArea(RowsOf(values, 9, 9), 2, 2, jobs);
        EXPECT_EQ(cells.notFinite, 3U);
        for (const float value : cells.values)
            EXPECT_TRUE(std::isnan(value));
    }
    const SValueCells same = AverageByArea(RowsOf(values, 9, 9), 9, 9, 2);
    EXPECT_EQ(same.notFinite, 3U);
    EXPECT_TRUE(std::isnan(*same.Cell(0, 0)));
    EXPECT_EQ(*same.Cell(1, 0), 1.0F);
}

TEST(AreaAverage, CountsAPixelOnceWhateverItsChannels) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> values{nan, nan, 1, 1, 1, nan};
    EXPECT_EQ(AverageByArea(RowsOf(values, 2, 1, 3), 2, 1, 1).notFinite, 2U);
}

} // namespace
} // namespace trevolt
