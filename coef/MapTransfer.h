// Pixels between a store and a coefficient map, for any element.
#pragma once

#include <cstdint>

#include "calibuf/CaliBuf.h"
#include "coef/StoreRect.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Gives the map this size and the default element in every pixel. E_FAIL, and the map empty, for a
/// side that no map can have or without memory; a side of 0 succeeds and leaves the map empty.
Status SizeMap(CChromaCorrectCoef& map, std::uint64_t width, std::uint64_t height);

/// Fills the rectangle, cut to the store, from the map: its left top from map pixel (mapX, mapY).
/// Pixels that the map does not have become its default element. A word is the low 16 bits of
/// (int)(value × 65535 + 0.5); block pieces are walked by columns, and the matrix kind writes all
/// twelve values of a map element: the words of the three trailing ones fall on the element that
/// follows in the block's memory, and are dropped at the block's end. Statuses of the rectangle
/// iteration.
template <class Element>
Status MapToStore(const CChromaCorrectCoef& map, std::int32_t mapX, std::int32_t mapY,
                  CCaliBuf* store, SStoreRect rect);

/// Gives the map the store's size and pixels; what the element does not hold, and missing pixels,
/// are the map's defaults. E_FAIL without a store and where `SizeMap` fails.
template <class Element>
Status StoreToMap(const CCaliBuf* store, CChromaCorrectCoef& map);

/// Gives the map the store's pixels, lets change() put others into it, and takes those of `rect` as
/// that leaves it back into the store. Fails with the status of whichever step fails, the
/// store unchanged.
template <class Element, class Change>
Status ChangeThroughMap(CCaliBuf* store, CChromaCorrectCoef& map, SPixelRect& rect,
                        Change&& change) {
    if (const Status status = StoreToMap<Element>(store, map); Failed(status))
        return status;
    if (const Status status = change(); Failed(status))
        return status;
    return MapToStore<Element>(map, rect.left, rect.top, store,
                               FromEdges(rect).value_or(SStoreRect{}));
}

} // namespace trevolt
