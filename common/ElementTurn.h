// The turn kernel: gathers a rectangle of a turned picture from the picture's rows. Whole elements
// move, whatever they are made of.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "common/TurnTile.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// Most elements of a row that a turn asks for at a time.
inline constexpr std::int32_t kTurnTile = 256;

/// Where a picture's rectangle lies after a turn.
constexpr SPixelRect TurnedRect(const CQuarterTurn& turn, const SPixelRect& rect) {
    const PixelPosition a = turn.Turned(rect.left, rect.top);
    const PixelPosition b = turn.Turned(rect.right - 1, rect.bottom - 1);
    return {static_cast<std::int32_t>(std::min(a.x, b.x)),
            static_cast<std::int32_t>(std::min(a.y, b.y)),
            static_cast<std::int32_t>(std::max(a.x, b.x) + 1),
            static_cast<std::int32_t>(std::max(a.y, b.y) + 1)};
}

/// A gathering by a half turn: every row is a row of the picture, read backwards. What is written needs
/// no hint: its lines follow each other, and of fresh memory they come from the clearing of the page.
template <class Element, class Row>
void GatherReversed(const CQuarterTurn& back, const SPixelRect& rect, const Row& row, Element* out,
                    std::int64_t stride) {
    constexpr std::size_t kBytes = sizeof(Element);
    constexpr std::int32_t kRunElements = kBytes <= 6 ? kTurnTile : kBytes <= 24 ? 32 : 8;
    constexpr std::size_t kRunBytes = kRunElements * kBytes;
    constexpr std::ptrdiff_t kAhead = 4096;
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        for (std::int32_t left = rect.left; left < rect.right; left += kRunElements) {
            const std::int32_t right = std::min(left + kRunElements, rect.right);
            const SPixelRect source = TurnedRect(back, {left, y, right, y + 1});
            const auto* from = reinterpret_cast<const std::byte*>(
                row(source.left, source.top, static_cast<std::int32_t>(source.Width())));
            auto* to =
                reinterpret_cast<std::byte*>(out + (y - rect.top) * stride + (left - rect.left));
            PrefetchLines<ELineUse::Read>(from, -kAhead - static_cast<std::ptrdiff_t>(kRunBytes),
                                          kRunBytes);
            MoveReversed<kBytes>(from, to, static_cast<std::size_t>(source.Width()));
        }
    }
}

/// Fills the tile with the picture's rectangle `source`, the last row first if `isUpward`, and asks
/// for the rows that a later tile is going to read.
template <class Element, class Row>
void FillTile(CTurnTile<sizeof(Element)>& tile, const SPixelRect& source, bool isUpward,
              std::int64_t height, const Row& row) {
    using Tile = CTurnTile<sizeof(Element)>;
    constexpr std::int32_t kAhead = Tile::kTilesAhead * Tile::kRows;
    const auto columns = static_cast<std::int32_t>(source.Width());
    const auto rows = static_cast<std::int32_t>(source.Height());
    for (std::int32_t i = 0; i < rows; ++i) {
        const std::int32_t y = isUpward ? source.bottom - 1 - i : source.top + i;
        const std::int32_t later = isUpward ? y - kAhead : y + kAhead;
        if (later >= 0 && later < height)
            PrefetchLines<ELineUse::Read>(row(source.left, later, 1), 0, Tile::kPitch);
        tile.SetRow(static_cast<std::size_t>(i),
                    reinterpret_cast<const std::byte*>(row(source.left, y, columns)),
                    static_cast<std::size_t>(columns));
    }
}

/// A gathering by a quarter turn, tile by tile: the picture's rows become columns.
template <class Element, class Row>
void GatherSideways(const CQuarterTurn& turn, const CQuarterTurn& back, const SPixelRect& rect,
                    const Row& row, Element* out, std::int64_t stride) {
    using Tile = CTurnTile<sizeof(Element)>;
    static_assert(Tile::kColumns <= kTurnTile);
    const bool isUpward = turn.IsLeftward(); // the target's rows begin with the picture's last
    const std::int64_t rowStep = (turn.Turned(1, 0).y - turn.Turned(0, 0).y) * stride;
    const std::int64_t height = back.TurnedSize().height;
    Tile tile;
    for (std::int32_t top = rect.top; top < rect.bottom; top += Tile::kColumns) {
        const std::int32_t bottom = std::min(top + Tile::kColumns, rect.bottom);
        for (std::int32_t left = rect.left; left < rect.right; left += Tile::kRows) {
            const std::int32_t right = std::min(left + Tile::kRows, rect.right);
            const SPixelRect source = TurnedRect(back, {left, top, right, bottom});
            FillTile<Element>(tile, source, isUpward, height, row);
            const std::int64_t first = turn.Turned(source.left, 0).y - rect.top;
            tile.StoreColumns(
                static_cast<std::size_t>(source.Width()), static_cast<std::size_t>(right - left),
                reinterpret_cast<std::byte*>(out + first * stride + (left - rect.left)),
                static_cast<std::ptrdiff_t>(rowStep) * std::ptrdiff_t{sizeof(Element)});
        }
    }
}

/// Puts the pixels of `rect`, which is not empty and counted in the turned picture, at `out`, whose
/// rows are `stride` elements apart. The picture is what `width` × `height` becomes by `code`.
/// `row(x, y, count)` gives the address of `count` elements, `kTurnTile` at most, of the picture
/// before the turn, from (x, y) on to the right; what it gives lasts until it is asked again. For
/// one element alone it may be asked in advance and for nothing: that should be quick.
template <class Element, class Row>
void GatherTurned(std::uint32_t code, std::int64_t width, std::int64_t height,
                  const SPixelRect& rect, const Row& row, Element* out, std::int64_t stride) {
    static_assert(std::is_trivially_copyable_v<Element>);
    const CQuarterTurn turn(code, width, height);
    const PixelSize turned = turn.TurnedSize();
    const CQuarterTurn back(CQuarterTurn::BackCode(code), turned.width, turned.height);
    if (turn.StaysInRow())
        GatherReversed(back, rect, row, out, stride);
    else
        GatherSideways(turn, back, rect, row, out, stride);
}

} // namespace trevolt
