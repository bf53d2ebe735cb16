// The fields of every coefficient object: their order and what a new object has in them.
#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"

namespace trevolt {

/// Where the fields of an object lie, in the order in which they should.
struct SCoefFields {
    static std::vector<const void*> Addresses(const CColorCorrectCoef& o) {
        return {&o.m_gamma,         &o.m_reserved[0],   &o.m_reserved[1],    &o.m_processingFlags,
                &o.m_gammaToLinear, &o.m_linearToGamma, &o.m_fileKind,       &o.m_saverMark,
                &o.m_saverMark2,    &o.m_channelLevels, &o.m_channelFactors, &o.m_factors};
    }

    static void ExpectInitialValues(const CColorCorrectCoef& o) {
        ASSERT_NE(o.m_gamma, nullptr);
        EXPECT_EQ(o.m_gamma->Gamma(), 2.8F);
        ASSERT_NE(o.m_gammaToLinear, nullptr);
        ASSERT_NE(o.m_linearToGamma, nullptr);
        EXPECT_EQ(*o.m_gammaToLinear, DefaultGammaToLinear());
        EXPECT_EQ(*o.m_linearToGamma, DefaultLinearToGamma());
        EXPECT_EQ(std::to_array(o.m_reserved), (std::array<std::uint64_t, 2>{0, 0}));
        EXPECT_EQ(std::to_array(o.m_processingFlags), (std::array<std::uint8_t, 3>{0, 0, 0}));
        EXPECT_EQ(o.m_fileKind, 0U);
        EXPECT_EQ(o.m_saverMark, 0U);
        EXPECT_EQ(o.m_saverMark2, 0U);
        EXPECT_EQ(std::to_array(o.m_channelLevels), (std::array<std::uint32_t, 3>{255, 255, 255}));
        EXPECT_EQ(std::to_array(o.m_channelFactors), (std::array{0.15F, 0.15F, 0.15F}));
        EXPECT_EQ(std::to_array(o.m_factors), (std::array{1.0F, 1.3F, 1.2F}));
    }

    static_assert(sizeof(CColorCorrectCoef::m_reserved) == 16);
    static_assert(sizeof(CColorCorrectCoef::m_processingFlags) == 3);
    static_assert(sizeof(CColorCorrectCoef::m_fileKind) == 4);
    static_assert(sizeof(CColorCorrectCoef::m_saverMark) == 2);
    static_assert(sizeof(CColorCorrectCoef::m_saverMark2) == 1);
    static_assert(sizeof(CColorCorrectCoef::m_channelLevels) == 12);
    static_assert(sizeof(CColorCorrectCoef::m_channelFactors) == 12);
    static_assert(sizeof(CColorCorrectCoef::m_factors) == 12);
};

namespace {

template <class Object>
class Fields : public ::testing::Test {};
TYPED_TEST_SUITE(Fields, test::AllKinds);

TYPED_TEST(Fields, HaveTheirValuesAndTheirOrder) {
    TypeParam object;
    SCoefFields::ExpectInitialValues(object);
    const auto addresses = SCoefFields::Addresses(object);
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
    // What a kind adds lies behind them.
    EXPECT_GE(static_cast<const void*>(reinterpret_cast<const std::byte*>(&object) +
                                       sizeof(CColorCorrectCoef)),
              addresses.back());
    object.SetFileKind(2);
    object.SetSaverMark(1);
    EXPECT_EQ(object.FileKind(), 2U);
    EXPECT_EQ(object.SaverMark(), 1U);
}

TEST(Fields, AnObjectsTablesAreItsOwn) {
    const CCNewBrightCorrectCoef first;
    const CCNewBrightCorrectCoef second;
    EXPECT_NE(&first.LinearToGamma(), &second.LinearToGamma());
    EXPECT_NE(&first.GammaToLinear(), &second.GammaToLinear());
    EXPECT_NE(&first.Gamma(), &second.Gamma());
}

} // namespace
} // namespace trevolt
