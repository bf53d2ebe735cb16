// What the words look like that benchmarks compress.
#pragma once

#include <cmath>
#include <cstdint>

#include "trevolt/FixedPoint.h"

namespace trevolt {

enum Content : std::int64_t {
    kNoisy,  ///< gains with a slow drift and pixel noise in every bit: LZ4 finds no match
    kCoarse, ///< the same in steps of 1/256: LZ4 works on matches
    kFresh   ///< the default element everywhere: one match a plane
};

/// The gain at a pixel, without noise.
inline double GainDrift(std::uint32_t x, std::uint32_t y) {
    return 0.86 + 0.03 * std::sin(x / 90.0) * std::cos(y / 70.0);
}

inline std::uint16_t GainWord(Content content, double gain) {
    const auto word = static_cast<std::uint16_t>(gain * kFullScale);
    return content == kNoisy ? word : static_cast<std::uint16_t>(word & 0xFF00);
}

} // namespace trevolt
