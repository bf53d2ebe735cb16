// How the values of a file's pixels are spread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "app/inspection/CoefPixels.h"
#include "app/rotation/ElementForms.h"
#include "common/PixelSink.h"

namespace trevolt {

/// One of a map element's twelve values, over all pixels.
struct SValueStatistics {
    /// Of the values that are numbers, infinities among them; NaN when none is.
    float least = 0;
    float greatest = 0;
    double mean = 0;
    std::uint64_t outside = 0; ///< pixels with a number below 0 or above 1
    std::uint64_t nan = 0;     ///< pixels without a number
};

struct SCoefStatistics {
    std::uint64_t pixels = 0;
    std::uint64_t defaults =
        0; ///< pixels whose wanted values all equal those of the default element
    MapValues wanted;
    std::array<SValueStatistics, std::tuple_size_v<decltype(SMatrixCoef::m)>> values;
};

/// `values` are the wanted ones: what is told of others means nothing. The work is shared among
/// `threads` threads at most, and the result does not depend on their number. Throws std::bad_alloc.
SCoefStatistics StatisticsOf(const CCoefPixels& pixels, const MapValues& values,
                             std::size_t threads);

/// Tells the same of pixels that come run by run.
class CStatisticsSink : public CPixelSink {
  public:
    /// What `StatisticsOf` tells of the picture, to the last bit, once all its pixels are taken.
    virtual SCoefStatistics Statistics() const = 0;
};

/// For the wanted `values`. Throws std::bad_alloc.
std::unique_ptr<CStatisticsSink> MakeStatisticsSink(const MapValues& values);

} // namespace trevolt
