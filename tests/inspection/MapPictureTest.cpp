#include "app/inspection/MapPicture.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "tests/inspection/PictureParts.h"
#include "tests/support/CoefMaps.h"

namespace trevolt {
namespace {

using test::kContentLeft;
using test::kContentTop;

constexpr int kCaption = 28;

std::vector<float> ValuesOf(const SValueRows& rows) {
    std::vector<float> values(rows.width * rows.height * rows.channels);
    for (std::size_t y = 0; y < rows.height; ++y)
        rows.read(y, &values[y * rows.width * rows.channels]);
    return values;
}

CChromaCorrectCoef ViewedMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    test::PaintMap(map, test::PatternPixel);
    return map;
}

/// Each pixel's brightness is its number, from the left top.
CChromaCorrectCoef NumberedMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    test::PaintMap(map, [width](std::int32_t x, std::int32_t y) {
        SMatrixCoef pixel;
        const auto number = static_cast<float>(y * width + x);
        pixel.m = {number, 0, 0, 0, number, 0, 0, 0, number, 0, 1, 0};
        return pixel;
    });
    return map;
}

TEST(MapPicture, TakesEachCoefficientByItsPlace) {
    const CChromaCorrectCoef map = ViewedMap(3, 2);
    for (std::size_t k = 0; k < 12; ++k) {
        const std::vector<float> values = ValuesOf(MapRows(map, {EMapView::Coefficient, k}));
        ASSERT_EQ(values.size(), 6U);
        EXPECT_EQ(values[0], test::PatternPixel(0, 0).m[k]);
        EXPECT_EQ(values[5], test::PatternPixel(2, 1).m[k]);
    }
    EXPECT_EQ(MapViewText({EMapView::Coefficient, 5}), "Coefficient m12");
    EXPECT_EQ(MapViewText({EMapView::Coefficient, 9}), "Virtual green g0");
}

TEST(MapPicture, TakesTheMatrixTimesWhite) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef pixel;
    pixel.m = {1, 2, 4, 8, 16, 32, 64, 128, 256, 999, 999, 999};
    map.SetElement(0, 0, pixel);
    const SValueRows white = MapRows(map, {EMapView::White, 0});
    EXPECT_EQ(white.channels, 3U);
    EXPECT_EQ(ValuesOf(white), (std::vector<float>{7, 56, 448}));
    const std::vector<float> brightness = ValuesOf(MapRows(map, {EMapView::Brightness, 0}));
    EXPECT_NEAR(brightness[0], 0.2126 * 7 + 0.7152 * 56 + 0.0722 * 448, 1e-4);
}

TEST(MapPicture, TakesOneAsTheBrightnessOfDefaults) {
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    for (const float value : ValuesOf(MapRows(map, {})))
        EXPECT_FLOAT_EQ(value, 1);
}

TEST(MapPicture, ReadsRowsAcrossTheMapsBlocks) {
    constexpr std::int32_t kWidth = 1000; // a block ends within row 262
    const CChromaCorrectCoef map = ViewedMap(kWidth, 264);
    const SValueRows rows = MapRows(map, {EMapView::Coefficient, 4});
    std::vector<float> row(kWidth);
    rows.read(262, row.data());
    for (std::int32_t x = 0; x < kWidth; ++x)
        ASSERT_EQ(row[static_cast<std::size_t>(x)], test::PatternPixel(x, 262).m[4]) << x;
}

TEST(MapPicture, ShowsAMapAtItsScale) {
    const SValuePicture shown = PaintMap(NumberedMap(4, 2), {"map", "9fcoef"}, {});
    EXPECT_NEAR(shown.values.found->low, 0, 1e-6);
    EXPECT_NEAR(shown.values.found->high, 7, 1e-5);
    const CColourScale scale(EColourScale::FalseColour);
    EXPECT_EQ(shown.picture.At(kContentLeft, kContentTop), scale.At(0));
    EXPECT_EQ(shown.picture.At(kContentLeft + 255, kContentTop + 127), scale.At(1));
}

