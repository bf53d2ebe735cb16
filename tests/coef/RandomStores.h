// Stores and rectangles by chance, for comparing the objects with naive models of them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "calibuf/CaliBuf.h"
#include "trevolt/PixelRect.h"

namespace trevolt::test {

using Random = std::mt19937;

inline std::uint32_t Below(Random& random, std::uint32_t end) {
    return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(random);
}

inline std::uint16_t AnyWord(Random& random) {
    return static_cast<std::uint16_t>(Below(random, 65536));
}

inline float AnyFloat(Random& random) {
    return std::uniform_real_distribution<float>(-0.5F, 1.5F)(random);
}

struct SRect {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t w = 0;
    std::uint32_t h = 0;

    SPixelRect Edges() const {
        return {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                static_cast<std::int32_t>(x + w), static_cast<std::int32_t>(y + h)};
    }
};

/// A rectangle that starts in a store of this size, or just past it, and may reach out of it.
inline SRect AnyRect(Random& random, std::uint32_t width, std::uint32_t height) {
    // Mostly small ones, so that a run is short; some may span three columns or rows of blocks.
    const std::uint32_t widest = Below(random, 4) == 0 ? 700 : 200;
    const std::uint32_t highest = Below(random, 8) == 0 ? 300 : 40;
    return {Below(random, width + 2), Below(random, height + 2), Below(random, widest),
            Below(random, highest)};
}

/// The rectangle cut to a store of this size, nothing when it is refused.
inline std::optional<SRect> CutTo(SRect rect, std::uint32_t width, std::uint32_t height) {
    if (rect.w == 0 || rect.h == 0 || rect.x > width || rect.y > height)
        return std::nullopt;
    rect.w = std::min(rect.w, width - rect.x);
    rect.h = std::min(rect.h, height - rect.y);
    return rect;
}

/// Drops one in four of the store's blocks; the others get the default element.
inline void DropSomeBlocks(CCaliBuf& store, Random& random) {
    const std::vector<std::uint32_t> all(store.UsedBlocks().begin(), store.UsedBlocks().end());
    store.Clear();
    for (const std::uint32_t index : all)
        if (Below(random, 4) != 0) {
            EXPECT_EQ(store.AllocateBlock(index, index % kGridColumns * kBlockWidth,
                                          index / kGridColumns * kBlockHeight),
                      S_OK);
            EXPECT_EQ(store.FillBlockDefault(index), S_OK);
        }
}

} // namespace trevolt::test
