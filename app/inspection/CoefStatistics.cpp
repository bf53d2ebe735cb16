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
constexpr std::uint32_t kRunPixels = 256;       ///< what is looked at in one go: it fits the cache
constexpr std::uint64_t kBandPixels = 1U << 16; ///< of one piece of work, and a row more

// Four values at a time: an element is three such vectors.
constexpr std::size_t kLanes = 4;
constexpr std::size_t kVectors = kValues / kLanes;
using Floats [[gnu::vector_size(kLanes * sizeof(float))]] = float;
using Ints [[gnu::vector_size(kLanes * sizeof(std::int32_t))]] = std::int32_t;
using Doubles [[gnu::vector_size(kLanes * sizeof(double))]] = double;

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

    void Add(const SMatrixCoef* elements, std::uint32_t count) {
        if (!AddNumbers(elements, count))
            AddAny(elements, count);
    }

  private:
    /// What is known of a run of numbers.
    struct SRun {
        std::array<Floats, kVectors> least;
        std::array<Floats, kVectors> greatest;
        std::array<Doubles, kVectors> sum{};
        std::array<Ints, kVectors> outside{};
    };

    /// Adds pixels whose values are all numbers, as most are; false, and nothing is added, where a
    /// sum shows that some may be none.
    bool AddNumbers(const SMatrixCoef* elements, std::uint32_t count) {
        SRun run;
        std::memcpy(&run.least, elements->m.data(), sizeof run.least);
        run.greatest = run.least;
        for (std::uint32_t i = 0; i < count; ++i)
            for (std::size_t v = 0; v < kVectors; ++v) {
                Floats value;
                std::memcpy(&value, elements[i].m.data() + v * kLanes, sizeof value);
                run.least[v] = value < run.least[v] ? value : run.least[v];
                run.greatest[v] = value > run.greatest[v] ? value : run.greatest[v];
                run.sum[v] += __builtin_convertvector(value, Doubles);
                run.outside[v] -= (value < 0.0F) | (value > 1.0F); // a true lane is -1
            }
        for (std::size_t k = 0; k < kValues; ++k)
            if (std::isnan(run.sum[k / kLanes][k % kLanes]))
                return false;
        Take(run);
        return true;
    }

    void Take(const SRun& run) {
        for (std::size_t k = 0; k < kValues; ++k) {
            const std::size_t vector = k / kLanes;
            const std::size_t lane = k % kLanes;
            least[k] = std::min<float>(least[k], run.least[vector][lane]);
            greatest[k] = std::max<float>(greatest[k], run.greatest[vector][lane]);
            sum[k] += run.sum[vector][lane];
            outside[k] += static_cast<std::uint32_t>(run.outside[vector][lane]);
        }
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
        outside[k] += value < 0.0F || value > 1.0F ? 1U : 0U;
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

    std::uint32_t Count(const SMatrixCoef* elements, std::uint32_t count) const {
        return static_cast<std::uint32_t>(
            std::count_if(elements, elements + count, [this](const SMatrixCoef& element) {
                return std::all_of(m_wanted.begin(),
                                   m_wanted.begin() + static_cast<std::ptrdiff_t>(m_count),
                                   [&](std::size_t k) { return element.m[k] == kDefault.m[k]; });
            }));
    }

  private:
    static constexpr SMatrixCoef kDefault{};
    std::array<std::size_t, kValues> m_wanted{};
    std::size_t m_count = 0;
};

/// Adds the bands up in their order, so that the sums do not depend on who made them.
SCoefStatistics Total(const std::vector<SBand>& bands, const MapValues& wanted,
                      std::uint64_t pixels) {
    SCoefStatistics total;
    total.pixels = pixels;
    total.wanted = wanted;
    SBand all;
    for (const SBand& band : bands) {
        total.defaults += band.defaults;
        for (std::size_t k = 0; k < kValues; ++k) {
            all.least[k] = std::min(all.least[k], band.least[k]);
            all.greatest[k] = std::max(all.greatest[k], band.greatest[k]);
            all.sum[k] += band.sum[k];
            total.values[k].outside += band.outside[k];
            total.values[k].nan += band.nan[k];
        }
    }
    for (std::size_t k = 0; k < kValues; ++k) {
        SValueStatistics& value = total.values[k];
        const std::uint64_t numbers = pixels - value.nan;
        constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
        value.least = numbers == 0 ? kNone : all.least[k];
        value.greatest = numbers == 0 ? kNone : all.greatest[k];
        // Infinities of both signs have no sum, and the sign of that is the processor's.
        value.mean = numbers == 0 || std::isnan(all.sum[k])
                         ? std::numeric_limits<double>::quiet_NaN()
                         : all.sum[k] / static_cast<double>(numbers);
    }
    return total;
}

} // namespace

SCoefStatistics StatisticsOf(const CCoefPixels& pixels, const MapValues& values,
                             std::size_t threads) {
    const auto width = static_cast<std::uint32_t>(pixels.Size().width);
    const auto height = static_cast<std::uint32_t>(pixels.Size().height);
    const std::uint64_t count = std::uint64_t{width} * height;
    if (count == 0)
        return Total({}, values, 0);
    const auto bandRows = static_cast<std::uint32_t>((kBandPixels + width - 1) / width);
    std::vector<SBand> bands((height + bandRows - 1) / bandRows);
    const CDefaultTest defaults(values);
    ShareOut(bands.size(), threads, [&](std::size_t index) {
        std::array<SMatrixCoef, kRunPixels> scratch;
        SBand band; // of its own: those that stand side by side would share cache lines
        const auto top = static_cast<std::uint32_t>(index) * bandRows;
        for (std::uint32_t y = top; y < std::min(height, top + bandRows); ++y)
            for (std::uint32_t x = 0; x < width; x += kRunPixels) {
                const std::uint32_t inRun = std::min(kRunPixels, width - x);
                const SMatrixCoef* const run = pixels.Run(x, y, inRun, scratch.data());
                band.Add(run, inRun);
                band.defaults += defaults.Count(run, inRun);
            }
        bands[index] = band;
    });
    return Total(bands, values, count);
}

} // namespace trevolt
