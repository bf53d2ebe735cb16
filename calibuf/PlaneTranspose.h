// Elements to word planes and back: plane k holds word k of every element. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "calibuf/PlaneKernels.h"
#include "calibuf/PlaneLayout.h"

namespace trevolt {

/// Splits `count` packed elements of `layout.wordCount` words at `elements` into planes.
void GatherPlanes(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                  const SPlaneLayout& layout, EVectors vectors = EVectors::Widest);

/// Puts `count` elements of `elemSize` bytes (at least as many as the words of the planes need)
/// together from their planes, one for each word, which may lie anywhere and need no alignment.
/// Bytes of an element behind its last plane's word are left alone.
void ScatterPlanes(std::span<const std::byte* const> planes, std::byte* elements, std::size_t count,
                   std::size_t elemSize, EVectors vectors = EVectors::Widest);

} // namespace trevolt
