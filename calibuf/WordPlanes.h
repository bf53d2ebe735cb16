// CWordPlanes: the words of a whole picture, one plane a word. Plane k holds word k of every pixel,
// row by row. The memory is one piece for all pixels, or one for each block of the picture that is
// given words: what no block holds has its kind's default words. Several threads may fill different
// pixels, or read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "calibuf/BlockGrid.h"
#include "calibuf/WordElementKind.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {

class CWordPlanes {
  public:
    /// Planes of sides up to 65535 that hold no pixel yet.
    CWordPlanes(const WordElementKind& kind, std::uint32_t width, std::uint32_t height)
        : m_kind(&kind), m_width(width), m_height(height) {}

    const WordElementKind& Kind() const { return *m_kind; }
    std::uint32_t Width() const { return m_width; }
    std::uint32_t Height() const { return m_height; }

    /// Takes the memory for all pixels, whose words are not set yet. False when it is refused. For
    /// planes that hold nothing.
    bool HoldAll() {
        m_isWhole = true;
        m_blocks.emplace_back(BytesOf(m_width, m_height));
        return static_cast<bool>(m_blocks.front());
    }

    /// Takes the memory for the block of pixel (x, y), unless it is there; its words are the default
    /// then. False when it is refused. For planes that hold nothing but such blocks.
    bool HoldBlock(std::uint32_t x, std::uint32_t y) {
        if (m_blocks.empty())
            m_blocks.resize(BlockCount());
        const SBlock at = BlockAt(x, y);
        CBudgetBlock& block = m_blocks[at.index];
        if (block)
            return true;
        block = CBudgetBlock(BytesOf(at.width, at.height));
        if (!block)
            return false;
        const std::size_t pixels = std::size_t{at.width} * at.height;
        for (std::size_t k = 0; k < m_kind->wordCount; ++k)
            std::fill_n(Words(block) + k * pixels, pixels, m_kind->defaultWords[k]);
        return true;
    }

    /// Word k of pixel (x, y), which is held; the block's row follows.
    std::uint16_t* At(std::size_t k, std::uint32_t x, std::uint32_t y) {
        const SBlock at = BlockAt(x, y);
        return Words(m_blocks[at.index]) + at.PlaceOf(k, x, y);
    }

    /// Plane k where all pixels have their memory in one piece, else null.
    const std::uint16_t* FindPlane(std::size_t k) const {
        return m_isWhole ? Words(m_blocks.front()) + std::size_t{m_width} * m_height * k : nullptr;
    }

    /// Word k of `count` pixels of the picture from (x, y) on to the right; null when they are not
    /// all in one block that is held.
    const std::uint16_t* FindRun(std::size_t k, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t count) const {
        if (m_blocks.empty())
            return nullptr;
        const SBlock at = BlockAt(x, y);
        const CBudgetBlock& block = m_blocks[at.index];
        return block && x + count <= at.left + at.width ? Words(block) + at.PlaceOf(k, x, y)
                                                        : nullptr;
    }

  private:
    struct SBlock {
        std::size_t index;
        std::uint32_t left;
        std::uint32_t top;
        std::uint32_t width; ///< cut to the picture, as the height
        std::uint32_t height;

        std::size_t PlaceOf(std::size_t k, std::uint32_t x, std::uint32_t y) const {
            return (k * height + (y - top)) * width + (x - left);
        }
    };

    SBlock BlockAt(std::uint32_t x, std::uint32_t y) const {
        if (m_isWhole)
            return {0, 0, 0, m_width, m_height};
        const std::uint32_t left = x - x % kBlockWidth;
        const std::uint32_t top = y - y % kBlockHeight;
        return {y / kBlockHeight * Columns() + x / kBlockWidth, left, top,
                std::min(kBlockWidth, m_width - left), std::min(kBlockHeight, m_height - top)};
    }

    std::size_t Columns() const { return (m_width + kBlockWidth - 1) / kBlockWidth; }
    std::size_t BlockCount() const {
        return Columns() * ((m_height + kBlockHeight - 1) / kBlockHeight);
    }

    std::size_t BytesOf(std::uint32_t width, std::uint32_t height) const {
        return std::size_t{width} * height * m_kind->elemSize;
    }

    static std::uint16_t* Words(CBudgetBlock& block) {
        return reinterpret_cast<std::uint16_t*>(block.Data());
    }
    static const std::uint16_t* Words(const CBudgetBlock& block) {
        return reinterpret_cast<const std::uint16_t*>(block.Data());
    }

    const WordElementKind* m_kind;
    std::uint32_t m_width;
    std::uint32_t m_height;
    bool m_isWhole = false;
    std::vector<CBudgetBlock> m_blocks;
};

} // namespace trevolt