TEST(MapPicture, ShowsTheColourForWhiteFromDarkOn) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef pixel;
    pixel.m = {0.5F, 0, 0, 0, 1, 0, 0, 0, 2, 0, 1, 0};
    map.SetElement(0, 0, pixel);
    SMapPictureStyle style;
    style.view.what = EMapView::White;
    const SValuePicture shown = PaintMap(map, {"map", "9fcoef"}, style);
    EXPECT_EQ(shown.values.range, (SValueRange{0, 2}));
    EXPECT_TRUE(shown.values.isLight);
    EXPECT_EQ(shown.picture.At(kContentLeft, kContentTop),
              (SColour{ScreenValue(0.25), ScreenValue(0.5), 255}));
    EXPECT_EQ(shown.picture.At(kContentLeft + 64, kContentTop),
              (SColour{ScreenValue(0.5), ScreenValue(0.5), ScreenValue(0.5)}));
}

/// Where the plots of a picture with a turn begin, and where their corners are marked.
struct STurnTrial {
    std::uint32_t code;
    std::size_t leftTop; ///< number of the pixel there after the turn
    bool isRight;
    bool isBottom;
};

class MapTurnPicture : public ::testing::TestWithParam<STurnTrial> {};

TEST_P(MapTurnPicture, ShowsBothSidesAndMarksTheSameCorner) {
    const STurnTrial& trial = GetParam();
    constexpr int kSide = 64;
    constexpr int kGap = 132;
    const SValuePicture shown = PaintMap(NumberedMap(4, 2), {"map", "9fcoef"}, {}, trial.code);
    const CColourScale scale(EColourScale::FalseColour);
    const auto colour = [&](std::size_t number) {
        return scale.At(static_cast<double>(number) / 7);
    };
    const int top = kContentTop + kCaption;
    EXPECT_EQ(shown.picture.At(kContentLeft + 1, top + 1), colour(0));
    const int turnedLeft = kContentLeft + 4 * kSide + kGap;
    EXPECT_EQ(shown.picture.At(turnedLeft + 1, top + 1), colour(trial.leftTop));
    const int width = (trial.code == 2 ? 4 : 2) * kSide;
    const int height = (trial.code == 2 ? 2 : 4) * kSide;
    EXPECT_EQ(shown.picture.At(turnedLeft + width - 1, top + height - 1),
              colour(7 - trial.leftTop));
    EXPECT_EQ(shown.picture.At(turnedLeft + width, top + height), ink::kFrame);
    // The marks stand around the corners, and nowhere else.
    EXPECT_EQ(shown.picture.At(kContentLeft - 4, top - 4), ink::kMark);
    for (const bool isRight : {false, true})
        for (const bool isBottom : {false, true}) {
            const SColour found = shown.picture.At(turnedLeft + (isRight ? width + 3 : -4),
                                                   top + (isBottom ? height + 3 : -4));
            EXPECT_EQ(found == ink::kMark, isRight == trial.isRight && isBottom == trial.isBottom);
        }
    EXPECT_EQ(shown.values.cells, 16U);
}

INSTANTIATE_TEST_SUITE_P(Turns, MapTurnPicture,
                         ::testing::Values(STurnTrial{1, 4, true, false},
                                           STurnTrial{2, 7, true, true},
                                           STurnTrial{3, 3, false, true}));

TEST(MapPicture, FillsANarrowPictureWithTheMap) {
    CChromaCorrectCoef map;
    map.Resize(320, 180);
    SMapPictureStyle style;
    style.width = 200;
    const SValuePicture shown = PaintMap(map, {"map", "9fcoef"}, style);
    EXPECT_EQ(shown.values.cells, 144U * 81U);
    // Two lines below the title, and two above the scale.
    EXPECT_EQ(shown.picture.Width(), 200);
    EXPECT_EQ(shown.picture.Height(), kContentTop + 20 + 81 + 8 + 76 + 20 + 28);
    EXPECT_EQ(shown.picture.At(kContentLeft - 1, kContentTop + 19), ink::kFrame);
    style.width = kNarrowestTurn;
    const SValuePicture turned = PaintMap(map, {"map", "9fcoef"}, style, 1);
    EXPECT_EQ(turned.values.cells, 2U * 136U * 76U);
    EXPECT_EQ(turned.picture.Width(), 400);
    const auto inked =
        test::BoundsOf(turned.picture, [](SColour colour) { return colour != ink::kPaper; });
    EXPECT_LE(inked->left + inked->width, 400 - kContentLeft / 2);
}

