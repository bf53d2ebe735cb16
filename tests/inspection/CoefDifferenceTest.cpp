#include "app/inspection/CoefDifference.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "app/inspection/FileComparison.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/FileKinds.h"

namespace trevolt {
namespace {

using namespace test;

constexpr float kNanValue = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfiniteValue = std::numeric_limits<float>::infinity();

CChromaCorrectCoef Defaults(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    return map;
}

void SetValue(CChromaCorrectCoef& map, std::int64_t x, std::int64_t y, std::size_t k, float value) {
    map.FindElement(x, y)->m[k] = value;
}

TEST(CoefDifference, SameMapsAreNotApart) {
    CChromaCorrectCoef a = Defaults(5, 4);
    CChromaCorrectCoef b = Defaults(5, 4);
    SetValue(a, 1, 1, 0, kNanValue);
    SetValue(b, 1, 1, 0, -kNanValue); // whatever its bits
    SetValue(a, 2, 1, 1, -0.0F);
    SetValue(a, 3, 1, 2, kInfiniteValue);
    SetValue(b, 3, 1, 2, kInfiniteValue);
    const SCoefDifference found = CompareMaps(a, b, kWholeMatrix, 0, 1);
    EXPECT_EQ(found.pixels, 20U);
    EXPECT_EQ(found.differing, 0U);
    EXPECT_EQ(found.compared, kWholeMatrix);
    for (const SValueDifference& value : found.values) {
        EXPECT_EQ(value.differing, 0U);
        EXPECT_EQ(value.oneNan, 0U);
        EXPECT_EQ(value.most, 0.0);
        EXPECT_EQ(value.mean, 0.0);
    }
}

TEST(CoefDifference, TellsEachValueByItself) {
    const CChromaCorrectCoef a = Defaults(4, 2);
    CChromaCorrectCoef b = Defaults(4, 2);
    SetValue(b, 3, 0, 0, 0.5F);
    SetValue(b, 1, 1, 0, 1.5F); // as far, but later
    SetValue(b, 1, 1, 7, -2.0F);
    SetValue(b, 2, 1, 0, 0.75F);
    const SCoefDifference found = CompareMaps(a, b, kWholeMatrix, 0, 1);
    EXPECT_EQ(found.differing, 3U);
    EXPECT_EQ(found.values[0].differing, 3U);
    EXPECT_EQ(found.values[0].most, 0.5);
    EXPECT_EQ(found.values[0].mostAt, (PixelPosition{3, 0}));
    EXPECT_EQ(found.values[0].mean, 1.25 / 8);
    EXPECT_EQ(found.values[7].differing, 1U);
    EXPECT_EQ(found.values[7].most, 2.0);
    EXPECT_EQ(found.values[7].mostAt, (PixelPosition{1, 1}));
    EXPECT_EQ(found.values[7].mean, 0.25);
    EXPECT_EQ(found.values[1].differing, 0U);
}

TEST(CoefDifference, ToleranceIsTheMostThatIsTheSame) {
    const CChromaCorrectCoef a = Defaults(3, 1);
    CChromaCorrectCoef b = Defaults(3, 1);
    SetValue(b, 0, 0, 0, 0.5F);
    SetValue(b, 1, 0, 4, 0.25F);
    const SCoefDifference within = CompareMaps(a, b, kWholeMatrix, 0.75, 1);
    EXPECT_EQ(within.differing, 0U);
    EXPECT_EQ(within.values[4].most, 0.75); // is told all the same
    const SCoefDifference found = CompareMaps(a, b, kWholeMatrix, 0.5, 1);
    EXPECT_EQ(found.differing, 1U);
    EXPECT_EQ(found.values[0].differing, 0U);
    EXPECT_EQ(found.values[4].differing, 1U);
    EXPECT_EQ(CompareMaps(a, b, kWholeMatrix, 0.4999, 1).differing, 2U);
}

TEST(CoefDifference, OneThatIsNoNumberDiffersAtAnyTolerance) {
    CChromaCorrectCoef a = Defaults(2, 2);
    CChromaCorrectCoef b = Defaults(2, 2);
    SetValue(a, 1, 0, 0, kNanValue);
    SetValue(b, 0, 1, 0, kNanValue);
    SetValue(b, 1, 1, 0, 0.0F);
    const SCoefDifference found = CompareMaps(a, b, kWholeMatrix, 10, 1);
    EXPECT_EQ(found.differing, 2U);
    EXPECT_EQ(found.values[0].differing, 2U);
    EXPECT_EQ(found.values[0].oneNan, 2U);
    EXPECT_EQ(found.values[0].most, 1.0);
    EXPECT_EQ(found.values[0].mean, 0.5); // of the two others
}

TEST(CoefDifference, AnInfinityIsInfinitelyFar) {
    CChromaCorrectCoef a = Defaults(2, 1);
    CChromaCorrectCoef b = Defaults(2, 1);
    SetValue(a, 0, 0, 0, kInfiniteValue);
    SetValue(a, 1, 0, 1, kInfiniteValue);
    SetValue(b, 1, 0, 1, -kInfiniteValue);
    const SCoefDifference found = CompareMaps(a, b, kWholeMatrix, 1e30, 1);
    EXPECT_EQ(found.differing, 2U);
    EXPECT_TRUE(std::isinf(found.values[0].most));
    EXPECT_TRUE(std::isinf(found.values[1].mean));
}

TEST(CoefDifference, WhatIsNotComparedIsPassedOver) {
    const CChromaCorrectCoef a = Defaults(2, 1);
    CChromaCorrectCoef b = Defaults(2, 1);
    SetValue(b, 0, 0, 9, 0.5F);
    EXPECT_EQ(CompareMaps(a, b, kWholeMatrix, 0, 1).differing, 0U);
    EXPECT_EQ(CompareMaps(a, b, MapValues(0x200), 0, 1).differing, 1U);
    EXPECT_EQ(DistanceOf(*a.FindElement(0, 0), *b.FindElement(0, 0), kWholeMatrix), 0.0);
    EXPECT_EQ(DistanceOf(*a.FindElement(0, 0), *b.FindElement(0, 0), MapValues(0x200)), 0.5);
}

TEST(CoefDifference, ThreadsChangeNothing) {
    const CChromaCorrectCoef a = Defaults(300, 500);
    CChromaCorrectCoef b = Defaults(300, 500);
    for (std::int32_t i = 0; i < 150000; i += 7)
        SetValue(b, i % 300, i / 300, 3, static_cast<float>(i) * 1e-6F);
    SetValue(b, 5, 499, 3, 0.25F);
    SetValue(b, 6, 0, 3, 0.25F); // as far, and earlier: in another piece of the work
    const SCoefDifference one = CompareMaps(a, b, kWholeMatrix, 0, 1);
    const SCoefDifference four = CompareMaps(a, b, kWholeMatrix, 0, 4);
    EXPECT_EQ(one.values[3].mostAt, (PixelPosition{6, 0}));
    EXPECT_EQ(four.values[3].mostAt, one.values[3].mostAt);
    EXPECT_EQ(four.values[3].mean, one.values[3].mean);
    EXPECT_EQ(four.values[3].differing, one.values[3].differing);
    EXPECT_GT(one.values[3].differing, 21000U);
}

TEST(CoefDifference, DistanceOfAPixelIsItsGreatest) {
    SMatrixCoef a;
    SMatrixCoef b;
    b.m[2] = 0.5F;
    b.m[4] = 0.25F;
    EXPECT_EQ(DistanceOf(a, b, kWholeMatrix), 0.75);
    b.m[8] = kNanValue;
    EXPECT_TRUE(std::isnan(DistanceOf(a, b, kWholeMatrix)));
}

// ---- files ----

std::wstring Cabinet(int number, const wchar_t* extension) {
    return Sample(L"cabinet/Cab_0" + std::to_wstring(number) + extension);
}

TEST(FileComparison, EveryKindIsTheSameAsItsTurn) {
    const wchar_t* const kExtensions[]{L".9fcoef", L".3fcoef", L".9bcoef", L".3bcoef", L".cccoef",
                                       L".9wcoef", L".3wcoef", L".4wcoef", L".12wcoef"};
    int number = 1;
    for (const wchar_t* const extension : kExtensions) {
        const std::wstring turned =
            Sample(L"turned-90/Cab_0" + std::to_wstring(number) + L"-90\u00B0" + extension);
        const SFileComparison found = CompareFiles({Cabinet(number, extension), turned, 1, 0}, 2);
        EXPECT_TRUE(found.IsSame()) << number;
        EXPECT_EQ(found.problems, std::vector<std::string>());
        EXPECT_EQ(found.notes, std::vector<std::string>());
        EXPECT_EQ(found.sizeOfA, (PixelSize{24, 40}));
        const SFileComparison unturned = CompareFiles({Cabinet(number, extension), turned}, 1);
        EXPECT_FALSE(unturned.IsSame());
        EXPECT_FALSE(unturned.difference);
        EXPECT_EQ(unturned.problems, std::vector<std::string>());
        EXPECT_EQ(unturned.sizeOfA, (PixelSize{40, 24}));
        EXPECT_EQ(unturned.sizeOfB, (PixelSize{24, 40}));
        ++number;
    }
}

TEST(FileComparison, TellsWhatAKindLacks) {
    const SFileComparison diagonal =
        CompareFiles({Cabinet(1, L".9fcoef"), Cabinet(2, L".3fcoef")}, 1);
    ASSERT_EQ(diagonal.notes.size(), 1U);
    EXPECT_NE(diagonal.notes[0].find("Cab_02.3fcoef: has the diagonal of the matrix only"),
              std::string::npos);
    EXPECT_EQ(diagonal.difference->compared, kWholeMatrix);
    const SFileComparison green =
        CompareFiles({Cabinet(9, L".12wcoef"), Cabinet(6, L".9wcoef")}, 1);
    ASSERT_EQ(green.notes.size(), 1U);
    EXPECT_NE(green.notes[0].find("Cab_06.9wcoef: has no virtual green"), std::string::npos);
    EXPECT_EQ(green.difference->compared, kWholeMatrix);
    const SFileComparison both = CompareFiles({Cabinet(9, L".12wcoef"), Cabinet(8, L".4wcoef")}, 1);
    EXPECT_EQ(both.difference->compared, MapValues(0xFFF));
    const SFileComparison gains = CompareFiles({Cabinet(2, L".3fcoef"), Cabinet(4, L".3bcoef")}, 1);
    EXPECT_EQ(gains.difference->compared, MapValues(0x111));
    EXPECT_EQ(gains.notes, std::vector<std::string>());
}

TEST(FileComparison, TheSameValuesInAnotherKindAreTheSame) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map = Defaults(5, 4);
    PaintMap(map, BytePixel);
    const std::wstring a = folder.File(L"a.9fcoef");
    const std::wstring b = folder.File(L"b.12wcoef");
    ASSERT_GE(FindExportKind(a)->save(map, a.c_str()), 0);
    ASSERT_GE(FindExportKind(b)->save(map, b.c_str()), 0);
    const SFileComparison found = CompareFiles({a, b}, 1);
    EXPECT_TRUE(found.IsSame());
    EXPECT_EQ(found.difference->compared, kWholeMatrix);
    ASSERT_EQ(found.notes.size(), 1U);
    EXPECT_NE(found.notes[0].find("a.9fcoef: has no virtual green"), std::string::npos);
    // Also in what is not compared: nothing of the next pixel stands beside a matrix.
    EXPECT_EQ(CompareMaps(*found.a, *found.b, MapValues(0xFFF), 0, 1).differing, 0U);
}

TEST(FileComparison, TellsWhatIsNotCompared) {
    const SFileComparison found = CompareFiles(
        {Sample(L"awkward/origin_1000_777.9wcoef"), Sample(L"awkward/blocks_reversed.9wcoef")}, 1);
    EXPECT_TRUE(found.IsSame());
    ASSERT_EQ(found.notes.size(), 1U);
    EXPECT_NE(found.notes[0].find("its origin (1000, 777) is not compared"), std::string::npos);
}

TEST(FileComparison, DamageIsAProblem) {
    const SFileComparison found =
        CompareFiles({Cabinet(1, L".9fcoef"), Sample(L"awkward/cut_short.9fcoef")}, 1);
    EXPECT_FALSE(found.IsSame());
    EXPECT_FALSE(found.difference);
    ASSERT_EQ(found.problems.size(), 1U);
    EXPECT_NE(found.problems[0].find("cut_short.9fcoef: cannot be read: E_FAIL"),
              std::string::npos);
    const CTemporaryFolder folder;
    const SFileComparison missing =
        CompareFiles({folder.File(L"none.9fcoef"), Cabinet(1, L".9fcoef")}, 1);
    ASSERT_EQ(missing.problems.size(), 1U);
    EXPECT_FALSE(missing.sizeOfA);
    EXPECT_EQ(missing.sizeOfB, (PixelSize{40, 24}));
}

TEST(FileComparison, PaintsHowFarPixelsAreApart) {
    const SComparedFiles files{Cabinet(1, L".9fcoef"), Cabinet(2, L".3fcoef")};
    const SFileComparison found = CompareFiles(files, 1);
    const CTemporaryFolder folder;
    const SOutputFile output{folder.File(L"apart.png"), false, false};
    EXPECT_EQ(WriteDifferencePicture(found, files, output, {}, 1), "");
    const Bytes bytes = ReadFile(output.path);
    ASSERT_GT(bytes.size(), 1000U);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 4), MakeBytes({0x89, 'P', 'N', 'G'}));
    EXPECT_NE(WriteDifferencePicture(found, files, output, {}, 1), ""); // it stands
}

