// How far two maps are apart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "app/rotation/ElementForms.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// One of a map element's twelve values, over all pixels.
struct SValueDifference {
    std::uint64_t differing = 0; ///< pixels whose values are further apart than the tolerance
    std::uint64_t oneNan = 0;    ///< of them those in which one of both alone is no number
    // Of the pixels in which both are numbers, or none is, which are not apart then:
    double most = 0; ///< infinite between an infinity and any other number, as the mean then is
    double mean = 0;
    PixelPosition mostAt; ///< the first such pixel, row by row
};

struct SCoefDifference {
    std::uint64_t pixels = 0;
    std::uint64_t differing = 0; ///< pixels of which any compared value differs
    MapValues compared;
    std::array<SValueDifference, std::tuple_size_v<decltype(SMatrixCoef::m)>> values;
};

/// How far two values are apart: not at all when both are no numbers, NaN when one alone is.
double DistanceOf(float a, float b);

/// The greatest distance of the pixel's `compared` values, NaN when that of any is.
double DistanceOf(const SMatrixCoef& a, const SMatrixCoef& b, const MapValues& compared);

/// Compares the `compared` values of two maps of one size, pixel by pixel; what a grid does not hold is
/// the default. What differs is further apart than `tolerance` (0 or more), or NaN on one side. The
/// work is shared among `threads` threads at most, and the result does not depend on their number.
/// Throws std::bad_alloc.
SCoefDifference CompareMaps(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b,
                            const MapValues& compared, double tolerance, std::size_t threads);

} // namespace trevolt
