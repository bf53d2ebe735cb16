#include "trevolt/GammaTables.h"

#include <cmath>

namespace trevolt {
namespace {

GammaToLinearTable ComputeGammaToLinear() {
    GammaToLinearTable table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<float>(
            std::pow(static_cast<double>(i) / 255.0, static_cast<double>(kDefaultGamma)));
    return table;
}

LinearToGammaTable ComputeLinearToGamma() {
    const double exponent = static_cast<double>(1.0F / kDefaultGamma);
    LinearToGammaTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double level = std::pow(static_cast<double>(i) * (1.0 / 65536.0), exponent) * 255.0;
        const float raised = static_cast<float>(level) + 0.5F; // no level is negative
        table[i] = static_cast<std::uint32_t>(raised);
    }
    return table;
}

} // namespace

const GammaToLinearTable& DefaultGammaToLinear() {
    static const GammaToLinearTable table = ComputeGammaToLinear();
    return table;
}

const LinearToGammaTable& DefaultLinearToGamma() {
    static const LinearToGammaTable table = ComputeLinearToGamma();
    return table;
}

} // namespace trevolt