TEST(FileComparison, ScalesAPictureOfWhatIsTheSameFromZero) {
    SComparedFiles files{Cabinet(1, L".9fcoef"), Cabinet(1, L".9fcoef")};
    const SFileComparison same = CompareFiles(files, 1);
    EXPECT_EQ(PaintDifference(same, files, {}, 1).values.range, (SValueRange{0, 1}));
    EXPECT_EQ(DifferenceText(*same.difference, 0), "no pixel differs: 960 pixels");
    EXPECT_EQ(DifferenceText(*same.difference, 0.5),
              "no pixel differs by more than 0.5: 960 pixels");
    files.b = Cabinet(2, L".3fcoef");
    const SFileComparison apart = CompareFiles(files, 1);
    ASSERT_TRUE(apart.difference);
    const SPaintedValues found = PaintDifference(apart, files, {}, 1).values;
    EXPECT_EQ(found.range, (SValueRange{0, found.found->high}));
    EXPECT_EQ(found.below + found.above, 0U);
    EXPECT_EQ(PaintDifference(apart, files, SValueRange{1, 2}, 1).values.below, 960U);
    EXPECT_EQ(DifferenceText(*apart.difference, 0.5), "960 of 960 pixels differ by more than 0.5");
}

} // namespace
} // namespace trevolt
