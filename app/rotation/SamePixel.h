// Pixels compared as they are stored.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "trevolt/MatrixCoef.h"

namespace trevolt {

/// Whether all values have the same bits: what is no number is the same as itself, and -0 is not 0.
inline bool HasSameBits(const SMatrixCoef& a, const SMatrixCoef& b) {
    using Bits = std::array<std::uint32_t, 12>;
    return std::bit_cast<Bits>(a.m) == std::bit_cast<Bits>(b.m);
}

} // namespace trevolt