TEST(MapPicture, ShowsThinMaps) {
    CChromaCorrectCoef line;
    line.Resize(65535, 1);
    const SValuePicture shown = PaintMap(line, {"line", "9fcoef"}, {});
    EXPECT_EQ(shown.picture.Width(), 1600);
    EXPECT_EQ(shown.values.cells, 1544U);
    const CColourScale scale(EColourScale::FalseColour);
    EXPECT_EQ(shown.picture.At(kContentLeft + 1543, kContentTop + 15), scale.At(0.5));
    const SValuePicture turned = PaintMap(line, {"line", "9fcoef"}, {}, 1);
    EXPECT_LE(turned.picture.Width(), 1600);
    EXPECT_LE(turned.picture.Height(), 1250);
    CChromaCorrectCoef point;
    point.Resize(1, 1);
    EXPECT_EQ(PaintMap(point, {"point", "9fcoef"}, {}).values.cells, 1U);
}

TEST(WallPicture, PlacesCabinetsRowByRowAtOneScale) {
    CWallPicture wall({{"a", {2, 2}}, {"b", {2, 1}}, {"c", {2, 2}}, {"d", {0, 0}}}, 2, 3, {});
    CChromaCorrectCoef ones;
    ones.Resize(2, 2);
    EXPECT_EQ(wall.Take(0, ones).cells, 4U);
    wall.Take(1, NumberedMap(2, 1));
    CChromaCorrectCoef threes;
    threes.Resize(2, 2);
    test::PaintMap(threes, [](std::int32_t, std::int32_t) {
        SMatrixCoef pixel;
        pixel.m = {3, 0, 0, 0, 3, 0, 0, 0, 3, 0, 1, 0};
        return pixel;
    });
    wall.Take(2, threes);
    const SValuePicture shown = wall.Paint("wall");
    EXPECT_NEAR(shown.values.range.low, 0, 1e-6);
    EXPECT_NEAR(shown.values.range.high, 3, 1e-6);
    const CColourScale scale(EColourScale::FalseColour);
    constexpr int kPlace = 2 * 64;
    const auto at = [&](int column, int row, int x, int y) {
        return shown.picture.At(kContentLeft + column * (kPlace + 2) + x,
                                kContentTop + row * (kPlace + 2) + y);
    };
    EXPECT_EQ(at(0, 0, 5, 5), scale.At(1.0 / 3));
    EXPECT_EQ(at(1, 0, 5, 5), scale.At(0));
    EXPECT_EQ(at(1, 0, 70, 5), scale.At(1.0 / 3));
    // That cabinet is less high.
    EXPECT_EQ(at(1, 0, 70, 63), scale.At(1.0 / 3));
    EXPECT_EQ(at(1, 0, 70, 67), ink::kEmpty);
    EXPECT_EQ(at(1, 0, 66, 70), ink::kHatch);
    EXPECT_EQ(at(0, 1, 5, 5), scale.At(1));
    EXPECT_EQ(at(1, 1, 40, 10), ink::kEmpty); // not read
    EXPECT_EQ(at(1, 1, 0, 0), ink::kFrame);   // and crossed out
    EXPECT_EQ(at(0, 2, 1, 0), ink::kEmpty);   // free
    EXPECT_EQ(at(0, 2, 0, 0), ink::kHatch);
    EXPECT_EQ(at(0, 0, kPlace, 5), ink::kPaper);
    EXPECT_EQ(at(0, 0, 5, kPlace), ink::kPaper);
}

TEST(WallPicture, KeepsToTheWidthThatIsGiven) {
    SMapPictureStyle style;
    style.width = 200;
    CChromaCorrectCoef map;
    map.Resize(160, 90);
    CWallPicture wall(std::vector<CWallPicture::SCabinet>(9, {"cabinet", {160, 90}}), 3, 3, style);
    wall.Take(0, map);
    EXPECT_EQ(wall.Paint("wall").picture.Width(), 2 * kContentLeft + 3 * 46 + 4 + 2);
}

TEST(WallPicture, CountsWhatItShows) {
    EXPECT_EQ(CWallPicture::CabinetsText(3, 0), "3 cabinets");
    EXPECT_EQ(CWallPicture::CabinetsText(3, 1), "2 of 3 cabinets");
    EXPECT_EQ(CWallPicture::CabinetsText(1, 0), "1 cabinet");
}

TEST(WallPicture, CountsWhatHasNoPlace) {
    CWallPicture wall({{"a", {2, 2}}, {"b", {2, 2}}}, 2, 1, {});
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    wall.Take(0, map);
    const auto header = [](const CPicture& picture) {
        return std::vector(picture.Bytes().begin(),
                           picture.Bytes().begin() + 3 * std::ptrdiff_t{476} * (kContentTop - 1));
    };
    CPictureSheet told({"wall", "1 of 4 cabinets · Brightness of white", ""}, 10, 10, 1600);
    ASSERT_EQ(told.Picture().Width(), 476);
    EXPECT_EQ(header(wall.Paint("wall", 2).picture), header(told.Picture()));
}

