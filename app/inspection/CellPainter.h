// Cells of values as parts of a picture: how large, and in which colours.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

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

/// The smallest and the largest of the finite values without the few, at most one in a hundred, or four,
/// that are so far from the others that no scale with them would tell the others apart; nothing where
/// none is finite.
std::optional<SValueRange> UsualRange(std::span<const float> values);

/// How a scale gets its ends.
struct SScaleEnds {
    EColourScale scale = EColourScale::FalseColour;
    std::optional<SValueRange> given; ///< else by the values
    bool fromZero = false;            ///< the lower one is 0 unless given
};

/// The ends of a scale for values: those of their usual range, of a single value on both sides of it,
/// of none 0 to 1. A diverging scale reaches as far below 0 as above.
SValueRange ScaleRange(const SScaleEnds& ends, std::span<const float> values);

/// A plot that is thinner is hard to see.
inline constexpr int kThinnestPlot = 16;

/// What was found and painted.
struct SPaintedValues {
    std::optional<SValueRange> found; ///< nothing where no value is finite
    SValueRange range;                ///< of the scale
    std::uint64_t cells = 0;
    std::uint64_t below = 0; ///< cells with a value beyond the scale's ends
    std::uint64_t above = 0;
    std::uint64_t notFinite = 0; ///< pixels with an infinite value or no number
    bool isLight = false;        ///< the scale is that of three colours' light
};

/// Paints cells of one value by a colour scale, those beyond its ends in colours of their own, and
/// cells of three, red, green and blue, as light: `range.low` and below is dark, `range.high` and above
/// full. Counts what it paints.
class CCellPainter {
  public:
    /// Paints with up to `jobs` threads.
    CCellPainter(EColourScale scale, const SValueRange& range, std::size_t jobs = 1)
        : m_scale(scale), m_range(range), m_jobs(jobs) {}

    /// Throws std::bad_alloc, before anything is painted.
    void Paint(CPicture& picture, int left, int top, const SValueCells& cells,
               const SPlotShape& shape);

    /// The colour of a place between the ends, 0 to 1.
    SColour ScaleColour(double place) const { return m_scale.At(place); }
    static SColour LightColour(double place);

    /// What was painted up to now of values that were found as told.
    SPaintedValues Painted(const std::optional<SValueRange>& found, std::uint64_t notFinite) const;

  private:
    /// Of painted cells, those with a value beyond the scale's ends.
    struct SBeyond {
        std::uint64_t below = 0;
        std::uint64_t above = 0;
    };

    SBeyond PaintRows(int begin, int end, CPicture& picture, int left, int top,
                      const SValueCells& cells, const SPlotShape& shape) const;
    double Place(float value) const;
    SColour ColourOf(const float* cell, std::size_t channels, SBeyond& beyond) const;

    CColourScale m_scale;
    SValueRange m_range;
    std::size_t m_jobs;
    std::uint64_t m_cells = 0;
    SBeyond m_beyond;
    bool m_isLight = false;
};

} // namespace trevolt
