#include "app/rotation/UnheldValues.h"

#include <cwchar>

#include <gtest/gtest.h>

#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"

namespace trevolt {
namespace {

using Unheld = std::vector<std::string>;

/// Of a default map with one value changed.
Unheld UnheldOf(const wchar_t* extension, std::size_t place, float value) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    map.FindElement(2, 1)->m[place] = value;
    EXPECT_EQ(DescribeUnheld(map, {0, 0, 2, 2}, *FindExportKind(extension)), Unheld{});
    return DescribeUnheld(map, {0, 0, 3, 2}, *FindExportKind(extension));
}

std::string InKind(const std::string& text, const wchar_t* extension) {
    return text + std::string(extension, extension + std::wcslen(extension));
}

TEST(UnheldValues, OfADefaultMapThereAreNone) {
    for (const SFileKind& kind : FileKinds()) {
        CChromaCorrectCoef map;
        map.Resize(3, 2);
        EXPECT_EQ(DescribeUnheld(map, {0, 0, 3, 2}, kind), Unheld{});
    }
}

TEST(UnheldValues, EntriesOffTheDiagonalAreHeldByMatricesOnly) {
    for (const wchar_t* kind : {L".3fcoef", L".3bcoef", L".3wcoef", L".4wcoef"})
        EXPECT_EQ(UnheldOf(kind, 1, 0.5F),
                  Unheld{InKind("1 pixel has entries off the diagonal, which ", kind) +
                         " does not hold"});
    for (const wchar_t* kind : {L".9fcoef", L".9bcoef", L".9wcoef", L".12wcoef"})
        EXPECT_EQ(UnheldOf(kind, 7, 0.5F), Unheld{});
}

TEST(UnheldValues, ValuesBesideTheMatrixAreHeldByKindsOfFourEmitters) {
    for (const wchar_t* kind :
         {L".9fcoef", L".3fcoef", L".9bcoef", L".3bcoef", L".9wcoef", L".3wcoef", L".cccoef"})
        EXPECT_EQ(UnheldOf(kind, 10, 0.5F),
                  Unheld{InKind("1 pixel has values beside the matrix, which ", kind) +
                         " does not hold"});
    EXPECT_EQ(UnheldOf(L".4wcoef", 9, 0.5F),
              Unheld{"1 pixel has values beside the matrix, which .4wcoef does not hold"});
    EXPECT_EQ(UnheldOf(L".4wcoef", 10, 0.5F), Unheld{});
    for (const std::size_t place : {9U, 10U, 11U})
        EXPECT_EQ(UnheldOf(L".12wcoef", place, 0.5F), Unheld{});
}

TEST(UnheldValues, WordsAndBytesHoldValuesFromZeroToOne) {
    for (const wchar_t* kind :
         {L".9bcoef", L".3bcoef", L".9wcoef", L".3wcoef", L".4wcoef", L".12wcoef"}) {
        const Unheld outside{
            InKind("1 value is not from 0 to 1, and another one stands for it in ", kind)};
        for (const float value : {1.002F, -0.002F, test::kNaN, test::kInfinity, -1e30F})
            EXPECT_EQ(UnheldOf(kind, 8, value), outside) << value;
        for (const float value : {0.0F, 1.0F, 1.000001F, -0.000001F, 65535.49F / 65535})
            EXPECT_EQ(UnheldOf(kind, 8, value), Unheld{}) << value;
    }
    EXPECT_EQ(UnheldOf(L".9bcoef", 0, 1.0019F), Unheld{});
    EXPECT_EQ(UnheldOf(L".9wcoef", 0, 1.0019F).size(), 1U);
    EXPECT_EQ(UnheldOf(L".9bcoef", 0, 255.5F / 255).size(), 1U);
    EXPECT_EQ(UnheldOf(L".9bcoef", 0, -0.5F / 255).size(), 1U);
    EXPECT_EQ(UnheldOf(L".9bcoef", 0, -0.49F / 255), Unheld{});
    EXPECT_EQ(UnheldOf(L".9fcoef", 0, 7.0F), Unheld{});
}

TEST(UnheldValues, TextsAreCleaned) {
    for (const float value : {1.5F, -0.5F, 0.000001F})
        EXPECT_EQ(UnheldOf(L".cccoef", 0, value),
                  Unheld{"1 pixel is changed by the cleaning when .cccoef is read"});
    EXPECT_EQ(UnheldOf(L".cccoef", 3, 0.5F).size(), 1U); // the column's sum is 1.5
    EXPECT_EQ(UnheldOf(L".cccoef", 0, 0.5F), Unheld{});
}

TEST(UnheldValues, AreCounted) {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    test::PaintMap(map, [](std::int32_t x, std::int32_t) {
        SMatrixCoef pixel;
        pixel.m = {2, 0.5F, 0, 0, 2, 0, 0, 0, static_cast<float>(x), 0.5F, 1, 0};
        return pixel;
    });
    EXPECT_EQ(DescribeUnheld(map, {0, 0, 3, 2}, *FindExportKind(L".3bcoef")),
              (Unheld{"6 pixels have entries off the diagonal, which .3bcoef does not hold",
                      "6 pixels have values beside the matrix, which .3bcoef does not hold",
                      "14 values are not from 0 to 1, and others stand for them in .3bcoef"}));
}

} // namespace
} // namespace trevolt
