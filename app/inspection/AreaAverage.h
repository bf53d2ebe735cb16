// Many values made few: each cell of the result is the mean of what it covers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace trevolt {

/// Rows of cells, each with `channels` values side by side.
struct SValueCells {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 1;
    /// A cell that covers anything infinite or no number is NaN.
    std::vector<float> values;
    /// Pixels of the source with such a value.
    std::uint64_t notFinite = 0;

    const float* Cell(std::size_t x, std::size_t y) const {
        return &values[channels * (y * width + x)];
    }
};

/// The source of values: `width` × `height` pixels of `channels` values.
struct SValueRows {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 1;
    /// Writes the width × channels values of row `y`. Called by several threads at once; must not
    /// throw.
    std::function<void(std::size_t y, float* row)> read;
};

/// The means of the areas that `width` × `height` cells divide the source into, pixels at their edges
/// by the parts that are covered. A side of the result is from 1 to the source's. The result does not
/// depend on `jobs`, the threads that share the work. Throws std::bad_alloc.
SValueCells AverageByArea(const SValueRows& source, std::size_t width, std::size_t height,
                          std::size_t jobs);

} // namespace trevolt
