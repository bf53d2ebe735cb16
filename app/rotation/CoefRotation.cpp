#include "trevolt/CoefRotation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "common/ElementTurn.h"

namespace trevolt {
namespace {

/// Rows of a map, for a turn.
class CMapRows {
  public:
    explicit CMapRows(const CChromaCorrectCoef& map)
        : m_map(map),
          m_width(std::min<std::uint32_t>(map.Width(), map.ColourGrid().Width())),
          m_height(std::min<std::uint32_t>(map.Height(), map.ColourGrid().Height())) {}

    /// The element at (x, y), or the map's default where it holds none.
    const SMatrixCoef& Pixel(std::int32_t x, std::int32_t y) const {
        return m_map.ElementOrDefault(x, y);
    }

    /// The address of `count` elements from (x, y) on to the right. Null where the map does not hold
    /// them all, or not in one piece.
    const SMatrixCoef* Held(std::int32_t x, std::int32_t y, std::int32_t count) const {
        if (std::int64_t{x} + count > m_width || y >= m_height)
            return nullptr;
        const CMassiveGrid& grid = m_map.ColourGrid();
        const std::uint32_t index =
            grid.Width() * static_cast<std::uint32_t>(y) + static_cast<std::uint32_t>(x);
        return grid.RunLength(index) < static_cast<std::uint32_t>(count) ? nullptr
                                                                         : m_map.FindElement(x, y);
    }

    /// As `Held`, but what the map does not hold is its default; lasts until it is asked again.
    const SMatrixCoef* operator()(std::int32_t x, std::int32_t y, std::int32_t count) const {
        if (const SMatrixCoef* held = Held(x, y, count))
            return held;
        for (std::int32_t i = 0; i < count; ++i)
            m_run[static_cast<std::size_t>(i)] = Pixel(x + i, y);
        return m_run.data();
    }

  private:
    const CChromaCorrectCoef& m_map;
    std::int64_t m_width;
    std::int64_t m_height;
    mutable std::array<SMatrixCoef, kTurnTile> m_run;
};

/// A quarter turn, square by square along the source's rows, which the processor foresees. A square's
/// columns are runs of the target's rows; nothing reads them soon, so they go past the cache.
class CMapQuarterTurn {
  public:
    CMapQuarterTurn(const CMapRows& source, const CQuarterTurn& turn, CMassiveGrid& target)
        : m_source(source), m_turn(turn), m_target(target) {}

    void TurnAll(std::int32_t width, std::int32_t height) const {
        for (std::int32_t top = 0; top < height; top += kSide)
            for (std::int32_t left = 0; left < width; left += kSide)
                TurnPart({left, top, std::min(left + kSide, width), std::min(top + kSide, height)});
        EndStreaming();
    }

  private:
    static constexpr std::int32_t kSide = 8;
    static constexpr std::size_t kSideBytes = kSide * sizeof(SMatrixCoef);
    static_assert(sizeof(SMatrixCoef) % kVectorBytes == 0 &&
                  alignof(std::max_align_t) % kVectorBytes == 0);
    static constexpr std::ptrdiff_t kAhead = 2 * kSideBytes;

    /// A square's rows in the order in which they follow each other in the target.
    using SquareRows = std::array<const SMatrixCoef*, kSide>;

    std::uint32_t TargetIndex(std::int32_t x, std::int32_t y) const {
        const PixelPosition to = m_turn.Turned(x, y);
        return static_cast<std::uint32_t>(to.y * m_target.Width() + to.x);
    }

    void TurnPart(const SPixelRect& part) const {
        const bool isSquare = part.Width() == kSide && part.Height() == kSide;
        if (isSquare && TurnSquare(part.left, part.top))
            return;
        for (std::int32_t y = part.top; y < part.bottom; ++y)
            for (std::int32_t x = part.left; x < part.right; ++x)
                std::memcpy(m_target.Element(TargetIndex(x, y)), &m_source.Pixel(x, y),
                            sizeof(SMatrixCoef));
    }

    /// False where a row of it, in the source or in the target, is not in one piece.
    bool TurnSquare(std::int32_t left, std::int32_t top) const {
        SquareRows rows;
        for (std::int32_t i = 0; i < kSide; ++i) {
            const std::int32_t y = m_turn.IsLeftward() ? top + kSide - 1 - i : top + i;
            const SMatrixCoef* const row = m_source.Held(left, y, kSide);
            if (row == nullptr)
                return false;
            PrefetchLines<ELineUse::Read>(row, kAhead, kSideBytes);
            rows[static_cast<std::size_t>(i)] = row;
        }
        const std::int32_t first = m_turn.IsLeftward() ? top + kSide - 1 : top;
        for (std::int32_t column = 0; column < kSide; ++column) {
            const std::uint32_t index = TargetIndex(left + column, first);
            if (m_target.RunLength(index) < kSide)
                return false;
            StoreColumn(rows, column, m_target.Element(index));
        }
        return true;
    }

    /// Past the cache but for the lines at either end that it does not fill: a part of a line that
    /// goes past the cache costs as much as the whole. Elements stand at whole vectors, since their
    /// block does, as all that is allocated.
    static void StoreColumn(const SquareRows& rows, std::int32_t column, std::byte* to) {
        const std::size_t before = reinterpret_cast<std::uintptr_t>(to) % kLineBytes;
        const std::size_t head = (kLineBytes - before) % kLineBytes;
        const std::size_t tail = kSideBytes - (before + kSideBytes) % kLineBytes;
        std::size_t at = 0;
        for (const SMatrixCoef* row : rows) {
            const auto* from = reinterpret_cast<const std::byte*>(row + column);
            for (std::size_t i = 0; i < sizeof(SMatrixCoef);
                 i += kVectorBytes, at += kVectorBytes) {
                const WordVector words = LoadWords(from + i);
                const bool isOfWholeLine = at >= head && at < tail;
                isOfWholeLine ? StreamWords(to + at, words) : StoreWords(to + at, words);
            }
        }
    }

    const CMapRows& m_source;
    const CQuarterTurn& m_turn;
    CMassiveGrid& m_target;
};

/// The most of the elements [first, end) of rows of `width` that are one rectangle: the rest of a
/// row that does not begin with them, else all whole rows, else the beginning of a row.
SPixelRect FirstRect(std::uint64_t first, std::uint64_t end, std::uint64_t width) {
    const std::uint64_t left = first % width;
    const std::uint64_t top = first / width;
    const std::uint64_t rows = left == 0 ? std::max<std::uint64_t>((end - first) / width, 1) : 1;
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(std::min(width, left + end - first)),
            static_cast<std::int32_t>(top + rows)};
}

/// A half turn: each block of the target is filled from one end to the other.
void TurnHalf(const CMapRows& source, std::int32_t width, std::int32_t height, std::uint32_t code,
              CMassiveGrid& target) {
    std::uint32_t next = 0;
    while (next < target.ElementCount()) {
        const std::uint32_t end = next + target.RunLength(next); // of a block
        while (next < end) {
            const SPixelRect rect = FirstRect(next, end, target.Width());
            GatherTurned(code, width, height, rect, source,
                         reinterpret_cast<SMatrixCoef*>(target.Element(next)), target.Width());
            next += static_cast<std::uint32_t>(rect.Width() * rect.Height());
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
    const CMapRows rows(source);
    if (turn.StaysInRow())
        TurnHalf(rows, width, height, code, target.ColourGrid());
    else
        CMapQuarterTurn(rows, turn, target.ColourGrid()).TurnAll(width, height);
}

} // namespace trevolt
