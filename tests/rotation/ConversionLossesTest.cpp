#include "app/rotation/ConversionLosses.h"

#include <cmath>

#include <gtest/gtest.h>

#include "app/rotation/CoefFile.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

using namespace test;

CChromaCorrectCoef OnePixel(const SMatrixCoef& pixel) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    map.SetElement(0, 0, pixel);
    return map;
}

SConversionLosses LossesOf(const SMatrixCoef& pixel, std::wstring_view kind) {
    return CountLosses(OnePixel(pixel), FormOfKind(*FindLoadKind(kind)));
}

/// The default with one value changed.
SMatrixCoef With(std::size_t place, float value) {
    SMatrixCoef pixel;
    pixel.m[place] = value;
    return pixel;
}

TEST(ConversionLosses, TheDefaultIsHeldByEveryKind) {
    for (const SFileKind& kind : FileKinds()) {
        SConversionLosses losses = LossesOf({}, kind.extension);
        EXPECT_EQ(losses.defaultPixels, kind.extension == L".cccoef" ? 1U : 0U);
        losses.defaultPixels = 0;
        EXPECT_EQ(losses, SConversionLosses{});
    }
    EXPECT_EQ(CountLosses(OnePixel(PatternPixel(3, 4)), kMapForm), SConversionLosses{});
}

TEST(ConversionLosses, WhatAFormDoesNotHoldIsCountedAPixelOnce) {
    SMatrixCoef pixel = With(1, 0.5F);
    pixel.m[7] = kNaN;
    EXPECT_EQ(LossesOf(pixel, L".3fcoef"), SConversionLosses{.offDiagonalPixels = 1});
    EXPECT_EQ(LossesOf(pixel, L".4wcoef"), SConversionLosses{.offDiagonalPixels = 1});
    EXPECT_EQ(LossesOf(pixel, L".9fcoef"), SConversionLosses{});
    for (const std::size_t place : {9U, 10U, 11U}) {
        const SMatrixCoef beside = With(place, 0.2F); // a whole 65535th
        EXPECT_EQ(LossesOf(beside, L".9fcoef"), SConversionLosses{.besideMatrixPixels = 1});
        EXPECT_EQ(LossesOf(beside, L".12wcoef"), SConversionLosses{});
        EXPECT_EQ(LossesOf(beside, L".4wcoef"),
                  SConversionLosses{.besideMatrixPixels = place == 10U ? 0U : 1U});
    }
}

TEST(ConversionLosses, ValuesAreHeldRoundedWrappedOrZero) {
    const auto isOf = [](float value, const SConversionLosses& words,
                         const SConversionLosses& bytes) {
        EXPECT_EQ(LossesOf(With(4, value), L".9wcoef"), words) << value;
        EXPECT_EQ(LossesOf(With(4, value), L".3bcoef"), bytes) << value;
    };
    const SConversionLosses held;
    const SConversionLosses rounded{.roundedValues = 1};
    const SConversionLosses wrapped{.wrappedValues = 1};
    const SConversionLosses zeroed{.zeroedValues = 1};
    isOf(0.0F, held, held);
    isOf(-0.0F, held, held);
    isOf(1.0F, held, held);
    isOf(ByteToFloat(51), held, held);
    isOf(WordToFloat(1), held, rounded);
    isOf(0.3333F, rounded, rounded);
    isOf(-1e-9F, rounded, rounded);
    isOf(1.000001F, rounded, rounded);
    isOf(1.00001F, wrapped, rounded);      // 65535.66
    isOf(-0.00001F, wrapped, rounded);     // -0.66
    isOf(-0.5F / 65535, wrapped, rounded); // halves are rounded away from 0
    isOf(std::nextafter(-0.5F / 65535, 0.0F), rounded, rounded);
    isOf(65535.5F / 65535, wrapped, rounded);
    isOf(std::nextafter(65535.5F / 65535, 0.0F), rounded, rounded);
    isOf(-0.5F / 255, wrapped, wrapped);
    isOf(255.5F / 255, wrapped, wrapped);
    isOf(1.002F, wrapped, wrapped);  // 255.51
    isOf(-0.002F, wrapped, wrapped); // -0.51
    isOf(1e13F, wrapped, wrapped);
    isOf(1e15F, zeroed, wrapped); // 6.5e19 is past 64 bits, 2.55e17 is not
    isOf(-1e15F, zeroed, wrapped);
    isOf(kNaN, zeroed, zeroed);
    isOf(kInfinity, zeroed, zeroed);
    isOf(-kInfinity, zeroed, zeroed);
}

