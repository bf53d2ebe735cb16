#include "app/inspection/ValuePicture.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/inspection/Lettering.h"
#include "tests/inspection/PictureParts.h"

namespace trevolt {
namespace {

using test::kContentLeft;
using test::kContentTop;

SValuePictureStyle Style() {
    SValuePictureStyle style;
    style.text = {"Title", "Subtitle", "Quantity"};
    return style;
}

TEST(ValuePicture, DrawsFewValuesLarge) {
    const std::vector<float> values{0, 1, 2, 3, 4, 5};
    const SValuePicture shown = PaintValues(values, 3, 2, Style());
    const CColourScale scale(EColourScale::FalseColour);
    constexpr int kSide = 64;
    for (int y = 0; y < 2 * kSide; ++y)
        for (int x = 0; x < 3 * kSide; ++x) {
            const int value = x / kSide + 3 * (y / kSide);
            ASSERT_EQ(shown.picture.At(kContentLeft + x, kContentTop + y), scale.At(value / 5.0))
                << x << ", " << y;
        }
    EXPECT_EQ(shown.values.found, (SValueRange{0, 5}));
    EXPECT_EQ(shown.values.range, (SValueRange{0, 5}));
    EXPECT_EQ(shown.values.cells, 6U);
}

TEST(ValuePicture, FramesItsPlotOutside) {
    const std::vector<float> values{0, 1};
    const CPicture picture = PaintValues(values, 2, 1, Style()).picture;
    for (const auto& [x, y] : {std::pair{-1, -1}, {128, 64}, {-1, 64}, {128, -1}, {50, 64}})
        EXPECT_EQ(picture.At(kContentLeft + x, kContentTop + y), ink::kFrame) << x << ", " << y;
    EXPECT_EQ(picture.At(kContentLeft - 2, kContentTop), ink::kPaper);
}

TEST(ValuePicture, DrawsManyValuesAsMeans) {
    constexpr std::size_t kWidth = 4000;
    constexpr std::size_t kHeight = 2;
    std::vector<float> values(kWidth * kHeight);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = i % kWidth < kWidth / 2 ? 0.0F : 1.0F;
    SValuePictureStyle style = Style();
    style.width = 456; // room for 400
    const SValuePicture shown = PaintValues(values, kWidth, kHeight, style);
    EXPECT_EQ(shown.picture.Width(), 456);
    const CColourScale scale(EColourScale::FalseColour);
    EXPECT_EQ(shown.picture.At(kContentLeft + 199, kContentTop + 8), scale.At(0));
    EXPECT_EQ(shown.picture.At(kContentLeft + 200, kContentTop + 8), scale.At(1));
    EXPECT_EQ(shown.picture.At(kContentLeft + 399, kContentTop + 15), scale.At(1));
    EXPECT_EQ(shown.picture.At(kContentLeft + 400, kContentTop + 8), ink::kFrame);
    EXPECT_EQ(shown.values.cells, 400U);
}

TEST(ValuePicture, KeepsToTheWidthThatIsGiven) {
    std::vector<float> values(1000 * 700, 1.0F);
    values[0] = std::numeric_limits<float>::quiet_NaN(); // a long note in the legend
    for (const int width : {200, 640, 1600}) {
        SValuePictureStyle style = Style();
        style.width = width;
        const CPicture picture = PaintValues(values, 1000, 700, style).picture;
        EXPECT_LE(picture.Width(), width);
        EXPECT_LE(picture.Height(), width * 5 / 8 + 300);
        const auto inked =
            test::BoundsOf(picture, [](SColour colour) { return colour != ink::kPaper; });
        EXPECT_GE(inked->left, kContentLeft / 2);
        EXPECT_LE(inked->left + inked->width, picture.Width() - kContentLeft / 2);
    }
}

/// The rows that a title of a narrow sheet is taller by than a short one.
int FurtherTitleRows(const std::string& title) {
    return CPictureSheet({title, "", "q"}, 10, 10, 200).Top() - test::kContentTop;
}

TEST(PictureSheet, MakesItsTitleSmallerBeforeItCutsIt) {
    const std::string name = "Cab_01.9fcoef";
    EXPECT_GT(TextWidth(name, 22), 144);
    EXPECT_EQ(FurtherTitleRows(name), 0); // smaller
    EXPECT_EQ(FurtherTitleRows(name + " and Cab_02"), 28);
    CPictureSheet cut({std::string(200, 'w'), "", "q"}, 10, 10, 200); // no size shows it whole
    const auto inked =
        test::BoundsOf(cut.Picture(), [](SColour colour) { return colour != ink::kPaper; });
    EXPECT_EQ(inked->left, kContentLeft);
    EXPECT_LE(inked->left + inked->width, 200 - kContentLeft);
}

TEST(PictureSheet, BreaksItsNotes) {
    constexpr int kWidth = 200;
    const CCellPainter painter(EColourScale::Grey, {0, 1});
    SPaintedValues painted;
    painted.range = {0, 1};
    const auto sheetWith = [&](const std::vector<SLegendNote>& notes) {
        return CPictureSheet({"Title", "", "q"}, 10, 10, kWidth).Finish(painter, painted, notes);
    };
    const int without = sheetWith({}).Height();
    const SLegendNote shortNote{ink::kMark, "x"};
    EXPECT_EQ(sheetWith({shortNote, shortNote}).Height(), without + 24);
    std::string text = "w";
    for (int words = 1; words < 12; ++words, text += " w") {
        const CPicture picture = sheetWith({{ink::kMark, text}, shortNote});
        const auto inked =
            test::BoundsOf(picture, [](SColour colour) { return colour != ink::kPaper; });
        EXPECT_LE(inked->left + inked->width, kWidth - kContentLeft + 8) << words;
    }
    for (const std::string& two : {text, std::string("w wwwwwwwwww")})
        EXPECT_EQ(sheetWith({{ink::kMark, two}, shortNote}).Height(), without + 44 + 24);
}

TEST(PictureSheet, TellsCloseValuesApart) {
    const SValueRange far{1, 3};
    const SValueRange close{2.9999986, 2.9999988}; // in more digits, which take a line more
    const CCellPainter painter(EColourScale::Grey, far);
    const auto heightWith = [&](const SValueRange& found, const SValueRange& range) {
        SPaintedValues painted;
        painted.found = found;
        painted.range = range;
        painted.cells = 1;
        painted.above = 1;
        return CPictureSheet({"Title", "", "q"}, 10, 10, 200).Finish(painter, painted, {}).Height();
    };
    EXPECT_GT(heightWith(close, far), heightWith(far, far));
    EXPECT_GT(heightWith(far, close), heightWith(far, far));
}

TEST(PictureSheet, NotesTheEndsThatValuesAreBeyond) {
    const CCellPainter painter(EColourScale::Grey, {1, 3});
    SPaintedValues painted;
    painted.range = {1, 3};
    painted.cells = 1;
    const auto sheetWith = [&](std::uint64_t beyond, const std::vector<SLegendNote>& notes) {
        painted.below = painted.above = beyond;
        return CPictureSheet({"Title", "", "q"}, 10, 10, 500).Finish(painter, painted, notes);
    };
    using Notes = std::vector<SLegendNote>;
    const Notes flat{{kBelowColour, "below 1: 100.0 %"}, {kAboveColour, "above 3: 100.0 %"}};
    const Notes light{{CCellPainter::LightColour(0), "also below 1: 100.0 %"},
                      {CCellPainter::LightColour(1), "also above 3: 100.0 %"}};
    for (const bool isLight : {false, true}) {
        painted.isLight = isLight;
        const CPicture noted = sheetWith(0, isLight ? light : flat);
        EXPECT_TRUE(std::ranges::equal(sheetWith(1, {}).Bytes(), noted.Bytes())) << isLight;
    }
}

TEST(ValuePicture, NamesWhatIsNoNumberAndBeyondTheScale) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    SValuePictureStyle style = Style();
    const std::vector<float> plain{0, 1, 2, 3};
    const CPicture without = PaintValues(plain, 4, 1, style).picture;
    EXPECT_EQ(test::CountOf(without, kNoNumberColour), 0);

