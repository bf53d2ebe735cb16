#include "coef/TurnedExtras.h"

#include <algorithm>

#include "calibuf/BlockGrid.h"

namespace trevolt {

bool IsHeaderOf(const SWordKind& kind, const SChunkHeader& header) {
    return kind.HasFormat(header.formatId) &&
           (!kind.hasFileKind || header.fileKind == kVirtualGreenFileKind);
}

std::optional<PixelPosition> TurnedOrigin(const SChunkHeader& header, const PixelSize& size,
                                          std::uint32_t code,
                                          const std::optional<PixelSize>& wall) {
    const PixelPosition first{header.originX, header.originY};
    if (!wall)
        return first;
    const PixelPosition last{first.x + size.width - 1, first.y + size.height - 1};
    if (last.x >= wall->width || last.y >= wall->height)
        return std::nullopt;
    const CQuarterTurn turn(code, wall->width, wall->height);
    const PixelPosition a = turn.Turned(first.x, first.y);
    const PixelPosition b = turn.Turned(last.x, last.y);
    return PixelPosition{std::min(a.x, b.x), std::min(a.y, b.y)};
}

bool IsInGrid(const PixelPosition& place, const PixelSize& size) {
    return place.x + size.width <= kGridWidth && place.y + size.height <= kGridHeight;
}

} // namespace trevolt
