#include "app/inspection/ValuePicture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace trevolt {
namespace {

constexpr int kThinnestPlot = 16;

} // namespace

SValueRange ScaleRangeOf(EColourScale scale, const std::optional<SValueRange>& given,
                         const std::optional<SValueRange>& found) {
    if (given)
        return *given;
    if (scale != EColourScale::Diverging || !found)
        return ScaleRange(found);
    const double aside = std::max(std::abs(found->low), std::abs(found->high));
    return aside == 0 ? ScaleRange(found) : SValueRange{-aside, aside};
}

CPicture PaintValues(const SValueRows& rows, const SValuePictureStyle& style) {
    const PixelSize size{static_cast<std::int64_t>(rows.width),
                         static_cast<std::int64_t>(rows.height)};
    const SPlotShape shape =
        PlotShape(size, PlotScale(size, CPictureSheet::RoomOf(style.width)), kThinnestPlot);
    const SValueCells cells = AverageByArea(rows, static_cast<std::size_t>(shape.cellsWide),
                                            static_cast<std::size_t>(shape.cellsHigh), style.jobs);
    const auto found = RangeOf(cells);
    CCellPainter painter(style.scale, ScaleRangeOf(style.scale, style.range, found));
    CPictureSheet sheet(style.text, shape.Width(), shape.Height(), style.width);
    painter.Paint(sheet.Picture(), sheet.Left(), sheet.Top(), cells, shape);
    FramePlot(sheet.Picture(), {sheet.Left(), sheet.Top(), shape.Width(), shape.Height()});
    return std::move(sheet).Finish(painter,
                                   {found, painter.Range(), painter.Cells(), painter.Below(),
                                    painter.Above(), cells.notFinite, rows.channels == 3});
}

CPicture PaintValues(std::span<const float> values, std::size_t width, std::size_t height,
                     const SValuePictureStyle& style) {
    const auto read = [values, width](std::size_t y, float* row) {
        std::memcpy(row, &values[y * width], width * sizeof(float));
    };
    return PaintValues(SValueRows{width, height, 1, read}, style);
}

} // namespace trevolt
