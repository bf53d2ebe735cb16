// SMatrixCoef, one pixel of a coefficient map.
#pragma once

#include <array>

namespace trevolt {

/// Twelve float32: a row-major 3×3 colour matrix, then three trailing values. The default is the
/// identity followed by 0, 1, 0.
struct SMatrixCoef {
    std::array<float, 12> m{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0};
};
static_assert(sizeof(SMatrixCoef) == 48);

} // namespace trevolt
