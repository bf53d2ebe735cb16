// Rectangles that lie beside and on each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "trevolt/PixelRect.h"

namespace trevolt {

struct SRectOverlap {
    std::size_t first = 0;  ///< index of the rectangle that is given first
    std::size_t second = 0; ///< and of the other one
    SPixelRect rect;        ///< what both cover
};

/// Every pair of rectangles that have pixels in common, from top to bottom.
std::vector<SRectOverlap> FindOverlaps(const std::vector<SPixelRect>& rects);

/// How many pixels each rectangle covers that no later one does.
std::vector<std::uint64_t> TopmostPixels(const std::vector<SPixelRect>& rects);

/// The pixels that are in any of the rectangles, each counted once.
std::uint64_t CoveredPixels(const std::vector<SPixelRect>& rects);

} // namespace trevolt
