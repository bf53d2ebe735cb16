// CMassiveGrid: a two-dimensional array of fixed-size elements on a segmented buffer. Every block
// holds 2^18 elements, so that an element is found by shift and mask.
//
// The storage always holds the width × height elements that the grid says: what the buffer's own
// operations put there, or fail to, has no shape until `SetShape` gives it one.
#pragma once

#include <cstdint>

#include "trevolt/MassiveBuf.h"

namespace trevolt {

class CMassiveGrid : public CMassiveBuf {
  public:
    static constexpr unsigned kBlockShift = 18;
    static constexpr std::uint32_t kBlockElements = std::uint32_t{1} << kBlockShift;
    static constexpr std::uint32_t kBlockMask = kBlockElements - 1;

    /// An empty grid of elements of `elementBytes`.
    explicit CMassiveGrid(std::uint32_t elementBytes);
    ~CMassiveGrid() override = default;
    /// A grid that was moved from is empty.
    CMassiveGrid(CMassiveGrid&& other) noexcept;
    CMassiveGrid& operator=(CMassiveGrid&& other) noexcept;

    /// Releases the content and allocates width × height elements, not initialised. False, and
    /// empty, when memory is refused, a size is negative, or there were more than 2^31 − 1
    /// elements; a size of 0 succeeds and holds nothing.
    bool Resize(std::int32_t width, std::int32_t height);

    /// Frees the storage, forgets the cursors, and sets width and height to 0.
    void Release() override;

    /// Takes what lies in this grid's storage as width × height elements; false, and nothing
    /// changes, when it holds another number of them.
    bool SetShape(std::uint32_t width, std::uint32_t height);

    /// Copies `source`, a grid of width × height elements of this grid's element size. When this
    /// grid has that shape the whole storage is copied; else the part that both have. False when
    /// `source` is null or has other elements, a size is below 1, memory is refused, or the source
    /// does not hold as many elements; when it is the memory, this grid is empty afterwards.
    bool CopyRegionFrom(const CMassiveGrid* source, std::int32_t width, std::int32_t height);

    std::uint32_t Width() const { return m_width; }   ///< row pitch in elements
    std::uint32_t Height() const { return m_height; } ///< rows
    std::uint32_t ElementBytes() const { return m_elementBytes; }
    std::uint64_t ElementCount() const { return ByteCount() / m_elementBytes; }
    bool HasStorage() const { return ByteCount() > 0; }

    /// The element at a linear index (row × pitch + column) below `ElementCount()`.
    std::byte* Element(std::uint32_t index) {
        return Block(index >> kBlockShift) +
               static_cast<std::size_t>(index & kBlockMask) * m_elementBytes;
    }
    const std::byte* Element(std::uint32_t index) const {
        return Block(index >> kBlockShift) +
               static_cast<std::size_t>(index & kBlockMask) * m_elementBytes;
    }

    /// Elements that lie behind `index` in the same block and inside the grid, `index` included.
    std::uint32_t RunLength(std::uint32_t index) const {
        const std::uint64_t inBlock = kBlockElements - (index & kBlockMask);
        const std::uint64_t inGrid = ElementCount() - index;
        return static_cast<std::uint32_t>(inBlock < inGrid ? inBlock : inGrid);
    }

    /// The remembered position of the last element looked up by index, −1 when unset.
    std::int32_t BlockCursor() const { return m_blockCursor; }
    std::int32_t OffsetCursor() const { return m_offsetCursor; }

  private:
    bool CopyOverlap(const CMassiveGrid& source, std::uint32_t width, std::uint32_t height);
    void ResetCursors();

    std::int32_t m_blockCursor = -1;
    std::int32_t m_offsetCursor = -1;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    std::uint32_t m_elementBytes;
};

} // namespace trevolt
