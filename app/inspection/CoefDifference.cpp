#include "app/inspection/CoefDifference.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "app/rotation/SamePixel.h"
#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kPiecePixels = 1U << 16; ///< of one piece of work, and a row more

/// The differences of some rows; in `mean` stands the sum.
class CPieceDifference {
  public:
    CPieceDifference(const MapValues& compared, double tolerance)
        : m_compared(compared), m_tolerance(tolerance) {}

    void Add(const SMatrixCoef& a, const SMatrixCoef& b, std::int64_t x, std::int64_t y) {
        if (HasSameBits(a, b))
            return;
        bool isDifferent = false;
        for (std::size_t k = 0; k < a.m.size(); ++k)
            if (m_compared.test(k))
                isDifferent |= AddValue(m_found.values[k], DistanceOf(a.m[k], b.m[k]), {x, y});
        m_found.differing += isDifferent ? 1 : 0;
    }

    const SCoefDifference& Found() const { return m_found; }

  private:
    /// Whether it is a difference.
    bool AddValue(SValueDifference& value, double distance, const PixelPosition& at) const {
        if (std::isnan(distance)) {
            ++value.oneNan;
            ++value.differing;
            return true;
        }
        value.mean += distance;
        if (distance > value.most) {
            value.most = distance;
            value.mostAt = at;
        }
        value.differing += distance > m_tolerance ? 1 : 0;
        return distance > m_tolerance;
    }

    MapValues m_compared;
    double m_tolerance;
    SCoefDifference m_found;
};

/// Adds the pieces up in their order, so that the result does not depend on who made them.
void AddPiece(const SCoefDifference& piece, SCoefDifference& total) {
    total.differing += piece.differing;
    for (std::size_t k = 0; k < total.values.size(); ++k) {
        SValueDifference& sum = total.values[k];
        const SValueDifference& value = piece.values[k];
        sum.differing += value.differing;
        sum.oneNan += value.oneNan;
        sum.mean += value.mean;
        if (value.most > sum.most) {
            sum.most = value.most;
            sum.mostAt = value.mostAt;
        }
    }
}

} // namespace

double DistanceOf(float a, float b) {
    if (a == b || (std::isnan(a) && std::isnan(b)))
        return 0;
    return std::abs(static_cast<double>(a) - static_cast<double>(b));
}

double DistanceOf(const SMatrixCoef& a, const SMatrixCoef& b, const MapValues& compared) {
    double most = 0;
    for (std::size_t k = 0; k < a.m.size(); ++k) {
        if (!compared.test(k))
            continue;
        const double distance = DistanceOf(a.m[k], b.m[k]);
        if (std::isnan(distance))
            return distance;
        most = std::max(most, distance);
    }
    return most;
}

SCoefDifference CompareMaps(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b,
                            const MapValues& compared, double tolerance, std::size_t threads) {
    SCoefDifference total;
    total.compared = compared;
    total.pixels = std::uint64_t{a.Width()} * a.Height();
    if (total.pixels == 0)
        return total;
    const auto rows = static_cast<std::uint32_t>((kPiecePixels + a.Width() - 1) / a.Width());
    std::vector<SCoefDifference> pieces((a.Height() + rows - 1) / rows);
    ShareOut(pieces.size(), threads, [&](std::size_t index) {
        CPieceDifference piece(compared, tolerance);
        const auto top = static_cast<std::uint32_t>(index) * rows;
        for (std::uint32_t y = top; y < std::min<std::uint32_t>(a.Height(), top + rows); ++y)
            for (std::uint32_t x = 0; x < a.Width(); ++x)
                piece.Add(a.ElementOrDefault(x, y), b.ElementOrDefault(x, y), x, y);
        pieces[index] = piece.Found();
    });
    for (const SCoefDifference& piece : pieces)
        AddPiece(piece, total);
    for (SValueDifference& value : total.values)
        if (value.oneNan < total.pixels)
            value.mean /= static_cast<double>(total.pixels - value.oneNan);
    return total;
}

} // namespace trevolt
