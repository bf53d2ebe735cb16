// Elements to word planes and back: plane k holds word k of every element. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace trevolt {

/// Where planes lie: plane k starts `stride` words behind plane k - 1. A stride that is no large
/// power of two keeps the planes out of each other's cache lines.
struct SPlaneLayout {
    std::size_t wordCount; ///< planes; 1, 3, 4, 9 and 12 are moved in vectors
    std::size_t stride;    ///< words, at least as many as there are elements
};

/// What planes are moved in.
enum class EVectors {
    Narrow, ///< vectors of 16 bytes, which every x86-64 processor has
    Widest  ///< vectors of 32 bytes where the processor has them
};

/// Splits `count` packed elements of `layout.wordCount` words at `elements` into planes.
void GatherPlanes(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                  const SPlaneLayout& layout, EVectors vectors = EVectors::Widest);

/// Puts `count` elements of `elemSize` bytes (at least as many as the words of the planes need)
/// together from their planes, one for each word, which may lie anywhere and need no alignment.
/// Bytes of an element behind its last plane's word are left alone.
void ScatterPlanes(std::span<const std::byte* const> planes, std::byte* elements, std::size_t count,
                   std::size_t elemSize, EVectors vectors = EVectors::Widest);

} // namespace trevolt
