// The rectangle iteration that every rectangle operation shares: a rectangle is cut to the store,
// then taken apart into pieces of one block each, rows of blocks outer, columns inner.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "calibuf/CaliBuf.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// A rectangle in pixels of a store; 64 bits, so that no edge overflows.
struct SStoreRect {
    std::uint64_t x = 0;
    std::uint64_t y = 0;
    std::uint64_t width = 0;
    std::uint64_t height = 0;

    bool IsEmpty() const { return width == 0 || height == 0; }
};

/// The rectangle with these edges, empty when they are turned over; nothing for a negative left or
/// top.
inline std::optional<SStoreRect> FromEdges(const SPixelRect& edges) {
    if (edges.left < 0 || edges.top < 0)
        return std::nullopt;
    const auto extent = [](std::int64_t length) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(length, 0));
    };
    return SStoreRect{extent(edges.left), extent(edges.top), extent(edges.Width()),
                      extent(edges.Height())};
}

/// The edge at `start` + `extent`, or the store's own where that comes first.
inline std::int32_t EdgeInStore(std::int32_t start, std::uint32_t extent,
                                std::uint32_t storeExtent) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(
        std::min({std::int64_t{start} + extent, std::int64_t{storeExtent}, kLargest}));
}

/// The edges of everything that the store has.
inline SPixelRect WholeStore(const CCaliBuf& store) {
    return {0, 0, EdgeInStore(0, store.Width(), store.Width()),
            EdgeInStore(0, store.Height(), store.Height())};
}

/// What one block has of a rectangle.
struct SBlockPiece {
    std::uint32_t block = 0;
    std::uint32_t startX = 0; ///< inside the block
    std::uint32_t startY = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint64_t bufferX = 0; ///< inside the rectangle, and so in the caller's buffer
    std::uint64_t bufferY = 0;
};

/// E_FAIL without a store or a buffer, for an empty rectangle, and for one that starts past the
/// store's size; else the rectangle is cut to the store (an edge on the store's gives an empty one).
inline Status CutToStore(const CCaliBuf* store, const void* buffer, SStoreRect& rect) {
    if (store == nullptr || buffer == nullptr || rect.IsEmpty() || rect.x > store->Width() ||
        rect.y > store->Height())
        return E_FAIL;
    rect.width = std::min(rect.width, store->Width() - rect.x);
    rect.height = std::min(rect.height, store->Height() - rect.y);
    return S_OK;
}

/// Calls visit(piece) for every piece that lies in the grid.
template <class Visit>
void ForEachBlockPiece(const SStoreRect& rect, Visit&& visit) {
    const std::uint64_t right = std::min<std::uint64_t>(rect.x + rect.width, kGridWidth);
    const std::uint64_t bottom = std::min<std::uint64_t>(rect.y + rect.height, kGridHeight);
    SBlockPiece piece;
    for (std::uint64_t y = rect.y; y < bottom; y += piece.height) {
        piece.startY = static_cast<std::uint32_t>(y % kBlockHeight);
        piece.height = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(bottom - y, kBlockHeight - piece.startY));
        piece.bufferY = y - rect.y;
        for (std::uint64_t x = rect.x; x < right; x += piece.width) {
            piece.startX = static_cast<std::uint32_t>(x % kBlockWidth);
            piece.width = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(right - x, kBlockWidth - piece.startX));
            piece.bufferX = x - rect.x;
            piece.block =
                BlockIndexOfPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            visit(piece);
        }
    }
}

/// The elements of a block, null when it is missing.
template <class Element>
Element* BlockElements(CCaliBuf& store, std::uint32_t block) {
    const BlockRecord* record = store.BlockWithData(block);
    return record == nullptr ? nullptr : reinterpret_cast<Element*>(record->pData);
}
template <class Element>
const Element* BlockElements(const CCaliBuf& store, std::uint32_t block) {
    const BlockRecord* record = store.BlockWithData(block);
    return record == nullptr ? nullptr : reinterpret_cast<const Element*>(record->pData);
}

/// Calls visit(elements, count, bufferX, bufferY) for every row of every piece whose block is
/// allocated; `elements` are the row's in the store.
template <class Element, class Store, class Visit>
void ForEachElementRun(Store& store, const SStoreRect& rect, Visit&& visit) {
    ForEachBlockPiece(rect, [&](const SBlockPiece& piece) {
        auto* elements = BlockElements<Element>(store, piece.block);
        if (elements == nullptr)
            return;
        elements += std::size_t{piece.startY} * kBlockWidth + piece.startX;
        for (std::uint32_t row = 0; row < piece.height; ++row)
            visit(elements + std::size_t{row} * kBlockWidth, piece.width, piece.bufferX,
                  piece.bufferY + row);
    });
}

} // namespace trevolt
