// Elements to word planes and back in 32-byte vectors, for processors with AVX2: the source file is
// compiled for those only. What a group of sixteen elements does not fill is left to the caller.
#pragma once

#include <cstddef>
#include <cstdint>

#include "calibuf/PlaneTranspose.h"

namespace trevolt {

/// As `GatherPlanes`. Returns how many of the `count` elements, from the first on, it has moved:
/// none unless they have 3, 4, 9 or 12 words.
std::size_t GatherPlanesWide(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                             const SPlaneLayout& layout);

/// As `ScatterPlanes` for packed elements of `wordCount` words. Returns how many of the `count`
/// elements, from the first on, it has moved: none unless they have 3, 4, 9 or 12 words.
std::size_t ScatterPlanesWide(const std::byte* const* planes, std::size_t wordCount,
                              std::byte* elements, std::size_t count);

} // namespace trevolt
