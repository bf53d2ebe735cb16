#include "formats/SanitizeMatrix.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using Matrix = std::array<float, 9>;

Matrix Sanitized(Matrix m) {
    SanitizeMatrix(m);
    return m;
}

bool Changes(Matrix m) { return SanitizeMatrix(m); }

Matrix WithFirst(float value) { return {value, 0, 0, 0, 0, 0, 0, 0, 0}; }

TEST(SanitizeMatrix, ItsThresholdsAreTheExactFloats) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(kSmallestCoefficient), 0x3727C5ACU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(kLargestCoefficient), 0x3F800054U);
}

TEST(SanitizeMatrix, MakesWhatIsBelowTheSmallestZero) {
    EXPECT_EQ(Sanitized(WithFirst(std::bit_cast<float>(0x3727C5ABU)))[0], 0.0F);
    EXPECT_EQ(Sanitized(WithFirst(kSmallestCoefficient))[0], kSmallestCoefficient);
    EXPECT_EQ(Sanitized(WithFirst(-0.5F))[0], 0.0F);
    EXPECT_EQ(Sanitized(WithFirst(-std::numeric_limits<float>::infinity()))[0], 0.0F);
    EXPECT_FALSE(std::signbit(Sanitized(WithFirst(-0.0F))[0]));
}

TEST(SanitizeMatrix, MakesWhatIsAboveTheLargestOne) {
    EXPECT_EQ(Sanitized(WithFirst(kLargestCoefficient))[0], kLargestCoefficient);
    EXPECT_EQ(Sanitized(WithFirst(std::bit_cast<float>(0x3F800055U)))[0], 1.0F);
    EXPECT_EQ(Sanitized(WithFirst(std::numeric_limits<float>::infinity()))[0], 1.0F);
}

TEST(SanitizeMatrix, DividesAColumnBySumsAboveTheLargest) {
    EXPECT_EQ(Sanitized({0.6F, 0, 0, 0.6F, 1, 0, 0.4F, 0, 1}),
              (Matrix{0.375F, 0, 0, 0.375F, 1, 0, 0.25F, 0, 1}));
    // Each column by its own sum: 2, 1 and 1.5.
    EXPECT_EQ(Sanitized({1, 0.5F, 0.75F, 1, 0.25F, 0.75F, 0, 0.25F, 0}),
              (Matrix{0.5F, 0.5F, 0.5F, 0.5F, 0.25F, 0.5F, 0, 0.25F, 0}));
}

TEST(SanitizeMatrix, ClampsBeforeItSums) {
    EXPECT_EQ(Sanitized({2, 0, 0, 0, 2, 0, 0, 0, 2}), (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(Sanitized({3, 0, 0, 1, 0, 0, -5, 0, 0}), (Matrix{0.5F, 0, 0, 0.5F, 0, 0, 0, 0, 0}));
}

TEST(SanitizeMatrix, LeavesASumAtTheLargest) {
    const Matrix m{kLargestCoefficient, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Sanitized(m), m);
}

TEST(SanitizeMatrix, LeavesNanAndItsColumn) {
    const Matrix m = Sanitized({std::nanf(""), 0, 0, 1, 0, 0, 1, 0, 0});
    EXPECT_TRUE(std::isnan(m[0]));
    EXPECT_EQ(m[3], 1.0F);
    EXPECT_EQ(m[6], 1.0F);
}

TEST(SanitizeMatrix, AQuotientBelowTheSmallestGoesWithTheNextCleaning) {
    const Matrix once = Sanitized({kSmallestCoefficient, 0, 0, 1, 0, 0, 1, 0, 0});
    EXPECT_GT(once[0], 0.0F);
    EXPECT_LT(once[0], kSmallestCoefficient);
    EXPECT_EQ(Sanitized(once)[0], 0.0F);
}

TEST(SanitizeMatrix, TellsWhetherAValueChanged) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Changes(WithFirst(0.0F)));
    EXPECT_FALSE(Changes(WithFirst(-0.0F)));
    EXPECT_FALSE(Changes(WithFirst(nan)));
    EXPECT_FALSE(Changes(WithFirst(kSmallestCoefficient)));
    EXPECT_FALSE(Changes(WithFirst(kLargestCoefficient)));
    EXPECT_FALSE(Changes({0.5F, 0, 0, 0.25F, 1, 0, 0.25F, 0, 1}));
    EXPECT_TRUE(Changes(WithFirst(std::bit_cast<float>(0x3727C5ABU))));
    EXPECT_TRUE(Changes(WithFirst(-0.5F)));
    EXPECT_TRUE(Changes(WithFirst(std::bit_cast<float>(0x3F800055U))));
    EXPECT_TRUE(Changes({nan, 0, 0, nan, 0, 0, nan, 0, 2}));
    for (std::size_t column = 0; column < 3; ++column) {
        Matrix m{};
        m[column] = m[column + 3] = 0.50002F;
        EXPECT_TRUE(Changes(m)) << column;
    }
}

} // namespace
} // namespace trevolt
