// Elements to word planes and back: plane k holds word k of every element. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

/// Where planes lie: plane k starts `stride` words behind plane k - 1. A stride that is no large
/// power of two keeps the planes out of each other's cache lines.
struct SPlaneLayout {
    std::size_t wordCount; ///< planes: 1, 3, 4, 9 or 12
    std::size_t stride;    ///< words, at least as many as there are elements
};

/// Splits `count` packed elements of `layout.wordCount` words at `elements` into planes.
void GatherPlanes(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                  const SPlaneLayout& layout);

/// Puts `count` elements of `elemSize` bytes (at least as many as the planes' words need) together
/// from their planes. Bytes of an element behind its last plane's word are left alone.
void ScatterPlanes(const std::uint16_t* planes, const SPlaneLayout& layout, std::byte* elements,
                   std::size_t count, std::size_t elemSize);

} // namespace trevolt
