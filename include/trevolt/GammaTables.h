// The gamma tables that every coefficient object starts with. They are computed once for the
// process; an object gets its own copy. May be asked from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace trevolt {

inline constexpr float kDefaultGamma = 2.8F;
inline constexpr std::size_t kGammaToLinearEntries = 256;
inline constexpr std::size_t kLinearToGammaEntries = 65537;

/// Entry i is (i ÷ 255)^2.8.
using GammaToLinearTable = std::array<float, kGammaToLinearEntries>;
/// Entry i is (i ÷ 65536)^(1 ÷ 2.8) × 255, rounded half away from zero.
using LinearToGammaTable = std::array<std::uint32_t, kLinearToGammaEntries>;
static_assert(sizeof(GammaToLinearTable) == 1024 && sizeof(LinearToGammaTable) == 262148);

const GammaToLinearTable& DefaultGammaToLinear();
const LinearToGammaTable& DefaultLinearToGamma();

} // namespace trevolt
