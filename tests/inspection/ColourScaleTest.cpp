#include "app/inspection/ColourScale.h"

#include <cmath>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

/// The luminance of what a screen shows, 0 to 1.
double LuminanceOf(SColour colour) {
    const auto light = [](std::uint8_t value) {
        const double share = value / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * light(colour.red) + 0.7152 * light(colour.green) + 0.0722 * light(colour.blue);
}

/// How light the eye finds it, 0 to 100.
double LightnessOf(SColour colour) { return 116 * std::cbrt(LuminanceOf(colour)) - 16; }

TEST(ColourScale, GrowsLighterAllTheWay) {
    for (const EColourScale name : {EColourScale::FalseColour, EColourScale::Grey}) {
        const CColourScale scale(name);
        for (int i = 0; i < 50; ++i)
            EXPECT_LT(LightnessOf(scale.At(i / 50.0)), LightnessOf(scale.At((i + 1) / 50.0)))
                << static_cast<int>(name) << " at " << i;
        EXPECT_LT(LightnessOf(scale.At(0)), 20);
        EXPECT_GT(LightnessOf(scale.At(1)), 90);
    }
}

TEST(ColourScale, GrowsLighterByNearlyEqualSteps) {
    const CColourScale scale(EColourScale::FalseColour);
    for (int i = 0; i < 10; ++i) {
        const double step = LightnessOf(scale.At((i + 1) / 10.0)) - LightnessOf(scale.At(i / 10.0));
        EXPECT_GT(step, 4.5) << i;
        EXPECT_LT(step, 12.5) << i;
    }
}

TEST(ColourScale, GreyHasNoColour) {
    const CColourScale scale(EColourScale::Grey);
    for (int i = 0; i <= 20; ++i) {
        const SColour colour = scale.At(i / 20.0);
        EXPECT_NEAR(colour.red, colour.green, 1);
        EXPECT_NEAR(colour.green, colour.blue, 1);
    }
}

TEST(ColourScale, DivergesFromALightMiddleToTwoColours) {
    const CColourScale scale(EColourScale::Diverging);
    EXPECT_GT(LightnessOf(scale.At(0.5)), 92);
    for (int i = 0; i < 10; ++i) {
        const double a = i / 20.0;
        EXPECT_LT(LightnessOf(scale.At(a)), LightnessOf(scale.At(a + 0.05)));
        EXPECT_LT(LightnessOf(scale.At(1 - a)), LightnessOf(scale.At(1 - a - 0.05)));
        EXPECT_NEAR(LightnessOf(scale.At(a)), LightnessOf(scale.At(1 - a)), 8);
    }
    EXPECT_GT(scale.At(0).blue, scale.At(0).red + 60);
    EXPECT_GT(scale.At(1).red, scale.At(1).blue + 60);
}

TEST(ColourScale, CutsPlacesBeyondItsEnds) {
    const CColourScale scale(EColourScale::FalseColour);
    EXPECT_EQ(scale.At(-3), scale.At(0));
    EXPECT_EQ(scale.At(7), scale.At(1));
    EXPECT_NE(scale.At(0), scale.At(1));
}

TEST(ColourScale, GivesScreensTheirValues) {
    EXPECT_EQ(ScreenValue(0), 0);
    EXPECT_EQ(ScreenValue(1), 255);
    EXPECT_EQ(ScreenValue(-1), 0);
    EXPECT_EQ(ScreenValue(2), 255);
    EXPECT_EQ(ScreenValue(0.5), 188);
    EXPECT_EQ(ScreenValue(0.001), 3);
}

} // namespace
} // namespace trevolt
