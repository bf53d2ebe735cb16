// The rows of the transfer table by value, the step rows, and what becomes of a table's own pairs.
#include <cmath>

#include <gtest/gtest.h>

#include "trevolt/CaliOperationData.h"

namespace trevolt {
namespace {

std::uint32_t Entry(const CCaliOperationData& table, std::uint32_t row, std::uint32_t level) {
    return table.Row(row)[level];
}

std::int64_t Signed(const CCaliOperationData& table, std::uint32_t row, std::uint32_t level) {
    return static_cast<std::int32_t>(Entry(table, row, level));
}

struct SFixedEntry {
    std::uint32_t row;
    std::uint32_t level;
    std::int64_t entry;
};

// Worked out by hand: D = 65535, halves away from zero.
constexpr SFixedEntry kFixedEntries[] = {
    {0, 0, 0},          {0, 65535, 65535}, {1, 0, 1311},  {1, 65535, 66846}, // 1310.7, 66845.7
    {2, 100, 755},                                                           // 100 + 655.35
    {3, 0, 328},                                                             // 327.675
    {4, 10, 11},                                                             // 10.5
    {4, 65535, 68812},                                                       // 68811.75
    {5, 25, 26},                                                             // 25.5
    {6, 50, 51},                                                             // 50.5
    {7, 0, 1040},       {8, 0, 257},                                         // 1040.238, 257.0
    {9, 0, -1311},      {9, 1311, 0},                                        // −1310.7, 0.3
    {10, 655, 0},                                                            // −0.35
    {11, 0, -328},      {12, 10, 10},                                        // 9.5
    {13, 25, 25},                                                            // 24.5
    {14, 50, 50},                                                            // 49.5
    {15, 0, -1040},     {16, 0, -257},     {17, 0, 2341}, {18, 0, 936},      // 2340.536, 936.214
    {19, 0, 468},       {20, 0, 234},                                        // 468.107, 234.054
    {21, 0, 94},        {22, 0, 47},                                         // 93.621, 46.811
    {23, 0, -2341},     {24, 0, -936},     {25, 0, -468}, {26, 0, -234},
    {27, 0, -94},       {28, 0, -47},      {29, 0, 1638}, {30, 0, -1638}, // 1638.375
    {31, 65535, 65536}, {32, 0, -1},       {33, 0, 1040}, {34, 0, -1040},
    {35, 0, 4369},      {36, 0, -4369},    {37, 0, 273},  {38, 0, -273}, // 273.0625
    {39, 0, 257},       {40, 0, -257},
};

TEST(TransferTable, FixedRows) {
    const CCaliOperationData table;
    for (const SFixedEntry& fixed : kFixedEntries)
        EXPECT_EQ(Signed(table, fixed.row, fixed.level), fixed.entry)
            << "row " << fixed.row << " level " << fixed.level;
    EXPECT_EQ(Entry(table, 32, 0), 0xFFFFFFFFU);
}

// The whole of rows 0 to 40 by the rules as they are told, float where they say float.
TEST(TransferTable, FixedRowsEverywhere) {
    const CCaliOperationData table;
    constexpr double D = 65535;
    const auto toWord = [](double value) { return static_cast<std::int64_t>(std::round(value)); };
    for (std::uint32_t level = 0; level < 65536; ++level) {
        const double i = level;
        const auto f = static_cast<float>(level);
        const double expected[] = {
            i,
            i + 0.02 * D,
            i + 0.01 * D,
            i + 0.005 * D,
            i * 1.05,
            i * 1.02,
            i * 1.01,
            static_cast<double>(f + 65535.0F * 0.015873017F),
            static_cast<double>(f + 65535.0F * 0.003921569F),
            i - 0.02 * D,
            i - 0.01 * D,
            i - 0.005 * D,
            i * 0.95,
            i * 0.98,
            i * 0.99,
            static_cast<double>(f - 65535.0F * 0.015873017F),
            static_cast<double>(f - 65535.0F * 0.003921569F),
            i + D / 28,
            i + D / 70,
            i + D / 140,
            i + D / 280,
            i + D / 700,
            i + D / 1400,
            i - D / 28,
            i - D / 70,
            i - D / 140,
            i - D / 280,
            i - D / 700,
            i - D / 1400,
            i + 0.025 * D,
            i - 0.025 * D,
            i + 1,
            i - 1,
            i + D * (1.0 / 63),
            i - D * (1.0 / 63),
            i + D / 15,
            i - D / 15,
            i + D / 240,
            i - D / 240,
            i + D * (1.0 / 255),
            i - D * (1.0 / 255),
        };
        for (std::uint32_t row = 0; row < std::size(expected); ++row)
            ASSERT_EQ(Signed(table, row, level), toWord(expected[row]))
                << "row " << row << " level " << level;
    }
}

TEST(TransferTable, StepRowsStartAsRowZero) {
    const CCaliOperationData table;
    EXPECT_EQ(table.StepValue(), 0.0F);
    for (std::uint32_t row = 41; row < 57; ++row)
        for (std::uint32_t level = 0; level < 65536; ++level)
            ASSERT_EQ(Entry(table, row, level), level);
}

TEST(TransferTable, StepRowsFollowTheStepInPairs) {
    constexpr float kDivisors[] = {1, 14, 40, 65535, 63, 15, 240, 255};
    for (std::uint32_t pair = 0; pair < 8; ++pair)
        for (const std::uint32_t row : {41 + 2 * pair, 42 + 2 * pair}) {
            CCaliOperationData table;
            table.SetStep(row, 0.3F);
            EXPECT_EQ(table.StepValue(), 0.3F);
            const float offset = 0.3F / kDivisors[pair] * 65535.0F;
            for (std::uint32_t level = 0; level < 65536; level += 17) {
                const auto f = static_cast<float>(level);
                ASSERT_EQ(Signed(table, 41 + 2 * pair, level),
                          static_cast<std::int64_t>(std::roundf(f + offset)));
                ASSERT_EQ(Signed(table, 42 + 2 * pair, level),
                          static_cast<std::int64_t>(std::roundf(f - offset)));
            }
            for (std::uint32_t other = 41; other < 57; ++other)
                if ((other - 41) / 2 != pair) {
                    ASSERT_EQ(Entry(table, other, 1000), 1000U);
                }
        }
}

// Steps at which another order of the operations, or double, rounds to the level beside.
TEST(TransferTable, StepsAreFloatsInTheirOrder) {
    CCaliOperationData table;
    table.SetStep(41, 7.6286e-6F);
    EXPECT_EQ(Entry(table, 41, 60000), 60001U); // the sum in double: 60000
    table.SetStep(43, 2.071F);
    EXPECT_EQ(Entry(table, 43, 0), 9695U); // multiplied before it is divided: 9694
    table.SetStep(45, 1.785F);
    EXPECT_EQ(Entry(table, 45, 5268), 8192U); // multiplied before it is divided: 8193
}

TEST(TransferTable, AStepIsTheTablesOwn) {
    CCaliOperationData changed;
    const CCaliOperationData untouched;
    changed.SetStep(41, 0.5F);
    EXPECT_EQ(Entry(changed, 41, 0), 32768U);
    EXPECT_EQ(Entry(untouched, 41, 0), 0U);
    changed.SetStep(42, 0.0F);
    EXPECT_EQ(Entry(changed, 41, 7), 7U);
}

TEST(TransferTable, StrangeStepsAreDefined) {
    CCaliOperationData table;
    table.SetStep(41, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(Entry(table, 41, 5), 0U);
    table.SetStep(41, std::numeric_limits<float>::infinity());
    EXPECT_EQ(Entry(table, 41, 5), 0U);
    table.SetStep(41, 1e9F); // 6.5535e13: only the low 32 bits stay
    EXPECT_EQ(Entry(table, 41, 0),
              static_cast<std::uint32_t>(static_cast<std::int64_t>(1e9F * 65535.0F)));
}

TEST(TransferTable, CandidatesAreClamped) {
    CCaliOperationData table;
    EXPECT_EQ(table.Candidate(31, 65535), 65535);
    EXPECT_EQ(table.Candidate(32, 0), 0);
    EXPECT_EQ(table.Candidate(31, 12), 13);
}

// What tables leave behind is handed on: memory follows the tables in use at a time.
TEST(TransferTable, PairsOfGoneTablesAreUsedAgain) {
    {
        CCaliOperationData first;
        first.SetStep(41, 0.1F);
    }
    const std::size_t spare = CCaliOperationData::SparePairCount();
    ASSERT_GE(spare, 1U);
    for (int i = 0; i < 100; ++i) {
        CCaliOperationData table;
        table.SetStep(55, 0.1F);
        ASSERT_EQ(CCaliOperationData::SparePairCount(), spare - 1);
        ASSERT_EQ(Entry(table, 41, 3), 3U); // nothing of the table before shows
    }
    EXPECT_EQ(CCaliOperationData::SparePairCount(), spare);
}

} // namespace
} // namespace trevolt
