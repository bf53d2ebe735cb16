// The turn kernel: gathers a rectangle of a turned picture from the picture's rows. Whole elements
// move, whatever they are made of.
#pragma once

#include <algorithm>
#include <cstdint>

#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// Columns and rows of the tiles that a turn goes by: their elements stay in the cache, whichever
/// way it runs.
inline constexpr std::int32_t kTurnTile = 16;

/// Where a picture's rectangle lies after a turn.
constexpr SPixelRect TurnedRect(const CQuarterTurn& turn, const SPixelRect& rect) {
    const PixelPosition a = turn.Turned(rect.left, rect.top);
    const PixelPosition b = turn.Turned(rect.right - 1, rect.bottom - 1);
    return {static_cast<std::int32_t>(std::min(a.x, b.x)),
            static_cast<std::int32_t>(std::min(a.y, b.y)),
            static_cast<std::int32_t>(std::max(a.x, b.x) + 1),
            static_cast<std::int32_t>(std::max(a.y, b.y) + 1)};
}

/// Puts the pixels of `rect`, which is not empty and counted in the turned picture, at `out`, whose
/// rows are `stride` elements apart. The picture is what `width` × `height` becomes by `code`.
/// `row(x, y, count)` gives the address of `count` elements, `kTurnTile` at most, of the picture
/// before the turn, from (x, y) on to the right; what it gives lasts until it is asked again.
template <class Element, class Row>
void GatherTurned(std::uint32_t code, std::int64_t width, std::int64_t height,
                  const SPixelRect& rect, const Row& row, Element* out, std::int64_t stride) {
    const CQuarterTurn turn(code, width, height);
    const PixelSize turned = turn.TurnedSize();
    const CQuarterTurn back(CQuarterTurn::BackCode(code), turned.width, turned.height);
    const PixelPosition origin = turn.Turned(0, 0);
    const PixelPosition right = turn.Turned(1, 0);
    const std::int64_t step = (right.y - origin.y) * stride + (right.x - origin.x);
    for (std::int32_t top = rect.top; top < rect.bottom; top += kTurnTile) {
        for (std::int32_t left = rect.left; left < rect.right; left += kTurnTile) {
            const SPixelRect tile{left, top, std::min(left + kTurnTile, rect.right),
                                  std::min(top + kTurnTile, rect.bottom)};
            const SPixelRect source = TurnedRect(back, tile);
            const auto count = static_cast<std::int32_t>(source.Width());
            for (std::int32_t y = source.top; y < source.bottom; ++y) {
                const Element* from = row(source.left, y, count);
                const PixelPosition to = turn.Turned(source.left, y);
                Element* target = out + (to.y - rect.top) * stride + (to.x - rect.left);
                for (std::int32_t i = 0; i < count; ++i, target += step)
                    *target = from[i];
            }
        }
    }
}

} // namespace trevolt
