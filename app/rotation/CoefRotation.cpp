#include "trevolt/CoefRotation.h"

#include <algorithm>

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

    /// The address of `count` elements from (x, y) on to the right, until it is asked again. Those
    /// that the map does not hold are its default.
    const SMatrixCoef* operator()(std::int32_t x, std::int32_t y, std::int32_t count) const {
        if (std::int64_t{x} + count <= m_width && y < m_height) {
            const CMassiveGrid& grid = m_map.ColourGrid();
            const std::uint32_t index =
                grid.Width() * static_cast<std::uint32_t>(y) + static_cast<std::uint32_t>(x);
            if (grid.RunLength(index) >= static_cast<std::uint32_t>(count))
                return m_map.FindElement(x, y);
        }
        for (std::int32_t i = 0; i < count; ++i)
            m_run[static_cast<std::size_t>(i)] = m_map.ElementOrDefault(std::int64_t{x} + i, y);
        return m_run.data();
    }

  private:
    const CChromaCorrectCoef& m_map;
    std::int64_t m_width;
    std::int64_t m_height;
    mutable std::array<SMatrixCoef, kTurnTile> m_run;
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

} // namespace

void TurnMap(const CChromaCorrectCoef& source, std::int32_t width, std::int32_t height,
             std::uint32_t code, CChromaCorrectCoef& target) {
    const PixelSize turned = CQuarterTurn(code, width, height).TurnedSize();
    target.ResizeForOverwrite(static_cast<std::int32_t>(turned.width),
                              static_cast<std::int32_t>(turned.height));
    CMassiveGrid& grid = target.ColourGrid();
    const CMapRows rows(source);
    std::uint32_t next = 0;
    while (next < grid.ElementCount()) {
        const std::uint32_t end = next + grid.RunLength(next); // of a block
        while (next < end) {
            const SPixelRect rect = FirstRect(next, end, grid.Width());
            GatherTurned(code, width, height, rect, rows,
                         reinterpret_cast<SMatrixCoef*>(grid.Element(next)), grid.Width());
            next += static_cast<std::uint32_t>(rect.Width() * rect.Height());
        }
    }
}

} // namespace trevolt
