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

/// The left or right side of a rectangle.
struct SRectSide {
    std::int32_t x;
    std::size_t rect; ///< its index
};

/// Of those with pixels, in the order of their upper sides.
std::vector<std::size_t> SortedByTop(const std::vector<SPixelRect>& rects) {
    std::vector<std::size_t> order(rects.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::erase_if(order, [&](std::size_t i) { return !HasPixels(rects[i]); });
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rects[a].top < rects[b].top; });
    return order;
}

} // namespace

std::vector<SRectOverlap> FindOverlaps(const std::vector<SPixelRect>& rects) {
    const std::vector<std::size_t> order = SortedByTop(rects);
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

std::vector<std::uint64_t> TopmostPixels(const std::vector<SPixelRect>& rects) {
    std::vector<SRectSide> sides; // left and right ones from the left
    std::set<std::int32_t> edges; // between them every row is covered as the one above it
    for (std::size_t i = 0; i < rects.size(); ++i) {
        if (!HasPixels(rects[i]))
            continue;
        sides.push_back({rects[i].left, i});
        sides.push_back({rects[i].right, i});
        edges.insert({rects[i].top, rects[i].bottom});
    }
    std::sort(sides.begin(), sides.end(),
              [](const SRectSide& a, const SRectSide& b) { return a.x < b.x; });
    std::vector<std::uint64_t> topmost(rects.size());
    for (auto edge = edges.begin(); edge != edges.end() && std::next(edge) != edges.end(); ++edge) {
        const std::int64_t rows = std::int64_t{*std::next(edge)} - *edge;
        std::set<std::size_t> open; // the rectangles that cover what is right of `reached`
        std::int64_t reached = 0;
        for (const SRectSide& side : sides) {
            const SPixelRect& rect = rects[side.rect];
            if (rect.top > *edge || rect.bottom <= *edge)
                continue;
            if (!open.empty())
                topmost[*open.rbegin()] += static_cast<std::uint64_t>((side.x - reached) * rows);
            reached = side.x;
            if (!open.insert(side.rect).second)
                open.erase(side.rect);
        }
    }
    return topmost;
}

std::uint64_t CoveredPixels(const std::vector<SPixelRect>& rects) {
    const std::vector<std::uint64_t> topmost = TopmostPixels(rects);
    return std::accumulate(topmost.begin(), topmost.end(), std::uint64_t{0});
}

} // namespace trevolt