    const std::vector<float> odd{0, nan, 2, 3};
    const SValuePicture with = PaintValues(odd, 4, 1, style);
    EXPECT_EQ(with.values.notFinite, 1U);
    const auto bounds =
        test::BoundsOf(with.picture, [](SColour colour) { return colour == kNoNumberColour; });
    ASSERT_TRUE(bounds);
    EXPECT_GT(bounds->top + bounds->height, kContentTop + 64 + 60); // in the legend, too
    EXPECT_GT(with.picture.Height(), without.Height());

    style.range = SValueRange{1, 2};
    const SValuePicture cut = PaintValues(plain, 4, 1, style);
    EXPECT_EQ(cut.values.below, 1U);
    EXPECT_EQ(cut.values.above, 1U);
    EXPECT_GT(cut.picture.Height(), without.Height());
    for (const SValueRange& oneSided : {SValueRange{0, 2}, SValueRange{1, 3}}) {
        style.range = oneSided;
        EXPECT_GT(PaintValues(plain, 4, 1, style).picture.Height(), without.Height());
    }
}

TEST(ValuePicture, ShowsDifferencesOnBothSidesOfZero) {
    SValuePictureStyle style = Style();
    style.scale = EColourScale::Diverging;
    const std::vector<float> values{-1, 0, 3};
    const SValuePicture shown = PaintValues(values, 3, 1, style);
    EXPECT_EQ(shown.values.range, (SValueRange{-3, 3}));
    const CColourScale scale(EColourScale::Diverging);
    EXPECT_EQ(shown.picture.At(kContentLeft + 64, kContentTop), scale.At(0.5));
}

TEST(ValuePicture, ShowsValuesThatAreAllNoNumbers) {
    const std::vector<float> values(3, std::numeric_limits<float>::quiet_NaN());
    const SValuePicture shown = PaintValues(values, 3, 1, Style());
    EXPECT_EQ(shown.values.found, std::nullopt);
    EXPECT_EQ(shown.values.notFinite, 3U);
    EXPECT_EQ(shown.picture.At(kContentLeft, kContentTop), kNoNumberColour);
}

} // namespace
} // namespace trevolt
