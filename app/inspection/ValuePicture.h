// A picture of any values that belong to pixels, as differences of two maps.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "app/inspection/CellPainter.h"
#include "app/inspection/Picture.h"
#include "app/inspection/PictureSheet.h"

namespace trevolt {

struct SValuePictureStyle {
    SSheetText text;
    EColourScale scale = EColourScale::FalseColour;
    std::optional<SValueRange> range; ///< at the scale's ends; else by the values
    bool fromZero = false;            ///< the lower end is 0 unless it is given
    int width =
        kPictureWidth; ///< of the picture at most, at least 200; the plot is five eighths of it high
    std::size_t jobs = 1; ///< threads
};

struct SValuePicture {
    CPicture picture;
    SPaintedValues values; ///< that it shows
};

/// One plot of cells with a title and a legend; `found` is what the cells hold.
SValuePicture PaintPlotSheet(const SSheetText& text, const SValueCells& cells,
                             const SPlotShape& shape, CCellPainter& painter,
                             const std::optional<SValueRange>& found, int width);

/// Values as a plot with a title and a legend. Of more pixels than there is room for each cell has the
/// mean of its area, of fewer each is drawn in a whole number of picture pixels. Throws
/// std::bad_alloc.
SValuePicture PaintValues(const SValueRows& rows, const SValuePictureStyle& style);

/// The same of values in memory, row by row; both sizes are at least 1.
SValuePicture PaintValues(std::span<const float> values, std::size_t width, std::size_t height,
                          const SValuePictureStyle& style);

} // namespace trevolt
