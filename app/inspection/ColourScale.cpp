#include "app/inspection/ColourScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <span>

namespace trevolt {
namespace {

/// A colour as the eye orders it, in Oklab: how light it is, how colourful, and its hue in degrees.
struct SAnchor {
    double light;
    double chroma;
    double hue;
};

// Lightness grows by equal steps from anchor to anchor, and so on each side of the middle of the
// diverging scale.
constexpr std::array kFalseColours{
    SAnchor{0.24, 0.10, 288}, SAnchor{0.42, 0.135, 268}, SAnchor{0.60, 0.095, 215},
    SAnchor{0.78, 0.15, 148}, SAnchor{0.96, 0.13, 106},
};
constexpr std::array kGreys{SAnchor{0.18, 0, 0}, SAnchor{0.98, 0, 0}};
constexpr std::array kDiverging{
    SAnchor{0.38, 0.13, 262}, SAnchor{0.67, 0.10, 245}, SAnchor{0.96, 0, 0},
    SAnchor{0.67, 0.12, 62},  SAnchor{0.38, 0.10, 45},
};

std::span<const SAnchor> AnchorsOf(EColourScale scale) {
    switch (scale) {
    case EColourScale::Grey:
        return kGreys;
    case EColourScale::Diverging:
        return kDiverging;
    case EColourScale::FalseColour:
        break;
    }
    return kFalseColours;
}

/// Lightness and the two axes of colour.
using Lab = std::array<double, 3>;

Lab LabOf(const SAnchor& anchor) {
    const double angle = anchor.hue * std::numbers::pi / 180;
    return {anchor.light, anchor.chroma * std::cos(angle), anchor.chroma * std::sin(angle)};
}

double Cube(double value) { return value * value * value; }

SColour ColourOf(const Lab& lab) {
    const double l = Cube(lab[0] + 0.3963377774 * lab[1] + 0.2158037573 * lab[2]);
    const double m = Cube(lab[0] - 0.1055613458 * lab[1] - 0.0638541728 * lab[2]);
    const double s = Cube(lab[0] - 0.0894841775 * lab[1] - 1.2914855480 * lab[2]);
    return {ScreenValue(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
            ScreenValue(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
            ScreenValue(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)};
}

} // namespace

CColourScale::CColourScale(EColourScale scale) {
    const std::span<const SAnchor> anchors = AnchorsOf(scale);
    m_steps.reserve(kSteps);
    for (std::size_t step = 0; step < kSteps; ++step) {
        const double place = static_cast<double>(step * (anchors.size() - 1)) / (kSteps - 1);
        const auto before = std::min(static_cast<std::size_t>(place), anchors.size() - 2);
        const Lab from = LabOf(anchors[before]);
        const Lab to = LabOf(anchors[before + 1]);
        Lab mixed{};
        for (std::size_t k = 0; k < mixed.size(); ++k)
            mixed[k] = from[k] + (place - static_cast<double>(before)) * (to[k] - from[k]);
        m_steps.push_back(ColourOf(mixed));
    }
}

SColour CColourScale::At(double place) const {
    const double step = std::clamp(place, 0.0, 1.0) * (kSteps - 1);
    return m_steps[static_cast<std::size_t>(std::lround(step))];
}

std::uint8_t ScreenValue(double light) {
    const double inside = std::clamp(light, 0.0, 1.0);
    const double shown =
        inside <= 0.0031308 ? 12.92 * inside : 1.055 * std::pow(inside, 1 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(255 * shown));
}

} // namespace trevolt
