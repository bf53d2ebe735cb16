#include "app/inspection/Lettering.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr int kSize = 20;
constexpr SColour kBlack{0, 0, 0};
constexpr SColour kWhite{255, 255, 255};

CPicture Lettered(std::string_view text) {
    CPicture picture(60, 40, kWhite);
    PaintText(picture, 10, 28, text, kSize, kBlack);
    return picture;
}

bool SamePicture(const CPicture& a, const CPicture& b) {
    return std::vector(a.Bytes().begin(), a.Bytes().end()) ==
           std::vector(b.Bytes().begin(), b.Bytes().end());
}

/// Pixels that are neither ink nor paper.
int SmoothPixels(const CPicture& picture) {
    int count = 0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            count += picture.At(x, y) != kBlack && picture.At(x, y) != kWhite ? 1 : 0;
    return count;
}

TEST(Lettering, StandsOnTheBaseline) {
    const CPicture picture = Lettered("H");
    bool isAnyAbove = false;
    for (int x = 0; x < picture.Width(); ++x) {
        for (int y = 28; y < picture.Height(); ++y)
            EXPECT_EQ(picture.At(x, y), kWhite) << x << ", " << y;
        isAnyAbove |= picture.At(x, 27).red < 128;
    }
    EXPECT_TRUE(isAnyAbove);
    EXPECT_EQ(picture.At(9, 20), kWhite);
}

TEST(Lettering, HasSmoothEdges) { EXPECT_GT(SmoothPixels(Lettered("O")), 20); }

TEST(Lettering, HasLettersOfManyScripts) {
    const CPicture box = Lettered("\U0001F9FF");
    for (const char* text : {"×", "°", "−", "ß", "é", "ő", "Ω", "λ", "Ж", "я", "…", "→"}) {
        EXPECT_FALSE(SamePicture(Lettered(text), box)) << text;
        EXPECT_GT(SmoothPixels(Lettered(text)), 0) << text;
    }
}

TEST(Lettering, ShowsABoxForWhatTheFontLacks) {
    const CPicture box = Lettered("\U0001F9FF"); // beyond 16 bits
    EXPECT_TRUE(SamePicture(box, Lettered("日")));
    EXPECT_TRUE(SamePicture(box, Lettered("\x01")));
    EXPECT_GT(TextWidth("日", kSize), 5);
}

TEST(Lettering, ShowsWhatIsNoTextAsReplacement) {
    EXPECT_TRUE(SamePicture(Lettered("\xFF\xFE"), Lettered("\uFFFD")));
}

TEST(Lettering, IsAsWideAsItsLetters) {
    EXPECT_EQ(TextWidth("", kSize), 0);
    const int one = TextWidth("m", kSize);
    EXPECT_GT(one, kSize / 2);
    EXPECT_NEAR(TextWidth("mmmm", kSize), 4 * one, 4);
    EXPECT_NEAR(TextWidth("mmmm", 2 * kSize), 2 * TextWidth("mmmm", kSize), 2);
}

TEST(Lettering, ShortensTheMiddleOfNames) {
    const std::string name = "Cabinet_of_the_upper_row_0123.9fcoef";
    EXPECT_EQ(ShortenedText(name, kSize, TextWidth(name, kSize)), name);
    const std::string shortened = ShortenedText(name, kSize, 150);
    EXPECT_LE(TextWidth(shortened, kSize), 150);
    EXPECT_GT(TextWidth(shortened, kSize), 110);
    EXPECT_EQ(shortened.substr(0, 4), "Cabi");
    EXPECT_EQ(shortened.substr(shortened.size() - 4), "coef");
    EXPECT_NE(shortened.find("…"), std::string::npos);
    EXPECT_EQ(ShortenedText(name, kSize, 3), "");
    EXPECT_EQ(ShortenedText("日\U0001F9FFЖЖЖЖ", kSize, 60).substr(0, 3), "日");
}

} // namespace
} // namespace trevolt
