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
    /// The values at the scale's ends; else the smallest and the largest that are painted, and of a
    /// diverging scale as far from 0 on both sides.
    std::optional<SValueRange> range;
    int width =
        kPictureWidth; ///< of the picture at most, at least 200; its height is five eighths of it
    std::size_t jobs = 1; ///< threads
};

/// Values as a plot with a title and a legend. Of more pixels than there is room for each cell has the
/// mean of its area, of fewer each is drawn in a whole number of picture pixels. Throws
/// std::bad_alloc.
CPicture PaintValues(const SValueRows& rows, const SValuePictureStyle& style);

/// The same of values in memory, row by row; both sizes are at least 1.
CPicture PaintValues(std::span<const float> values, std::size_t width, std::size_t height,
                     const SValuePictureStyle& style);

/// The range of a scale for values that were found.
SValueRange ScaleRangeOf(EColourScale scale, const std::optional<SValueRange>& given,
                         const std::optional<SValueRange>& found);

} // namespace trevolt
