#include "app/inspection/CellPainter.h"

#include <algorithm>
#include <cmath>

namespace trevolt {
namespace {

constexpr double kLargestScale = 64;

int CellsOf(std::int64_t pixels, double scale) {
    if (scale >= 1)
        return static_cast<int>(pixels);
    return std::max(static_cast<int>(std::lround(static_cast<double>(pixels) * scale)), 1);
}

int CellSide(int cells, double scale, int thinnest) {
    const int side = scale < 1 ? 1 : static_cast<int>(scale);
    return std::max(side, (thinnest + cells - 1) / cells);
}

} // namespace

double PlotScale(const PixelSize& size, const PixelSize& room) {
    const double fitting =
        std::min(static_cast<double>(room.width) / static_cast<double>(size.width),
                 static_cast<double>(room.height) / static_cast<double>(size.height));
    return fitting < 1 ? fitting : std::min(std::floor(fitting), kLargestScale);
}

SPlotShape PlotShape(const PixelSize& size, double scale, int thinnest) {
    SPlotShape shape{CellsOf(size.width, scale), CellsOf(size.height, scale)};
    shape.cellWidth = CellSide(shape.cellsWide, scale, thinnest);
    shape.cellHeight = CellSide(shape.cellsHigh, scale, thinnest);
    return shape;
}

SValueCells TurnedCells(const SValueCells& cells, std::uint32_t code) {
    const CQuarterTurn turn(code, static_cast<std::int64_t>(cells.width),
                            static_cast<std::int64_t>(cells.height));
    SValueCells turned{static_cast<std::size_t>(turn.TurnedSize().width),
                       static_cast<std::size_t>(turn.TurnedSize().height), cells.channels,
                       std::vector<float>(cells.values.size()), cells.notFinite};
    for (std::size_t y = 0; y < cells.height; ++y)
        for (std::size_t x = 0; x < cells.width; ++x) {
            const PixelPosition to =
                turn.Turned(static_cast<std::int64_t>(x), static_cast<std::int64_t>(y));
            const std::size_t cell =
                static_cast<std::size_t>(to.y) * turned.width + static_cast<std::size_t>(to.x);
            std::copy_n(cells.Cell(x, y), cells.channels, &turned.values[cell * cells.channels]);
        }
    return turned;
}

std::optional<SValueRange> RangeOf(const SValueCells& cells) {
    std::optional<SValueRange> range;
    for (const float value : cells.values) {
        if (!std::isfinite(value))
            continue;
        const auto found = static_cast<double>(value);
        if (!range)
            range = {found, found};
        range->low = std::min(range->low, found);
        range->high = std::max(range->high, found);
    }
    return range;
}

std::optional<SValueRange> JoinedRange(const std::optional<SValueRange>& a,
                                       const std::optional<SValueRange>& b) {
    if (!a || !b)
        return a ? a : b;
    return SValueRange{std::min(a->low, b->low), std::max(a->high, b->high)};
}

SValueRange ScaleRange(EColourScale scale, const std::optional<SValueRange>& given,
                       const std::optional<SValueRange>& found) {
    if (given || !found)
        return given.value_or(SValueRange{0, 1});
    const double most = std::max(std::abs(found->low), std::abs(found->high));
    if (scale == EColourScale::Diverging && most > 0)
        return {-most, most};
    if (found->low < found->high)
        return *found;
    const double aside = most > 0 ? most / 2 : 0.5;
    return {found->low - aside, found->low + aside};
}

void CCellPainter::Paint(CPicture& picture, int left, int top, const SValueCells& cells,
                         const SPlotShape& shape) {
    m_isLight = cells.channels == 3;
    for (int y = 0; y < shape.cellsHigh; ++y)
        for (int x = 0; x < shape.cellsWide; ++x) {
            const float* const cell =
                cells.Cell(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
            picture.Fill({left + x * shape.cellWidth, top + y * shape.cellHeight, shape.cellWidth,
                          shape.cellHeight},
                         ColourOf(cell, cells.channels));
        }
}

SPaintedValues CCellPainter::Painted(const std::optional<SValueRange>& found,
                                     std::uint64_t notFinite) const {
    return {found, m_range, m_cells, m_below, m_above, notFinite, m_isLight};
}

SColour CCellPainter::LightColour(double place) {
    const std::uint8_t value = ScreenValue(place);
    return {value, value, value};
}

double CCellPainter::Place(float value) const {
    return (static_cast<double>(value) - m_range.low) / (m_range.high - m_range.low);
}

SColour CCellPainter::ColourOf(const float* cell, std::size_t channels) {
    ++m_cells;
    if (!std::all_of(cell, cell + channels, [](float value) { return std::isfinite(value); }))
        return kNoNumberColour;
    const auto [least, most] = std::minmax_element(cell, cell + channels);
    m_below += static_cast<double>(*least) < m_range.low ? 1 : 0;
    m_above += static_cast<double>(*most) > m_range.high ? 1 : 0;
    if (channels == 1)
        return m_scale.At(Place(cell[0]));
    return {ScreenValue(Place(cell[0])), ScreenValue(Place(cell[1])), ScreenValue(Place(cell[2]))};
}

} // namespace trevolt
