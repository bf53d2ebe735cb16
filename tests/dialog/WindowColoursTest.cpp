// The window's colours, by the system's settings.
#include "app/dialog/WindowColours.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(OwnColours, AreDarkWhereTheSystemAsksForIt) {
    ASSERT_TRUE(OwnColours(0, false).has_value());
    EXPECT_EQ(OwnColours(0, false)->window, 0x202020U);
    EXPECT_EQ(OwnColours(0, false)->text, 0xF0F0F0U);
}

TEST(OwnColours, AreTheSystemsElsewhere) {
    EXPECT_EQ(OwnColours(1, false), std::nullopt);
    EXPECT_EQ(OwnColours(2, false), std::nullopt);
    EXPECT_EQ(OwnColours(std::nullopt, false), std::nullopt);
}

TEST(OwnColours, NeverReplaceAHighContrast) {
    EXPECT_EQ(OwnColours(0, true), std::nullopt);
    EXPECT_EQ(OwnColours(1, true), std::nullopt);
    EXPECT_EQ(OwnColours(std::nullopt, true), std::nullopt);
}

/// The light that a colour gives, 0 to 1, as the accessibility guidelines of the web reckon it.
double Luminance(std::uint32_t colour) {
    const auto linear = [colour](unsigned shift) {
        const double part = static_cast<double>((colour >> shift) & 0xFFU) / 255.0;
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

double Contrast(std::uint32_t a, std::uint32_t b) {
    const auto [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST(OwnColours, CanBeRead) {
    EXPECT_NEAR(Contrast(0xFFFFFF, 0x000000), 21.0, 1e-9);
    const SWindowColours dark = OwnColours(0, false).value();
    for (const std::uint32_t ground : {dark.window, dark.field, dark.button, dark.pressedButton})
        EXPECT_GE(Contrast(dark.text, ground), 4.5) << std::hex << ground;
    for (const std::uint32_t ground : {dark.window, dark.field, dark.button})
        EXPECT_GE(Contrast(dark.disabledText, ground), 3.0) << std::hex << ground;
    EXPECT_GE(Contrast(dark.buttonFrame, dark.window), 3.0);
    EXPECT_GE(Contrast(dark.progress, dark.field), 3.0);
}

} // namespace
} // namespace trevolt
