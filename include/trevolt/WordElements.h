// The word elements: what a calibration buffer holds of one pixel. An element is a run of unsigned
// 16-bit words in which 65535 stands for 1.0. A new word kind is one struct and one row here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "trevolt/FixedPoint.h"

namespace trevolt {

/// The extra word of a pixel. Unlike every other kind it starts at 0.
struct SWordCoef {
    std::array<std::uint16_t, 1> w{0};
};

/// Red, green and blue gain.
struct S3WordCoef {
    std::array<std::uint16_t, 3> w{kFullScale, kFullScale, kFullScale};
};

/// Gains of four emitters.
struct S4WordCoef {
    std::array<std::uint16_t, 4> w{kFullScale, kFullScale, kFullScale, kFullScale};
};

/// A row-major 3×3 colour matrix; the default is the identity.
struct S9WordCoef {
    std::array<std::uint16_t, 9> w{kFullScale, 0, 0, 0, kFullScale, 0, 0, 0, kFullScale};
};

/// A colour matrix of four emitters.
struct S12WordCoef {
    std::array<std::uint16_t, 12> w{kFullScale, 0, 0, 0, 0, kFullScale,
                                    kFullScale, 0, 0, 0, 0, kFullScale};
};

/// The word kinds, by what a pixel of their files and objects is.
enum class EWordKind {
    Chroma,                 ///< S9WordCoef and, beside it, an extra word
    Brightness,             ///< S3WordCoef
    VirtualGreenBrightness, ///< S4WordCoef
    VirtualGreenChroma      ///< S12WordCoef
};

} // namespace trevolt
