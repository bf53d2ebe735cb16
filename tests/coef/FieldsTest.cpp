// The fields of every coefficient object: their order and what a new object has in them.
#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"

namespace trevolt {

/// Where a member begins and ends.
struct SMember {
    std::uintptr_t begin;
    std::uintptr_t end;
};

template <class T>
SMember Member(const T& member) {
    return {reinterpret_cast<std::uintptr_t>(&member),
            reinterpret_cast<std::uintptr_t>(&member + 1)};
}

struct SCoefFields {
    /// Where the fields of every object lie, in the order in which they should.
    static std::vector<SMember> FieldsOf(const CColorCorrectCoef& o) {
        return {Member(o.m_gamma),          Member(o.m_reserved),      Member(o.m_processingFlags),
                Member(o.m_gammaToLinear),  Member(o.m_linearToGamma), Member(o.m_fileKind),
                Member(o.m_saverMark),      Member(o.m_saverMark2),    Member(o.m_channelLevels),
                Member(o.m_channelFactors), Member(o.m_factors)};
    }

    /// Where what the kinds add lies, each member with its size, in the order in which they should.
    static std::vector<SMember> MembersOf(const CCNewBrightCorrectCoef& o) {
        return {Member(o.m_pStore), Member(o.m_pMap), Member(o.m_pTransferTable)};
    }
    static std::vector<SMember> MembersOf(const CCNewChromaCorrectCoef& o) {
        return {Member(o.m_pStore), Member(o.m_second.owner), Member(o.m_pMap),
                Member(o.m_transferTable), Member(o.m_mode)};
    }
    template <class Element>
    static std::vector<SMember> MembersOf(const CVirtualGreenCorrectCoef<Element>& o) {
        return {Member(o.m_pStore), Member(o.m_pTransferTable)};
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
    // What a kind adds lies behind them.
    std::vector<SMember> members = SCoefFields::FieldsOf(object);
    for (const SMember& added : SCoefFields::MembersOf(object))
        members.push_back(added);
    for (std::size_t i = 1; i < members.size(); ++i)
        EXPECT_GE(members[i].begin, members[i - 1].end) << i;
    EXPECT_LE(members.back().end, Member(object).end);
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