TEST(ConversionLosses, EveryWordAndEveryByteIsHeld) {
    CChromaCorrectCoef words;
    words.Resize(256, 256);
    CChromaCorrectCoef bytes;
    bytes.Resize(256, 1);
    PaintMap(words, [](std::int32_t x, std::int32_t y) {
        return With(4, WordToFloat(static_cast<std::uint16_t>(y * 256 + x)));
    });
    PaintMap(bytes, [](std::int32_t x, std::int32_t) {
        return With(4, ByteToFloat(static_cast<std::uint8_t>(x)));
    });
    EXPECT_EQ(CountLosses(words, FormOfKind(*FindLoadKind(L".3wcoef"))), SConversionLosses{});
    EXPECT_EQ(CountLosses(bytes, FormOfKind(*FindLoadKind(L".3wcoef"))), SConversionLosses{});
    EXPECT_EQ(CountLosses(bytes, FormOfKind(*FindLoadKind(L".3bcoef"))), SConversionLosses{});
}

TEST(ConversionLosses, TextRoundsAndItsReaderCleans) {
    const auto losses = [](std::size_t place, float value) {
        return LossesOf(With(place, value), L".cccoef");
    };
    const SConversionLosses rounded{.roundedValues = 1};
    const SConversionLosses cleaned{.cleanedValues = 1};
    EXPECT_EQ(losses(4, 0.12345F), SConversionLosses{});
    EXPECT_EQ(losses(4, 0.123456F), rounded);
    EXPECT_EQ(losses(4, 0.000004F), rounded); // to 0
    EXPECT_EQ(losses(4, 0.00001F), SConversionLosses{});
    EXPECT_EQ(losses(4, -0.5F), cleaned);
    EXPECT_EQ(losses(4, 1.5F), cleaned);
    EXPECT_EQ(losses(4, kInfinity), cleaned);
    EXPECT_EQ(losses(4, kNaN), SConversionLosses{});                      // stays
    EXPECT_EQ(losses(3, 0.25F), (SConversionLosses{.cleanedValues = 2})); // a column of 1.25
    EXPECT_EQ(losses(9, 0.25F), SConversionLosses{.besideMatrixPixels = 1});
}