TEST(WallPicture, HatchesWhereThereAreNoPixelsAndTellsIt) {
    const auto wallOf = [](std::vector<CWallPicture::SCabinet> cabinets, std::size_t taken) {
        CWallPicture wall(cabinets, 2, 1, {});
        for (std::size_t i = 0; i < taken; ++i) {
            CChromaCorrectCoef map;
            map.Resize(static_cast<std::int32_t>(cabinets[i].size.width),
                       static_cast<std::int32_t>(cabinets[i].size.height));
            wall.Take(i, map);
        }
        return wall.Paint("wall").picture;
    };
    const CPicture whole = wallOf({{"a", {2, 2}}, {"b", {2, 2}}}, 2);
    EXPECT_EQ(test::CountOf(whole, ink::kHatch), 0);
    EXPECT_EQ(test::CountOf(whole, ink::kEmpty), 0);
    const CPicture unread = wallOf({{"a", {2, 2}}, {"b", {2, 2}}}, 1);
    EXPECT_EQ(test::CountOf(unread, ink::kHatch), 0);
    EXPECT_EQ(unread.Height(), whole.Height() + 24); // a note in the legend
    // Its sample is what stands for the cabinet, between the lines of its frame.
    const auto countInSample = [](const CPicture& picture, SColour colour) {
        int count = 0;
        for (int y = picture.Height() - 43; y < picture.Height() - 31; ++y)
            for (int x = kContentLeft + 1; x < kContentLeft + 13; ++x)
                count += picture.At(x, y) == colour ? 1 : 0;
        return count;
    };
    EXPECT_EQ(unread.At(kContentLeft, unread.Height() - 44), ink::kFrame);
    EXPECT_GE(countInSample(unread, ink::kFrame), 2 * 12);
    EXPECT_GE(countInSample(unread, ink::kEmpty), 12);
    for (const CPicture& picture :
         {wallOf({{"a", {2, 2}}, {"b", {2, 1}}}, 2), wallOf({{"a", {2, 2}}, {"b", {1, 2}}}, 2),
          wallOf({{"a", {2, 2}}}, 1)}) {
        EXPECT_GE(countInSample(picture, ink::kHatch), 12);
        EXPECT_GE(countInSample(picture, ink::kEmpty), 12);
        EXPECT_EQ(countInSample(picture, ink::kHatch) + countInSample(picture, ink::kEmpty),
                  12 * 12);
        EXPECT_GT(test::CountOf(picture, ink::kHatch), 64);
        EXPECT_EQ(picture.Height(), whole.Height() + 24);
    }
}

TEST(WallPicture, WritesNamesWhereThereIsRoom) {
    const auto wallOf = [](const std::string& name, std::int64_t side) {
        CWallPicture wall({{name, {side, side}}}, 1, 1, {});
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(side), static_cast<std::int32_t>(side));
        wall.Take(0, map);
        return wall.Paint("wall").picture;
    };
    const auto darkPixels = [](const CPicture& picture) {
        int count = 0;
        for (int y = kContentTop + 40; y < kContentTop + 64; ++y)
            for (int x = kContentLeft; x < kContentLeft + 64; ++x)
                count += picture.At(x, y).red < 60 && picture.At(x, y).blue < 60 ? 1 : 0;
        return count;
    };
    EXPECT_EQ(darkPixels(wallOf("", 1)), 0);
    EXPECT_GT(darkPixels(wallOf("Cab", 1)), 20);
    const CPicture shortened = wallOf("Cab_01.9fcoef", 1);
    const CPicture plain = wallOf("Cab_01", 1);
    EXPECT_TRUE(std::ranges::equal(shortened.Bytes(), plain.Bytes()));
}

TEST(WallPicture, BearsAGridLargerThanItsRoom) {
    std::vector<CWallPicture::SCabinet> cabinets(2500, {"cabinet", {3, 2}});
    CWallPicture wall(cabinets, 500, 5, {});
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    wall.Take(2499, map);
    const SValuePicture shown = wall.Paint("wall");
    EXPECT_GE(shown.picture.Width(), 500 * 4);
    EXPECT_LE(shown.picture.Width(), 500 * 8);
}

} // namespace
} // namespace trevolt
