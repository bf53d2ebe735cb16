#include "app/inspection/ValuePicture.h"

#include <cstring>
#include <utility>

namespace trevolt {
SValuePicture PaintPlotSheet(const SSheetText& text, const SValueCells& cells,
                             const SPlotShape& shape, CCellPainter& painter,
                             const std::optional<SValueRange>& found, int width) {
    CPictureSheet sheet(text, shape.Width(), shape.Height(), width);
    painter.Paint(sheet.Picture(), sheet.Left(), sheet.Top(), cells, shape);
    FramePlot(sheet.Picture(), {sheet.Left(), sheet.Top(), shape.Width(), shape.Height()});
    const SPaintedValues painted = painter.Painted(found, cells.notFinite);
    return {std::move(sheet).Finish(painter, painted), painted};
}

SValuePicture PaintValues(const SValueRows& rows, const SValuePictureStyle& style) {
    const PixelSize size{static_cast<std::int64_t>(rows.width),
                         static_cast<std::int64_t>(rows.height)};
    const SPlotShape shape =
        PlotShape(size, PlotScale(size, CPictureSheet::RoomOf(style.width)), kThinnestPlot);
    const SValueCells cells = AverageByArea(rows, static_cast<std::size_t>(shape.cellsWide),
                                            static_cast<std::size_t>(shape.cellsHigh), style.jobs);
    const auto found = RangeOf(cells);
    CCellPainter painter(style.scale,
                         ScaleRange({style.scale, style.range, style.fromZero}, cells.values),
                         style.jobs);
    return PaintPlotSheet(style.text, cells, shape, painter, found, style.width);
}

SValuePicture PaintValues(std::span<const float> values, std::size_t width, std::size_t height,
                          const SValuePictureStyle& style) {
    const auto read = [values, width](std::size_t y, float* row) {
        std::memcpy(row, &values[y * width], width * sizeof(float));
    };
    return PaintValues(SValueRows{width, height, 1, read}, style);
}

} // namespace trevolt
