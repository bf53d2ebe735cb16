// The kernels that move elements to word planes and back in vectors of one width. They move whole
// groups of elements and leave the last ones, which fill no group, to the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "calibuf/PlaneLayout.h"

namespace trevolt {

/// What planes are moved in.
enum class EVectors {
    Narrow, ///< vectors of 16 bytes, which every x86-64 processor has
    Widest  ///< vectors of 32 bytes where the processor has them
};

/// Both move packed elements of 3, 4, 9 or 12 words, from element `first` of `count` on, and return
/// the first one that they have not moved: `first` itself for elements of any other number of
/// words. They touch nothing but those elements and their planes. `scatter` may have written words
/// of the element that it returns.
struct SPlaneKernels {
    std::size_t (*gather)(const std::byte* elements, std::size_t first, std::size_t count,
                          std::uint16_t* planes, const SPlaneLayout& layout);
    std::size_t (*scatter)(const std::byte* const* planes, std::size_t wordCount,
                           std::byte* elements, std::size_t first, std::size_t count);
};

extern const SPlaneKernels kNarrowPlaneKernels; ///< vectors of 16 bytes, for every processor
extern const SPlaneKernels kWidePlaneKernels;   ///< of 32 bytes, for processors with AVX2 alone

/// The kernels to be used one behind the other, those of the widest vectors first: what fills no
/// group of theirs may fill one of the next.
std::span<const SPlaneKernels* const> PlaneKernelsFor(EVectors vectors);

} // namespace trevolt
