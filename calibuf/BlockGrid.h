// The geometry of a calibration buffer: a grid of 512 × 512 blocks of 256 × 128 elements, which
// covers 131072 × 65536 pixels. Block (column, row) has index row × 512 + column.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "trevolt/PixelRect.h"

namespace trevolt {

inline constexpr std::uint32_t kBlockWidth = 256;  ///< elements a block row
inline constexpr std::uint32_t kBlockHeight = 128; ///< rows a block
inline constexpr std::uint32_t kBlockElements = kBlockWidth * kBlockHeight;
inline constexpr std::uint32_t kGridColumns = 512;
inline constexpr std::uint32_t kGridRows = 512;
inline constexpr std::uint32_t kGridBlocks = kGridColumns * kGridRows;
inline constexpr std::uint32_t kGridWidth = kGridColumns * kBlockWidth; ///< pixels
inline constexpr std::uint32_t kGridHeight = kGridRows * kBlockHeight;  ///< pixels
inline constexpr std::uint32_t kNoBlock = 0xFFFFFFFF; ///< an index that is in no grid

/// Index of the block in `column` and `row`, `kNoBlock` when either lies outside the grid.
constexpr std::uint32_t BlockIndexAt(std::int64_t column, std::int64_t row) {
    if (column < 0 || column >= kGridColumns || row < 0 || row >= kGridRows)
        return kNoBlock;
    return static_cast<std::uint32_t>(row * kGridColumns + column);
}

/// Index of the block that holds pixel (x, y), `kNoBlock` outside the grid.
constexpr std::uint32_t BlockIndexOfPixel(std::uint32_t x, std::uint32_t y) {
    return BlockIndexAt(x / kBlockWidth, y / kBlockHeight);
}

/// Place of pixel (x, y) among the elements of its block.
constexpr std::uint32_t PlaceInBlock(std::uint32_t x, std::uint32_t y) {
    return y % kBlockHeight * kBlockWidth + x % kBlockWidth;
}

/// A run of block columns and rows, the ends excluded. It may reach past the grid.
struct SBlockSpan {
    std::int64_t column0 = 0;
    std::int64_t row0 = 0;
    std::int64_t column1 = 0;
    std::int64_t row1 = 0;

    constexpr std::uint64_t Count() const {
        const std::int64_t columns = std::max<std::int64_t>(column1 - column0, 0);
        const std::int64_t rows = std::max<std::int64_t>(row1 - row0, 0);
        return static_cast<std::uint64_t>(columns) * static_cast<std::uint64_t>(rows);
    }
};

/// ceil(pixels / blockPixels) in single precision, exact over the whole grid.
template <class T>
std::int64_t BlocksCovering(T pixels, std::uint32_t blockPixels) {
    const float perPixel = 1.0F / static_cast<float>(blockPixels); // a power of two
    return static_cast<std::int64_t>(std::ceil(static_cast<float>(pixels) * perPixel));
}

/// The blocks that `rect` touches. Starts are divided as integers, towards zero.
inline SBlockSpan BlocksTouchedBy(const SPixelRect& rect) {
    constexpr auto kWidth = static_cast<std::int32_t>(kBlockWidth);
    constexpr auto kHeight = static_cast<std::int32_t>(kBlockHeight);
    return {rect.left / kWidth, rect.top / kHeight, BlocksCovering(rect.right, kBlockWidth),
            BlocksCovering(rect.bottom, kBlockHeight)};
}

} // namespace trevolt
