// What the fuzz targets of the map's files compare.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "trevolt/MatrixCoef.h"

namespace trevolt::fuzz {

/// Bit for bit, so that a NaN equals itself and −0 is not 0.
inline bool SameBits(const SMatrixCoef& a, const SMatrixCoef& b) {
    using Bits = std::array<std::uint32_t, 12>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

} // namespace trevolt::fuzz
