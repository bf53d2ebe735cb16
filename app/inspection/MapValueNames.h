// What the values of a map's element are called wherever one of them is told or asked for.
#pragma once

#include <array>

#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

/// Those of the matrix by row and column, and the three of the virtual green.
inline constexpr std::array<const char*, std::tuple_size_v<decltype(SMatrixCoef::m)>>
    kMapValueNames{"m00", "m01", "m02", "m10", "m11", "m12", "m20", "m21", "m22", "g0", "g1", "g2"};

} // namespace trevolt
