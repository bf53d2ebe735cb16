#include "app/inspection/Lettering.h"

#include <string>
#include <utility>
#include <vector>

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

CPicture LetteredWide(std::string_view text) {
    CPicture picture(400, 40, kWhite);
    PaintText(picture, 10, 28, text, kSize, kBlack);
    return picture;
}

TEST(Lettering, HasLettersOfManyScripts) {
    for (const char* text : {"×", "°", "−", "ß", "é", "ő", "Ω", "λ", "Ж", "я", "…", "→"}) {
        EXPECT_LT(TextWidth(text, kSize), 2 * kSize) << text;
        EXPECT_GT(SmoothPixels(Lettered(text)), 0) << text;
    }
}

TEST(Lettering, EscapesWhatTheFontLacksAndWhatIsHidden) {
    for (const auto& [text, shown] : {std::pair{"a日b", "a\\u65E5b"},
                                      {"\U0001F9FF", "\\U0001F9FF"},
                                      {"\x1B[1m", "\\x1B[1m"},
                                      {"\x7F", "\\x7F"},
                                      {"\u202E", "\\u202E"},
                                      {"a\xFF\xFEЖ", "a\\xFF\\xFEЖ"}}) {
        EXPECT_TRUE(SamePicture(LetteredWide(text), LetteredWide(shown))) << shown;
        EXPECT_EQ(TextWidth(text, kSize), TextWidth(shown, kSize));
    }
    EXPECT_FALSE(SamePicture(LetteredWide("日"), LetteredWide("本")));
}

TEST(Lettering, BreaksLinesAtBlanks) {
    using Lines = std::vector<std::string>;
    const int width = TextWidth("one two", kSize);
    EXPECT_EQ(WrappedText("one two", kSize, width), Lines{"one two"});
    EXPECT_EQ(WrappedText("one two", kSize, width - 1), (Lines{"one", "two"}));
    EXPECT_EQ(WrappedText("one two one two", kSize, width), (Lines{"one two", "one two"}));
    EXPECT_EQ(WrappedText("", kSize, width), Lines{""});
    const Lines cut = WrappedText("a wwwwwwwwwwwww", kSize, width);
    ASSERT_EQ(cut.size(), 2U);
    EXPECT_LE(TextWidth(cut[1], kSize), width);
    EXPECT_EQ(cut[1][0], 'w');
}

TEST(Lettering, BreaksLinesBetweenItemsFirst) {
    using Lines = std::vector<std::string>;
    const std::string text = "9 by 8 · m00 · Light of white";
    const int width = TextWidth("9 by 8 · m00", kSize);
    EXPECT_EQ(WrappedText(text, kSize, TextWidth(text, kSize)), Lines{text});
    EXPECT_EQ(WrappedText(text, kSize, TextWidth(text, kSize) - 1),
              (Lines{"9 by 8 · m00", "Light of white"}));
    EXPECT_EQ(WrappedText(text, kSize, width - 1), (Lines{"9 by 8", "m00 · Light", "of white"}));
}

TEST(Lettering, BreaksFirmBlanksOnlyForWantOfRoom) {
    using Lines = std::vector<std::string>;
    const std::string text = "Quantity: 1\u00A0to\u00A02";
    const int width = TextWidth("1\u00A0to\u00A02", kSize);
    EXPECT_EQ(WrappedText(text, kSize, TextWidth(text, kSize) - 1),
              (Lines{"Quantity:", "1\u00A0to\u00A02"}));
    EXPECT_EQ(WrappedText("a " + text.substr(10), kSize, width - 1), (Lines{"a 1 to", "2"}));
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
    // An escape is cut as one character.
    EXPECT_EQ(ShortenedText("日ЖЖЖЖЖЖЖЖЖ", kSize, TextWidth("日…Ж", kSize)), "日…Ж");
}

} // namespace
} // namespace trevolt
