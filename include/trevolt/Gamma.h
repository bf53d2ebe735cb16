// CGamma: a gamma curve between drive levels and light, both from 0 to 1.
// A curve may be read from any threads at once while none changes it.
#pragma once

#include "trevolt/StatusCodes.h"

namespace trevolt {

class CGamma {
  public:
    /// The straight line, gamma 1.
    CGamma() = default;

    /// Takes the exponent. E_COEF_INVALIDARG, the curve unchanged, when it is not above 0 or not
    /// finite.
    Status InitWithGamma(float gamma);

    float Gamma() const { return m_gamma; }

    /// level^gamma; levels outside 0 to 1 are clamped.
    float ToLinear(float level) const;
    /// light^(1 ÷ gamma); light outside 0 to 1 is clamped.
    float ToLevel(float light) const;

  private:
    float m_gamma = 1.0F;
};

} // namespace trevolt
