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

} // namespace trevolt

// Of the library's own use, and not promised to others.
// X(kind, element, sizes): every word kind, by what a pixel of its files and objects is; the chroma
// kind has an extra word beside it. `sizes` is how many compressed sizes a chunk record lists; those
// past the element's words are 0. Of the 3- and the 4-word kind the list is longer than the words:
// their records have the size of the records of the matrix kind beside them.
// clang-format off
#define TREVOLT_WORD_KINDS(X) \
    X(Brightness, S3WordCoef, 9) \
    X(VirtualGreenBrightness, S4WordCoef, 12) \
    X(Chroma, S9WordCoef, 9) \
    X(VirtualGreenChroma, S12WordCoef, 12)
// clang-format on

namespace trevolt {

/// The word kinds.
enum class EWordKind {
#define TREVOLT_KIND_NAME(kind, element, sizes) kind,
    TREVOLT_WORD_KINDS(TREVOLT_KIND_NAME)
#undef TREVOLT_KIND_NAME
};

} // namespace trevolt
