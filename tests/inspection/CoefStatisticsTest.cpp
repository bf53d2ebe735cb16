#include "app/inspection/CoefStatistics.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kBeyondAll = std::numeric_limits<float>::infinity();
const MapValues kAllOfMatrix{0x1FF};

SMatrixCoef OfFirstValue(float value) {
    SMatrixCoef element;
    element.m[0] = value;
    return element;
}

/// A map of 300 × 500 pixels: several runs a row, several bands. m[0] is 0 to 149999 times 1e-6.
CChromaCorrectCoef RisingMap() {
    CChromaCorrectCoef map;
    map.Resize(300, 500);
    for (std::int32_t i = 0; i < 150000; ++i)
        map.SetElement(i % 300, i / 300, OfFirstValue(static_cast<float>(i) * 1e-6F));
    return map;
}

TEST(CoefStatistics, TellsEachValueByItself) {
    CChromaCorrectCoef map;
    map.Resize(3, 2); // five pixels that are set, one default
    const float first[]{-0.25F, 0.0F, 1.0F, 1.5F, 0.5F};
    for (std::int32_t i = 0; i < 5; ++i) {
        SMatrixCoef element = OfFirstValue(first[i]);
        element.m[5] = -0.0F;
        map.SetElement(i % 3, i / 3, element);
    }
    const SCoefStatistics found = StatisticsOf(map, kAllOfMatrix, 1);
    EXPECT_EQ(found.pixels, 6U);
    EXPECT_EQ(found.defaults, 2U); // -0 is 0, and pixel (2, 0) has 1 as defaults have
    EXPECT_EQ(found.wanted, kAllOfMatrix);
    EXPECT_EQ(found.values[0].least, -0.25F);
    EXPECT_EQ(found.values[0].greatest, 1.5F);
    EXPECT_EQ(found.values[0].mean, 3.75 / 6);
    EXPECT_EQ(found.values[0].outside, 2U);
    EXPECT_EQ(found.values[0].nan, 0U);
    EXPECT_EQ(found.values[5].outside, 0U);
    EXPECT_EQ(found.values[8].mean, 1.0);
}

TEST(CoefStatistics, CountsWhatIsNoNumberApart) {
    CChromaCorrectCoef map;
    map.Resize(4, 1);
    const float first[]{kNoNumber, 0.5F, 2.0F, kNoNumber};
    for (std::int32_t x = 0; x < 4; ++x) {
        SMatrixCoef element = OfFirstValue(first[x]);
        element.m[3] = kNoNumber;
        map.SetElement(x, 0, element);
    }
    const SCoefStatistics found = StatisticsOf(map, kAllOfMatrix, 1);
    EXPECT_EQ(found.values[0].nan, 2U);
    EXPECT_EQ(found.values[0].outside, 1U);
    EXPECT_EQ(found.values[0].least, 0.5F);
    EXPECT_EQ(found.values[0].greatest, 2.0F);
    EXPECT_EQ(found.values[0].mean, 1.25);
    EXPECT_EQ(found.values[3].nan, 4U);
    EXPECT_EQ(found.values[3].outside, 0U);
    EXPECT_TRUE(std::isnan(found.values[3].least));
    EXPECT_TRUE(std::isnan(found.values[3].greatest));
    EXPECT_TRUE(std::isnan(found.values[3].mean));
    EXPECT_EQ(found.values[4].nan, 0U);
    EXPECT_EQ(found.defaults, 0U);
}

TEST(CoefStatistics, TakesInfinitiesAsNumbersOutside) {
    CChromaCorrectCoef map;
    map.Resize(3, 1);
    map.SetElement(0, 0, OfFirstValue(kBeyondAll));
    map.SetElement(1, 0, OfFirstValue(-kBeyondAll));
    const SCoefStatistics found = StatisticsOf(map, kAllOfMatrix, 1);
    EXPECT_EQ(found.values[0].least, -kBeyondAll);
    EXPECT_EQ(found.values[0].greatest, kBeyondAll);
    EXPECT_TRUE(std::isnan(found.values[0].mean));
    EXPECT_FALSE(std::signbit(found.values[0].mean));
    EXPECT_EQ(found.values[0].outside, 2U);
    EXPECT_EQ(found.values[0].nan, 0U);
}

TEST(CoefStatistics, DefaultsAreTheWantedValues) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef element;
    element.m[1] = 0.5F;
    element.m[9] = 0.5F;
    map.SetElement(1, 0, element);
    EXPECT_EQ(StatisticsOf(map, MapValues(0x111), 1).defaults, 2U);
    EXPECT_EQ(StatisticsOf(map, MapValues(0x113), 1).defaults, 1U);
    EXPECT_EQ(StatisticsOf(map, MapValues(0x311), 1).defaults, 1U);
}

