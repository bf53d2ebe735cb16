#include "app/inspection/AreaAverage.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

/// What a cell covers of one side: the source's pixels from `first` to `last`, of which the inner
/// ones count `cells` each. In parts of a pixel, so that nothing is rounded.
struct SCovered {
    std::size_t first;
    std::size_t last;
    double firstWeight;
    double lastWeight; ///< of no meaning where there is one pixel only
};

/// The part of a side of `pixels` that cell `cell` of `cells` covers.
SCovered CoveredBy(std::size_t cell, std::size_t pixels, std::size_t cells) {
    const std::size_t begin = cell * pixels;
    const std::size_t end = begin + pixels;
    const std::size_t first = begin / cells;
    const std::size_t last = (end - 1) / cells;
    const std::size_t firstEnd = std::min((first + 1) * cells, end);
    return {first, last, static_cast<double>(firstEnd - begin),
            static_cast<double>(end - last * cells)};
}

/// Makes cells of bands of rows, which threads share.
class CAreaAverager {
  public:
    CAreaAverager(const SValueRows& source, SValueCells& result)
        : m_source(source), m_result(result), m_rowWeight(static_cast<double>(result.width)) {
        for (std::size_t x = 0; x < result.width; ++x)
            m_columns.push_back(CoveredBy(x, source.width, result.width));
    }

    /// The memory that a band is made in.
    struct SScratch {
        std::vector<float> row;
        std::vector<double> line;
        std::vector<double> sums;
    };
    SScratch MakeScratch() const {
        const std::size_t values = m_result.width * m_result.channels;
        return {std::vector<float>(m_source.width * m_source.channels), std::vector<double>(values),
                std::vector<double>(values)};
    }

    /// Makes the rows of cells from `begin` to before `end`, and tells how many pixels of the source
    /// rows that begin in them are not finite.
    std::uint64_t MakeRows(std::size_t begin, std::size_t end, SScratch& scratch) const {
        std::uint64_t notFinite = 0;
        std::size_t inLine = m_source.height; // the source row that the line is made of: none yet
        for (std::size_t y = begin; y < end; ++y) {
            const SCovered rows = CoveredBy(y, m_source.height, m_result.height);
            std::fill(scratch.sums.begin(), scratch.sums.end(), 0.0);
            for (std::size_t row = rows.first; row <= rows.last; ++row) {
                if (row != inLine) {
                    m_source.read(row, scratch.row.data());
                    MakeLine(scratch);
                    inLine = row;
                    if (row * m_result.height >= y * m_source.height)
                        notFinite += CountNotFinite(scratch.row);
                }
                AddLine(scratch, WeightOf(row, rows));
            }
            PutRow(y, scratch.sums);
        }
        return notFinite;
    }

  private:
    double WeightOf(std::size_t row, const SCovered& rows) const {
        if (row == rows.first)
            return rows.firstWeight;
        return row == rows.last ? rows.lastWeight : static_cast<double>(m_result.height);
    }

    void MakeLine(SScratch& scratch) const {
        const std::size_t channels = m_source.channels;
        double* next = scratch.line.data();
        for (const SCovered& column : m_columns)
            for (std::size_t channel = 0; channel < channels; ++channel)
                *next++ = SumOf(&scratch.row[channel], column, channels);
    }

    double SumOf(const float* values, const SCovered& column, std::size_t step) const {
        double sum = column.firstWeight * static_cast<double>(values[column.first * step]);
        if (column.last == column.first)
            return sum;
        double inner = 0;
        for (std::size_t x = column.first + 1; x < column.last; ++x)
            inner += static_cast<double>(values[x * step]);
        sum += m_rowWeight * inner;
        return sum + column.lastWeight * static_cast<double>(values[column.last * step]);
    }

    static void AddLine(SScratch& scratch, double weight) {
        for (std::size_t i = 0; i < scratch.sums.size(); ++i)
            scratch.sums[i] += weight * scratch.line[i];
    }

    std::uint64_t CountNotFinite(const std::vector<float>& row) const {
        std::uint64_t count = 0;
        for (std::size_t at = 0; at < row.size(); at += m_source.channels) {
            bool isFinite = true;
            for (std::size_t channel = 0; channel < m_source.channels; ++channel)
                isFinite &= std::isfinite(row[at + channel]);
            count += isFinite ? 0 : 1;
        }
        return count;
    }

    void PutRow(std::size_t y, const std::vector<double>& sums) const {
        const double area =
            static_cast<double>(m_source.width) * static_cast<double>(m_source.height);
        float* const cells = &m_result.values[y * sums.size()];
        for (std::size_t i = 0; i < sums.size(); ++i)
            cells[i] = std::isfinite(sums[i]) ? static_cast<float>(sums[i] / area)
                                              : std::numeric_limits<float>::quiet_NaN();
    }

    const SValueRows& m_source;
    SValueCells& m_result;
    double m_rowWeight;
    std::vector<SCovered> m_columns;
};

} // namespace

SValueCells AverageByArea(const SValueRows& source, std::size_t width, std::size_t height,
                          std::size_t jobs) {
    SValueCells result{width, height, source.channels, {}, 0};
    result.values.resize(width * height * source.channels);
    const CAreaAverager averager(source, result);
    // A row of the source at a band's edge is read for both bands: they are few and large.
    const std::size_t bands = std::clamp<std::size_t>(jobs, 1, height);
    std::vector<CAreaAverager::SScratch> scratches;
    for (std::size_t i = 0; i < bands; ++i)
        scratches.push_back(averager.MakeScratch());
    std::atomic<std::uint64_t> notFinite{0};
    ShareOut(bands, jobs, [&](std::size_t band) {
        notFinite +=
            averager.MakeRows(band * height / bands, (band + 1) * height / bands, scratches[band]);
    });
    result.notFinite = notFinite;
    return result;
}

} // namespace trevolt
