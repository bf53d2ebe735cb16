// The gamma tables and the gamma curve of an object.
#include "trevolt/GammaTables.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "trevolt/Gamma.h"

namespace trevolt {
namespace {

TEST(GammaTables, GammaToLinear) {
    const GammaToLinearTable& table = DefaultGammaToLinear();
    EXPECT_EQ(table[0], 0.0F);
    EXPECT_EQ(table[255], 1.0F);
    for (std::size_t i = 0; i < table.size(); ++i)
        ASSERT_EQ(table[i], static_cast<float>(std::pow(static_cast<double>(i) / 255.0,
                                                        static_cast<double>(2.8F))));
    EXPECT_NEAR(table[128], 0.14520F, 1e-4F);
}

TEST(GammaTables, LinearToGamma) {
    const LinearToGammaTable& table = DefaultLinearToGamma();
    EXPECT_EQ(table.front(), 0U);
    EXPECT_EQ(table.back(), 255U);
    EXPECT_EQ(table[1], 5U);       // (1 ÷ 65536)^0.357 × 255 = 4.86
    EXPECT_EQ(table[32768], 199U); // 0.5^0.357 × 255 = 199.08
    constexpr double kExponent = static_cast<double>(0.35714287F); // 1 ÷ 2.8 in float32
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto level = static_cast<float>(
            std::pow(static_cast<double>(i) * (1.0 / 65536.0), kExponent) * 255.0);
        ASSERT_EQ(table[i], static_cast<std::uint32_t>(level >= 0 ? level + 0.5F : level - 0.5F))
            << i;
    }
}

TEST(GammaTables, AnObjectOwnsACopy) {
    const CCNewBrightCorrectCoef object;
    EXPECT_EQ(object.GammaToLinear(), DefaultGammaToLinear());
    EXPECT_EQ(object.LinearToGamma(), DefaultLinearToGamma());
    EXPECT_NE(&object.LinearToGamma(), &DefaultLinearToGamma());
    EXPECT_EQ(object.Gamma().Gamma(), 2.8F);
    EXPECT_EQ(object.FileKind(), 0U);
    EXPECT_EQ(object.SaverMark(), 0U);
}

TEST(Gamma, TakesAnExponent) {
    CGamma gamma;
    EXPECT_EQ(gamma.ToLinear(0.25F), 0.25F);
    EXPECT_EQ(gamma.InitWithGamma(2.0F), S_OK);
    EXPECT_FLOAT_EQ(gamma.ToLinear(0.5F), 0.25F);
    EXPECT_FLOAT_EQ(gamma.ToLevel(0.25F), 0.5F);
    EXPECT_EQ(gamma.ToLinear(7.0F), 1.0F);
    EXPECT_EQ(gamma.ToLevel(-1.0F), 0.0F);
    CGamma copy;
    copy = gamma;
    EXPECT_EQ(copy.Gamma(), 2.0F);
}

TEST(Gamma, RefusesWhatIsNoExponent) {
    CGamma gamma;
    for (const float bad : {0.0F, -1.0F, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(gamma.InitWithGamma(bad), E_COEF_INVALIDARG);
    EXPECT_EQ(gamma.Gamma(), 1.0F);
}

} // namespace
} // namespace trevolt
