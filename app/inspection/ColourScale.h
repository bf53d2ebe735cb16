// Colours for numbers. Each scale is even to the eye: equal steps of the number are equal steps of
// what is seen, and lightness alone tells the order, also to the colour-blind and on paper.
#pragma once

#include <cstddef>
#include <vector>

#include "app/inspection/Picture.h"

namespace trevolt {

enum class EColourScale {
    FalseColour, ///< from dark blue through green to light yellow
    Grey,        ///< from dark to light
    Diverging    ///< from blue through near white, in the middle, to brown
};

// On no scale: what is no number, and values beyond a scale's ends.
inline constexpr SColour kNoNumberColour{255, 0, 170};
inline constexpr SColour kBelowColour{150, 84, 255};
inline constexpr SColour kAboveColour{220, 24, 20};

class CColourScale {
  public:
    explicit CColourScale(EColourScale scale);

    /// The colour of a place on the scale, from 0 to 1; those beyond have that of the nearer end.
    SColour At(double place) const;

  private:
    static constexpr std::size_t kSteps = 256;
    std::vector<SColour> m_steps;
};

/// The 255ths that a screen is given to show a share of its full light, 0 to 1; shares beyond are cut.
std::uint8_t ScreenValue(double light);

} // namespace trevolt
