#include "app/inspection/MapThumbnail.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/support/CoefMaps.h"

namespace trevolt {
namespace {

using namespace test;

/// The big-endian number at `at`.
std::uint32_t NumberAt(const std::string& png, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        number = number << 8U | static_cast<unsigned char>(png.at(i));
    return number;
}

CChromaCorrectCoef MapOf(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    return map;
}

void ExpectShape(const SThumbnail& picture, PixelSize png, PixelSize shown) {
    ASSERT_EQ(picture.png.substr(0, 8), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ((PixelSize{NumberAt(picture.png, 16), NumberAt(picture.png, 20)}), png);
    EXPECT_EQ((PixelSize{picture.width, picture.height}), shown);
}

TEST(MapThumbnail, IsAsLargeAsItsSideAllows) {
    ExpectShape(MapThumbnail(MapOf(300, 150), 128), {128, 64}, {128, 64});
    ExpectShape(MapThumbnail(MapOf(128, 20), 128), {128, 20}, {128, 20});
    ExpectShape(MapThumbnail(MapOf(4, 3), 128), {4, 3}, {128, 96});
    ExpectShape(MapThumbnail(MapOf(100, 70), 128), {100, 70}, {100, 70});
    ExpectShape(MapThumbnail(MapOf(1, 1), 16), {1, 1}, {128, 128});
    ExpectShape(MapThumbnail(MapOf(300, 150), 28), {28, 14}, {112, 56});
    ExpectShape(MapThumbnail(MapOf(3000, 1), 100), {100, 1}, {100, 4});
}

TEST(MapThumbnail, TellsTheValuesOfItsColours) {
    CChromaCorrectCoef map = MapOf(3, 1);
    EXPECT_EQ(MapThumbnail(map, 64).range, "1 everywhere");
    SMatrixCoef pixel = map.DefaultElement();
    for (float& value : pixel.m)
        value *= 0.123456F;
    map.SetElement(1, 0, pixel);
    EXPECT_EQ(MapThumbnail(map, 64).range, "0.123 to 1");
    for (float& value : pixel.m)
        value = std::numeric_limits<float>::quiet_NaN();
    map.SetElement(1, 0, pixel);
    EXPECT_EQ(MapThumbnail(map, 64).range, "1 everywhere");
    map.SetElement(0, 0, pixel);
    map.SetElement(2, 0, pixel);
    EXPECT_EQ(MapThumbnail(map, 64).range, "without any number");
}

TEST(MapThumbnail, TellsApartWhatItsColoursTellApart) {
    CChromaCorrectCoef map = MapOf(3, 1);
    for (const auto& [x, factor] : {std::pair{0, 0.95021F}, {1, 0.95034F}, {2, 0.9503F}}) {
        SMatrixCoef pixel = map.DefaultElement();
        for (float& value : pixel.m)
            value *= factor;
        map.SetElement(x, 0, pixel);
    }
    EXPECT_EQ(MapThumbnail(map, 64).range, "0.9502 to 0.9503");
}

TEST(MapThumbnail, NamesWhatIsBeyondItsColours) {
    CChromaCorrectCoef map = MapOf(9, 2);
    SMatrixCoef pixel = map.DefaultElement();
    for (const auto& [x, factor] : {std::pair{0, 0.5F}, {1, 1e30F}}) {
        SMatrixCoef shown = pixel;
        for (float& value : shown.m)
            value *= factor;
        map.SetElement(x, 0, shown);
    }
    EXPECT_EQ(MapThumbnail(map, 64).range, "0.5 to 1, a few from 0.5 to 1e+30");
}

TEST(MapThumbnail, ThereIsNoneWithoutPixels) {
    EXPECT_EQ(MapThumbnail(CChromaCorrectCoef(), 64).png, "");
}

TEST(ThumbnailSide, KeepsAPageWithinItsBytes) {
    EXPECT_EQ(ThumbnailSide(1), 128);
    EXPECT_EQ(ThumbnailSide(256), 128);
    EXPECT_EQ(ThumbnailSide(257), 127);
    EXPECT_EQ(ThumbnailSide(5000), 28);
    EXPECT_EQ(ThumbnailSide(16384), 16);
    EXPECT_EQ(ThumbnailSide(16385), 0);
    EXPECT_EQ(ThumbnailSide(std::numeric_limits<std::size_t>::max()), 0);
}

} // namespace
} // namespace trevolt