TEST(ConversionLosses, AFormThatHoldsAllOfAnotherLosesNothing) {
    const CTemporaryFolder folder;
    CChromaCorrectCoef map;
    map.Resize(16, 16);
    PaintMap(map, [](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel;
        for (std::size_t k = 0; k < pixel.m.size(); ++k)
            pixel.m[k] = static_cast<float>(x * 16 + y + static_cast<int>(k)) / 257.0F;
        return pixel;
    });
    map.FindElement(3, 3)->m[4] = kNaN;
    std::size_t held = 0;
    for (const SFileKind& from : FileKinds()) {
        const std::wstring path = folder.File(L"a" + std::wstring(from.extension));
        ASSERT_GE(from.save(map, path.c_str()), 0);
        const SCoefLoad load = LoadCoefFile(path);
        for (const SFileKind& to : FileKinds())
            if (HoldsAllOf(FormOfKind(from), FormOfKind(to))) {
                EXPECT_EQ(CountLosses(*load.map, FormOfKind(to)), SConversionLosses{})
                    << testing::PrintToString(path + std::wstring(to.extension));
                ++held;
            }
        EXPECT_TRUE(HoldsAllOf(FormOfKind(from), kMapForm));
        EXPECT_EQ(HoldsAllOf(FormOfKind(from), FormOfKind(from)), from.extension != L".cccoef");
    }
    EXPECT_EQ(held, 28U);
    const auto isHeld = [](const wchar_t* from, const wchar_t* to) {
        return HoldsAllOf(FormOfKind(*FindLoadKind(from)), FormOfKind(*FindLoadKind(to)));
    };
    EXPECT_TRUE(isHeld(L".3bcoef", L".4wcoef"));
    EXPECT_FALSE(isHeld(L".4wcoef", L".9wcoef"));
    EXPECT_FALSE(isHeld(L".3wcoef", L".9bcoef"));
    EXPECT_FALSE(isHeld(L".3fcoef", L".12wcoef"));
    EXPECT_FALSE(isHeld(L".cccoef", L".9wcoef"));
}

TEST(ConversionLosses, AreToldInPlainWords) {
    const SElementForm& words = FormOfKind(*FindLoadKind(L".3wcoef"));
    EXPECT_TRUE(DescribeLosses({}, words, "x").empty());
    EXPECT_EQ(DescribeLosses({.offDiagonalPixels = 1,
                              .besideMatrixPixels = 2,
                              .wrappedValues = 1,
                              .zeroedValues = 2,
                              .roundedValues = 3},
                             words, ".3wcoef"),
              (std::vector<std::string>{
                  "1 pixel has entries off the diagonal, which .3wcoef does not hold",
                  "2 pixels have values beside the matrix, which .3wcoef does not hold",
                  "2 values are no numbers or beyond all integers and became 0",
                  "1 value is out of the range 0 to 1 and wrapped: the low 16 bits of value x "
                  "65535 stand there",
                  "3 values are rounded to whole 65535ths"}));
    EXPECT_EQ(DescribeLosses({.cleanedValues = 1, .roundedValues = 1},
                             FormOfKind(*FindLoadKind(L".cccoef")), ".cccoef"),
              (std::vector<std::string>{
                  "1 value is changed when the text is read, which takes values from 0 to 1 and "
                  "columns whose sum is 1 at most",
                  "1 value is rounded to five decimals"}));
}

TEST(ConversionLosses, AreThoseOfARectangle) {
    const SFileKind& kind = *FindLoadKind(L".3bcoef");
    CChromaCorrectCoef map;
    map.Resize(4, 3);
    PaintMap(map, [](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel;
        pixel.m = {2, x == y ? 0.5F : 0, 0, 0, 1, 0, 0, 0, static_cast<float>(x), 0, 1, 0};
        return pixel;
    });
    EXPECT_EQ(CountLosses(map, {0, 0, 1, 1}, FormOfKind(kind)),
              (SConversionLosses{.offDiagonalPixels = 1, .wrappedValues = 1}));
    EXPECT_EQ(CountLosses(map, {2, 0, 4, 2}, FormOfKind(kind)),
              (SConversionLosses{.wrappedValues = 8}));
    EXPECT_EQ(CountLosses(map, {1, 1, 1, 3}, FormOfKind(kind)), SConversionLosses{});
    EXPECT_EQ(CountLosses(map, FormOfKind(kind)),
              (SConversionLosses{.offDiagonalPixels = 3, .wrappedValues = 18}));
    EXPECT_EQ(DescribeLosses(map, {1, 1, 3, 3}, kind),
              (std::vector<std::string>{
                  "2 pixels have entries off the diagonal, which .3bcoef does not hold",
                  "6 values are out of the range 0 to 1 and wrapped: the low 8 bits of value x 255 "
                  "stand there"}));
}

} // namespace
} // namespace trevolt
