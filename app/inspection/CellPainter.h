// Cells of values as parts of a picture: how large, and in which colours.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "app/inspection/AreaAverage.h"
#include "app/inspection/ColourScale.h"
#include "app/inspection/Picture.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// The values at both ends of a scale.
struct SValueRange {
    double low = 0;
    double high = 0;
    friend bool operator==(const SValueRange&, const SValueRange&) = default;
};

/// How many cells a plot has, and how many picture pixels each is drawn in.
struct SPlotShape {
    int cellsWide = 0;
    int cellsHigh = 0;
    int cellWidth = 1;
    int cellHeight = 1;

    int Width() const { return cellsWide * cellWidth; }
    int Height() const { return cellsHigh * cellHeight; }
    friend bool operator==(const SPlotShape&, const SPlotShape&) = default;
};

/// Picture pixels a pixel for `size` pixels in `room`: below 1 as large as fits, above a whole number
/// of at most 64. No side is 0.
double PlotScale(const PixelSize& size, const PixelSize& room);

/// The plot of `size` pixels at such a scale; each side has a cell at least. A side of less than
/// `thinnest` picture pixels has its cells drawn a whole number of times larger.
SPlotShape PlotShape(const PixelSize& size, double scale, int thinnest = 1);

/// The cells after the turn that `code` (1 to 3) is.
SValueCells TurnedCells(const SValueCells& cells, std::uint32_t code);

/// The smallest and the largest of the finite values of both; nothing where there is none.
std::optional<SValueRange> RangeOf(const SValueCells& cells);
std::optional<SValueRange> JoinedRange(const std::optional<SValueRange>& a,
                                       const std::optional<SValueRange>& b);

/// A range that a scale can have: of one value, both sides of it; of none, 0 to 1.
SValueRange ScaleRange(const std::optional<SValueRange>& found);

/// Paints cells of one value by a colour scale, and cells of three, red, green and blue, as light:
/// `range.low` is dark, `range.high` full. Counts what it paints.
class CCellPainter {
  public:
    CCellPainter(EColourScale scale, const SValueRange& range) : m_scale(scale), m_range(range) {}

    void Paint(CPicture& picture, int left, int top, const SValueCells& cells,
               const SPlotShape& shape);

    /// The colour of a place between the ends, 0 to 1.
    SColour ScaleColour(double place) const { return m_scale.At(place); }
    static SColour LightColour(double place);
    const SValueRange& Range() const { return m_range; }

    // Cells painted up to now, and how many of them had a value beyond an end.
    std::uint64_t Cells() const { return m_cells; }
    std::uint64_t Below() const { return m_below; }
    std::uint64_t Above() const { return m_above; }

  private:
    double Place(float value) const;
    SColour ColourOf(const float* cell, std::size_t channels);

    CColourScale m_scale;
    SValueRange m_range;
    std::uint64_t m_cells = 0;
    std::uint64_t m_below = 0;
    std::uint64_t m_above = 0;
};

} // namespace trevolt
