#include "app/rotation/RectCover.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace trevolt {
namespace {

bool HasPixels(const SPixelRect& rect) { return rect.Width() > 0 && rect.Height() > 0; }

SPixelRect CommonOf(const SPixelRect& a, const SPixelRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

/// Of those with pixels, in the order of one of their sides.
std::vector<std::size_t> SortedBy(const std::vector<SPixelRect>& rects,
                                  std::int32_t SPixelRect::*side) {
    std::vector<std::size_t> order(rects.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::erase_if(order, [&](std::size_t i) { return !HasPixels(rects[i]); });
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rects[a].*side < rects[b].*side; });
    return order;
}

} // namespace

std::vector<SRectOverlap> FindOverlaps(const std::vector<SPixelRect>& rects) {
    const std::vector<std::size_t> order = SortedBy(rects, &SPixelRect::top);
    std::vector<SRectOverlap> overlaps;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const SPixelRect& upper = rects[order[i]];
        for (std::size_t j = i + 1; j < order.size() && rects[order[j]].top < upper.bottom; ++j)
            if (const SPixelRect common = CommonOf(upper, rects[order[j]]); HasPixels(common))
                overlaps.push_back(
                    {std::min(order[i], order[j]), std::max(order[i], order[j]), common});
    }
    return overlaps;
}

std::uint64_t CoveredPixels(const std::vector<SPixelRect>& rects) {
    const std::vector<std::size_t> order = SortedBy(rects, &SPixelRect::left);
    std::set<std::int32_t> edges; // between them every row is covered as the one above it
    for (const std::size_t i : order) {
        edges.insert(rects[i].top);
        edges.insert(rects[i].bottom);
    }
    std::uint64_t covered = 0;
    for (auto edge = edges.begin(); edge != edges.end() && std::next(edge) != edges.end(); ++edge) {
        std::int64_t columns = 0;
        std::int64_t reached = INT64_MIN;
        for (const std::size_t i : order) {
            const SPixelRect& rect = rects[i];
            if (rect.top > *edge || rect.bottom <= *edge)
                continue;
            const std::int64_t from = std::max(reached, std::int64_t{rect.left});
            columns += std::max(std::int64_t{0}, rect.right - from);
            reached = std::max(reached, std::int64_t{rect.right});
        }
        const std::int64_t rows = std::int64_t{*std::next(edge)} - *edge;
        covered += static_cast<std::uint64_t>(columns * rows);
    }
    return covered;
}

} // namespace trevolt