TEST(CoefStatistics, AddsManyBandsUp) {
    CChromaCorrectCoef map = RisingMap();
    map.SetElement(299, 499, OfFirstValue(1.25F));
    map.SetElement(10, 250, OfFirstValue(kNoNumber));
    double sum = 0;
    for (std::int32_t i = 0; i < 149999; ++i)
        sum += i == 75010 ? 0.0 : static_cast<double>(static_cast<float>(i) * 1e-6F);
    const SCoefStatistics found = StatisticsOf(map, kAllOfMatrix, 1);
    EXPECT_EQ(found.pixels, 150000U);
    EXPECT_EQ(found.values[0].least, 0.0F);
    EXPECT_EQ(found.values[0].greatest, 1.25F);
    EXPECT_EQ(found.values[0].outside, 1U);
    EXPECT_EQ(found.values[0].nan, 1U);
    EXPECT_NEAR(found.values[0].mean, (sum + 1.25) / 149999, 1e-14);
    EXPECT_EQ(found.values[4].mean, 1.0);
    EXPECT_EQ(found.defaults, 0U);
    EXPECT_EQ(StatisticsOf(map, MapValues(0x110), 1).defaults, 150000U);
}

TEST(CoefStatistics, ThreadsChangeNothing) {
    const CChromaCorrectCoef map = RisingMap();
    const SCoefStatistics one = StatisticsOf(map, kAllOfMatrix, 1);
    const SCoefStatistics five = StatisticsOf(map, kAllOfMatrix, 5);
    for (std::size_t k = 0; k < 9; ++k) {
        EXPECT_EQ(one.values[k].least, five.values[k].least);
        EXPECT_EQ(one.values[k].greatest, five.values[k].greatest);
        EXPECT_EQ(one.values[k].mean, five.values[k].mean);
    }
}

/// What a sink tells that gets the map run by run.
SCoefStatistics StatisticsOfRuns(const CChromaCorrectCoef& map, const MapValues& values) {
    const auto sink = MakeStatisticsSink(values);
    sink->TakeSize({map.Width(), map.Height()});
    const CCoefPixels pixels(map);
    std::array<SMatrixCoef, kPixelRun> scratch;
    const auto width = static_cast<std::uint32_t>(map.Width());
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(map.Height()); ++y)
        for (std::uint32_t x = 0; x < width; x += kPixelRun) {
            const std::uint32_t count = std::min(kPixelRun, width - x);
            sink->TakeRun(pixels.Run(x, y, count, scratch.data()), count);
        }
    return sink->Statistics();
}

void ExpectSameBits(const SCoefStatistics& a, const SCoefStatistics& b) {
    EXPECT_EQ(a.pixels, b.pixels);
    EXPECT_EQ(a.defaults, b.defaults);
    EXPECT_EQ(a.wanted, b.wanted);
    for (std::size_t k = 0; k < a.values.size(); ++k) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(a.values[k].least),
                  std::bit_cast<std::uint32_t>(b.values[k].least));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(a.values[k].greatest),
                  std::bit_cast<std::uint32_t>(b.values[k].greatest));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(a.values[k].mean),
                  std::bit_cast<std::uint64_t>(b.values[k].mean));
        EXPECT_EQ(a.values[k].outside, b.values[k].outside);
        EXPECT_EQ(a.values[k].nan, b.values[k].nan);
    }
}

// Sums of numbers that are far apart depend on their order.
TEST(CoefStatistics, RunsTellWhatAMapDoes) {
    CChromaCorrectCoef map = RisingMap();
    for (std::int32_t i = 0; i < 150000; i += 7)
        map.SetElement(i % 300, i / 300, OfFirstValue(std::ldexp(1.0F + 0x1p-20F, i % 120 - 60)));
    ExpectSameBits(StatisticsOfRuns(map, kAllOfMatrix), StatisticsOf(map, kAllOfMatrix, 3));
    map.SetElement(299, 499, OfFirstValue(-1.25F));
    map.SetElement(10, 250, OfFirstValue(kNoNumber));
    ExpectSameBits(StatisticsOfRuns(map, kAllOfMatrix), StatisticsOf(map, kAllOfMatrix, 3));
    ExpectSameBits(StatisticsOfRuns(CChromaCorrectCoef(), kAllOfMatrix),
                   StatisticsOf(CChromaCorrectCoef(), kAllOfMatrix, 3));
}

TEST(CoefStatistics, NoPixelHasNoValue) {
    const SCoefStatistics found = StatisticsOf(CChromaCorrectCoef(), kAllOfMatrix, 2);
    EXPECT_EQ(found.pixels, 0U);
    EXPECT_EQ(found.defaults, 0U);
    EXPECT_TRUE(std::isnan(found.values[0].mean));
    EXPECT_TRUE(std::isnan(found.values[0].least));
}

} // namespace
} // namespace trevolt
