#include "trevolt/CoefRotation.h"

#include <algorithm>

#include "trevolt/QuarterTurn.h"

namespace trevolt {
namespace {

// A tile's rows and its turned rows both stay in the cache, whichever way the turn runs.
constexpr std::int64_t kTile = 16;

SPixelRect TileAt(std::int64_t left, std::int64_t top, std::int64_t width, std::int64_t height) {
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(std::min(left + kTile, width)),
            static_cast<std::int32_t>(std::min(top + kTile, height))};
}

void TurnTile(const CChromaCorrectCoef& source, const CQuarterTurn& turn, const SPixelRect& tile,
              CChromaCorrectCoef& target) {
    for (std::int32_t y = tile.top; y < tile.bottom; ++y) {
        for (std::int32_t x = tile.left; x < tile.right; ++x) {
            const PixelPosition to = turn.Turned(x, y);
            target.SetElement(static_cast<std::int32_t>(to.x), static_cast<std::int32_t>(to.y),
                              source.ElementOrDefault(x, y));
        }
    }
}

} // namespace

void TurnMap(const CChromaCorrectCoef& source, std::int32_t width, std::int32_t height,
             std::uint32_t code, CChromaCorrectCoef& target) {
    const CQuarterTurn turn(code, width, height);
    const PixelSize turned = turn.TurnedSize();
    target.ResizeForOverwrite(static_cast<std::int32_t>(turned.width),
                              static_cast<std::int32_t>(turned.height));
    if (!target.ColourGrid().HasStorage())
        return;
    for (std::int64_t top = 0; top < height; top += kTile)
        for (std::int64_t left = 0; left < width; left += kTile)
            TurnTile(source, turn, TileAt(left, top, width, height), target);
}

} // namespace trevolt
