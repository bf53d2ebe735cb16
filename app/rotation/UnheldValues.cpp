#include "app/rotation/UnheldValues.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include <fmt/format.h>

#include "formats/SanitizeMatrix.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::size_t kMatrixCount = 9;

/// Of the map's values, by their places.
constexpr std::array<std::uint8_t, 9> kWholeMatrix{0, 1, 2, 3, 4, 5, 6, 7, 8};
constexpr std::array<std::uint8_t, 3> kDiagonal{0, 4, 8};
constexpr std::array<std::uint8_t, 4> kDiagonalAndGreen{0, 4, 8, 10};
constexpr std::array<std::uint8_t, 12> kAllValues{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

struct SHeldValues {
    std::wstring_view extension;
    std::span<const std::uint8_t> places;
    float one = 0;       ///< the stored number of 1.0, 0 where floats are stored
    bool isText = false; ///< whose matrices are cleaned when they are read
};

constexpr std::array kHeldValues{
    SHeldValues{L".9fcoef", kWholeMatrix},
    SHeldValues{L".3fcoef", kDiagonal},
    SHeldValues{L".9bcoef", kWholeMatrix, 255.0F},
    SHeldValues{L".3bcoef", kDiagonal, 255.0F},
    SHeldValues{L".cccoef", kWholeMatrix, 0, true},
    SHeldValues{L".9wcoef", kWholeMatrix, kFullScaleFloat},
    SHeldValues{L".3wcoef", kDiagonal, kFullScaleFloat},
    SHeldValues{L".4wcoef", kDiagonalAndGreen, kFullScaleFloat},
    SHeldValues{L".12wcoef", kAllValues, kFullScaleFloat},
};

class CUnheldCount {
  public:
    explicit CUnheldCount(const SHeldValues& held) : m_held(held) {
        for (const std::uint8_t place : kAllValues)
            if (std::find(held.places.begin(), held.places.end(), place) == held.places.end())
                m_lacking.push_back(place);
    }

    void Add(const SMatrixCoef& pixel) {
        bool isOffDiagonal = false;
        bool isBeside = false;
        for (const std::uint8_t place : m_lacking)
            (place < kMatrixCount ? isOffDiagonal : isBeside) |=
                pixel.m[place] != m_default.m[place];
        m_offDiagonal += isOffDiagonal ? 1U : 0U;
        m_beside += isBeside ? 1U : 0U;
        if (m_held.one != 0)
            for (const std::uint8_t place : m_held.places)
                m_outside += IsStorable(pixel.m[place]) ? 0U : 1U;
        if (m_held.isText)
            m_cleaned += IsClean(pixel) ? 0U : 1U;
    }

    std::vector<std::string> Describe() const {
        std::vector<std::string> told;
        const std::string kind = WideToShownUtf8(std::wstring(m_held.extension));
        const auto tell = [&](std::uint64_t count, const char* one, const char* several) {
            if (count != 0)
                told.push_back(fmt::format(fmt::runtime(count == 1 ? one : several), count, kind));
        };
        tell(m_offDiagonal, "{} pixel has entries off the diagonal, which {} does not hold",
             "{} pixels have entries off the diagonal, which {} does not hold");
        tell(m_beside, "{} pixel has values beside the matrix, which {} does not hold",
             "{} pixels have values beside the matrix, which {} does not hold");
        tell(m_outside, "{} value is not from 0 to 1, and another one stands for it in {}",
             "{} values are not from 0 to 1, and others stand for them in {}");
        tell(m_cleaned, "{} pixel is changed by the cleaning when {} is read",
             "{} pixels are changed by the cleaning when {} is read");
        return told;
    }

  private:
    /// Whether it rounds to a number that is stored; halves are rounded away from 0.
    bool IsStorable(float value) const {
        const float scaled = value * m_held.one;
        return scaled > -0.5F && scaled < m_held.one + 0.5F;
    }

    static bool IsClean(const SMatrixCoef& pixel) {
        std::array<float, kMatrixCount> matrix{};
        std::copy_n(pixel.m.begin(), kMatrixCount, matrix.begin());
        return !SanitizeMatrix(matrix);
    }

    const SHeldValues& m_held;
    const SMatrixCoef m_default;
    std::vector<std::uint8_t> m_lacking; ///< places that the kind does not hold
    std::uint64_t m_offDiagonal = 0;     ///< pixels
    std::uint64_t m_beside = 0;          ///< pixels
    std::uint64_t m_outside = 0;         ///< values
    std::uint64_t m_cleaned = 0;         ///< pixels
};

} // namespace

std::vector<std::string> DescribeUnheld(const CChromaCorrectCoef& map, const SPixelRect& rect,
                                        const SFileKind& kind) {
    const auto* const held =
        std::find_if(kHeldValues.begin(), kHeldValues.end(),
                     [&](const SHeldValues& known) { return known.extension == kind.extension; });
    CUnheldCount count(*held);
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
        for (std::int32_t x = rect.left; x < rect.right; ++x)
            count.Add(map.ElementOrDefault(x, y));
    return count.Describe();
}

} // namespace trevolt
