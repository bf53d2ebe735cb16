#include "app/inspection/CoefStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

constexpr std::size_t kValues = std::tuple_size_v<decltype(SMatrixCoef::m)>;
constexpr std::uint64_t kBandPixels = 1U << 16; ///< of one piece of work, and a row more

// Vectors of 16 bytes: four values of an element at a time, or the sums of two.
constexpr std::size_t kLanes = 4;
constexpr std::size_t kVectors = kValues / kLanes;
using Floats [[gnu::vector_size(kLanes * sizeof(float))]] = float;
using Doubles [[gnu::vector_size(2 * sizeof(double))]] = double;
using FourDoubles [[gnu::vector_size(kLanes * sizeof(double))]] = double;

/// What is known of a run of pixels that are all numbers, value by value.
struct SRun {
    std::array<float, kValues> least;
    std::array<float, kValues> greatest;
    std::array<double, kValues> sum; ///< a NaN where some may be none

    SRun(const SMatrixCoef* elements, std::uint32_t count) {
        FindBounds(elements, count);
        FindSum(elements, count);
    }

    bool HasNumbersOnly() const {
        return std::none_of(sum.begin(), sum.end(), [](double value) { return std::isnan(value); });
    }

  private:
    // Each by itself: what both have in work is more than every processor has registers for.
    void FindBounds(const SMatrixCoef* elements, std::uint32_t count) {
        std::array<Floats, kVectors> low;
        std::memcpy(&low, elements->m.data(), sizeof low);
        std::array<Floats, kVectors> high = low;
        for (std::uint32_t i = 1; i < count; ++i)
            for (std::size_t v = 0; v < kVectors; ++v) {
                const Floats value = VectorOf(elements[i], v);
                low[v] = value < low[v] ? value : low[v];
                high[v] = value > high[v] ? value : high[v];
            }
        std::memcpy(&least, &low, sizeof least);
        std::memcpy(&greatest, &high, sizeof greatest);
    }

    void FindSum(const SMatrixCoef* elements, std::uint32_t count) {
        std::array<Doubles, 2 * kVectors> added{};
        for (std::uint32_t i = 0; i < count; ++i)
            for (std::size_t v = 0; v < kVectors; ++v) {
                const auto value = __builtin_convertvector(VectorOf(elements[i], v), FourDoubles);
                added[2 * v] += __builtin_shufflevector(value, value, 0, 1);
                added[2 * v + 1] += __builtin_shufflevector(value, value, 2, 3);
            }
        std::memcpy(&sum, &added, sizeof sum);
    }

    static Floats VectorOf(const SMatrixCoef& element, std::size_t v) {
        Floats vector;
        std::memcpy(&vector, element.m.data() + v * kLanes, sizeof vector);
        return vector;
    }
};

/// Tells default pixels by the wanted values.
class CDefaultTest {
  public:
    explicit CDefaultTest(const MapValues& wanted) {
        for (std::size_t k = 0; k < kValues; ++k)
            if (wanted.test(k))
                m_wanted[m_count++] = k;
    }

    /// Whether there may be one among the pixels of a run.
    bool MayBeIn(const SRun& run) const {
        return AreAll([&](std::size_t k) {
            return run.least[k] <= kDefault.m[k] && kDefault.m[k] <= run.greatest[k];
        });
    }

    std::uint32_t Count(const SMatrixCoef* elements, std::uint32_t count) const {
        return static_cast<std::uint32_t>(
            std::count_if(elements, elements + count, [this](const SMatrixCoef& element) {
                return AreAll([&](std::size_t k) { return element.m[k] == kDefault.m[k]; });
            }));
    }

  private:
    template <class Test>
    bool AreAll(const Test& test) const {
        return std::all_of(m_wanted.begin(),
                           m_wanted.begin() + static_cast<std::ptrdiff_t>(m_count), test);
    }

    static constexpr SMatrixCoef kDefault{};
    std::array<std::size_t, kValues> m_wanted{};
    std::size_t m_count = 0;
};

bool IsOutside(float value) { return value < 0.0F || value > 1.0F; }

/// What is known of a band's pixels, value by value.
struct SBand {
    std::array<float, kValues> least;
    std::array<float, kValues> greatest;
    std::array<double, kValues> sum{};
    std::array<std::uint32_t, kValues> outside{};
    std::array<std::uint32_t, kValues> nan{};
    std::uint32_t defaults = 0;

    SBand() {
        least.fill(std::numeric_limits<float>::infinity());
        greatest.fill(-std::numeric_limits<float>::infinity());
    }

    /// Adds a run of pixels. Most have numbers only, none of them outside, and no default pixel.
    void Add(const SMatrixCoef* elements, std::uint32_t count, const CDefaultTest& test) {
        const SRun run(elements, count);
        const bool hasNumbersOnly = run.HasNumbersOnly();
        if (hasNumbersOnly)
            AddNumbers(run, elements, count);
        else
            AddAny(elements, count);
        if (!hasNumbersOnly || test.MayBeIn(run))
            defaults += test.Count(elements, count);
    }

  private:
    void AddNumbers(const SRun& run, const SMatrixCoef* elements, std::uint32_t count) {
        for (std::size_t k = 0; k < kValues; ++k) {
            least[k] = std::min(least[k], run.least[k]);
            greatest[k] = std::max(greatest[k], run.greatest[k]);
            sum[k] += run.sum[k];
            if (IsOutside(run.least[k]) || IsOutside(run.greatest[k]))
                outside[k] += CountOutside(k, elements, count);
        }
    }

