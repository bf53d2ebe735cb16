#include "trevolt/ColorCorrectCoef.h"

namespace trevolt {

CColorCorrectCoef::CColorCorrectCoef()
    : m_gamma(std::make_unique<CGamma>()),
      m_gammaToLinear(std::make_unique<GammaToLinearTable>(DefaultGammaToLinear())),
      m_linearToGamma(std::make_unique<LinearToGammaTable>(DefaultLinearToGamma())) {
    DropStatus(m_gamma->InitWithGamma(kDefaultGamma)); // only an exponent that is none is refused
}

CColorCorrectCoef::~CColorCorrectCoef() = default;

S9WordCoef CColorCorrectCoef::GetPixel9Word(std::uint32_t, std::uint32_t) const { return {}; }

S3WordCoef CColorCorrectCoef::GetPixel3Word(std::uint32_t, std::uint32_t) const { return {}; }

} // namespace trevolt
