// Where the word planes of elements lie in memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

inline constexpr std::size_t kWordBytes = sizeof(std::uint16_t);

/// Where planes lie: plane k starts `stride` words behind plane k - 1. A stride that is no large
/// power of two keeps the planes out of each other's cache lines.
struct SPlaneLayout {
    std::size_t wordCount; ///< planes; 1, 3, 4, 9 and 12 are moved in vectors
    std::size_t stride;    ///< words, at least as many as there are elements
};

} // namespace trevolt
