#include "trevolt/Gamma.h"

#include <algorithm>
#include <cmath>

namespace trevolt {

Status CGamma::InitWithGamma(float gamma) {
    if (!(gamma > 0.0F) || !std::isfinite(gamma))
        return E_COEF_INVALIDARG;
    m_gamma = gamma;
    return S_OK;
}

float CGamma::ToLinear(float level) const {
    return std::pow(std::clamp(level, 0.0F, 1.0F), m_gamma);
}

float CGamma::ToLevel(float light) const {
    return std::pow(std::clamp(light, 0.0F, 1.0F), 1.0F / m_gamma);
}

} // namespace trevolt
