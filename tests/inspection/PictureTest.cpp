#include "app/inspection/Picture.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr SColour kInk{10, 20, 30};
constexpr SColour kPaper{200, 210, 220};

/// A row as a text: "#" for the ink, "." for the paper.
std::string RowText(const CPicture& picture, int y) {
    std::string text;
    for (int x = 0; x < picture.Width(); ++x)
        text += picture.At(x, y) == kInk ? '#' : picture.At(x, y) == kPaper ? '.' : '?';
    return text;
}

TEST(Picture, FillsWhatIsInside) {
    CPicture picture(4, 3, kPaper);
    picture.Fill({2, 1, 9, 9}, kInk);
    picture.Fill({-5, -5, 6, 6}, kInk);
    picture.Fill({1, 2, -3, 1}, kInk);
    EXPECT_EQ(RowText(picture, 0), "#...");
    EXPECT_EQ(RowText(picture, 1), "..##");
    EXPECT_EQ(RowText(picture, 2), "..##");
}

TEST(Picture, FramesTheInsideOfARectangle) {
    CPicture picture(5, 4, kPaper);
    picture.Frame({1, 0, 4, 4}, kInk);
    EXPECT_EQ(RowText(picture, 0), ".####");
    EXPECT_EQ(RowText(picture, 1), ".#..#");
    EXPECT_EQ(RowText(picture, 2), ".#..#");
    EXPECT_EQ(RowText(picture, 3), ".####");
}

TEST(Picture, MixesByCover) {
    CPicture picture(2, 1, kPaper);
    picture.Mix(0, 0, kInk, 255);
    picture.Mix(1, 0, kInk, 51); // a fifth
    EXPECT_EQ(picture.At(0, 0), kInk);
    EXPECT_EQ(picture.At(1, 0), (SColour{162, 172, 182}));
    picture.Mix(5, 5, kInk, 255);
    picture.MixFill({1, 0, 1, 1}, kPaper, 255);
    EXPECT_EQ(picture.At(1, 0), kPaper);
}

TEST(Picture, GrowsBelow) {
    CPicture picture(2, 1, kInk);
    picture.Lengthen(2, kPaper);
    EXPECT_EQ(picture.Height(), 3);
    EXPECT_EQ(RowText(picture, 0), "##");
    EXPECT_EQ(RowText(picture, 1), "..");
    EXPECT_EQ(RowText(picture, 2), "..");
    EXPECT_EQ(picture.Bytes().size(), 18U);
}

} // namespace
} // namespace trevolt
