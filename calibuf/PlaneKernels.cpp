#include "calibuf/PlaneKernels.h"

#include <array>

namespace trevolt {

std::span<const SPlaneKernels* const> PlaneKernelsFor([[maybe_unused]] EVectors vectors) {
#ifdef TREVOLT_WIDE_KERNELS
    static constexpr std::array kWidestFirst{&kWidePlaneKernels, &kNarrowPlaneKernels};
    const bool isWide = vectors == EVectors::Widest && __builtin_cpu_supports("avx2") != 0;
    return std::span(kWidestFirst).subspan(isWide ? 0 : 1);
#else
    static constexpr std::array kOnlyNarrow{&kNarrowPlaneKernels};
    return kOnlyNarrow;
#endif
}

} // namespace trevolt