    static std::uint32_t CountOutside(std::size_t k, const SMatrixCoef* elements,
                                      std::uint32_t count) {
        std::uint32_t outside = 0;
        for (std::uint32_t i = 0; i < count; ++i)
            outside += IsOutside(elements[i].m[k]) ? 1 : 0;
        return outside;
    }

    void AddAny(const SMatrixCoef* elements, std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i)
            for (std::size_t k = 0; k < kValues; ++k)
                AddOne(k, elements[i].m[k]);
    }

    void AddOne(std::size_t k, float value) {
        if (std::isnan(value)) {
            ++nan[k];
            return;
        }
        least[k] = std::min(least[k], value);
        greatest[k] = std::max(greatest[k], value);
        sum[k] += static_cast<double>(value);
        outside[k] += IsOutside(value) ? 1U : 0U;
    }
};

/// All bands, which are added in their order, so that the sums do not depend on who made them.
class CTotal {
  public:
    void Add(const SBand& band) {
        m_defaults += band.defaults;
        for (std::size_t k = 0; k < kValues; ++k) {
            m_least[k] = std::min(m_least[k], band.least[k]);
            m_greatest[k] = std::max(m_greatest[k], band.greatest[k]);
            m_sum[k] += band.sum[k];
            m_outside[k] += band.outside[k];
            m_nan[k] += band.nan[k];
        }
    }

    SCoefStatistics Statistics(const MapValues& wanted, std::uint64_t pixels) const {
        SCoefStatistics statistics{pixels, m_defaults, wanted, {}};
        for (std::size_t k = 0; k < kValues; ++k)
            statistics.values[k] = Value(k, pixels - m_nan[k]);
        return statistics;
    }

  private:
    SValueStatistics Value(std::size_t k, std::uint64_t numbers) const {
        constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
        if (numbers == 0)
            return {kNone, kNone, kNone, m_outside[k], m_nan[k]};
        // Infinities of both signs have no sum, and the sign of that is the processor's.
        const double mean = std::isnan(m_sum[k]) ? std::numeric_limits<double>::quiet_NaN()
                                                 : m_sum[k] / static_cast<double>(numbers);
        return {m_least[k], m_greatest[k], mean, m_outside[k], m_nan[k]};
    }

    std::array<float, kValues> m_least = SBand().least;
    std::array<float, kValues> m_greatest = SBand().greatest;
    std::array<double, kValues> m_sum{};
    std::array<std::uint64_t, kValues> m_outside{};
    std::array<std::uint64_t, kValues> m_nan{};
    std::uint64_t m_defaults = 0;
};

/// Rows of a band; the last one may have fewer.
std::uint32_t BandRows(std::uint32_t width) {
    return static_cast<std::uint32_t>((kBandPixels + width - 1) / width);
}

class CRunStatistics final : public CStatisticsSink {
  public:
    explicit CRunStatistics(const MapValues& wanted) : m_wanted(wanted), m_defaults(wanted) {}

    void TakeSize(const PixelSize& size) noexcept override {
        const auto width = static_cast<std::uint32_t>(size.width);
        m_pixels = width * static_cast<std::uint64_t>(size.height);
        m_bandPixels = width == 0 ? 0 : width * BandRows(width);
    }

    void TakeRun(const SMatrixCoef* pixels, std::uint32_t count) noexcept override {
        m_band.Add(pixels, count, m_defaults);
        m_inBand += count;
        if (m_inBand < m_bandPixels)
            return;
        m_total.Add(m_band);
        m_band = {};
        m_inBand = 0;
    }

    SCoefStatistics Statistics() const override {
        CTotal total = m_total;
        total.Add(m_band); // the last one, which may have fewer rows, or none
        return total.Statistics(m_wanted, m_pixels);
    }

  private:
    const MapValues m_wanted;
    const CDefaultTest m_defaults;
    std::uint64_t m_pixels = 0;     ///< of the picture
    std::uint32_t m_bandPixels = 0; ///< of a band that is not the last
    std::uint32_t m_inBand = 0;     ///< pixels so far
    SBand m_band;
    CTotal m_total;
};

} // namespace

SCoefStatistics StatisticsOf(const CCoefPixels& pixels, const MapValues& values,
                             std::size_t threads) {
    const auto width = static_cast<std::uint32_t>(pixels.Size().width);
    const auto height = static_cast<std::uint32_t>(pixels.Size().height);
    const std::uint64_t count = std::uint64_t{width} * height;
    CTotal total;
    if (count == 0)
        return total.Statistics(values, 0);
    const std::uint32_t bandRows = BandRows(width);
    std::vector<SBand> bands((height + bandRows - 1) / bandRows);
    const CDefaultTest defaults(values);
    ShareOut(bands.size(), threads, [&](std::size_t index) {
        std::array<SMatrixCoef, kPixelRun> scratch;
        SBand band; // of its own: those that stand side by side would share cache lines
        const auto top = static_cast<std::uint32_t>(index) * bandRows;
        for (std::uint32_t y = top; y < std::min(height, top + bandRows); ++y)
            for (std::uint32_t x = 0; x < width; x += kPixelRun) {
                const std::uint32_t inRun = std::min(kPixelRun, width - x);
                band.Add(pixels.Run(x, y, inRun, scratch.data()), inRun, defaults);
            }
        bands[index] = band;
    });
    for (const SBand& band : bands)
        total.Add(band);
    return total.Statistics(values, count);
}

std::unique_ptr<CStatisticsSink> MakeStatisticsSink(const MapValues& values) {
    return std::make_unique<CRunStatistics>(values);
}

} // namespace trevolt
