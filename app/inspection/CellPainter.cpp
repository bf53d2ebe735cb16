#include "app/inspection/CellPainter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

constexpr double kLargestScale = 64;
constexpr std::size_t kMostBands = 64; // that threads share

// What is further from the middle value than so many times what all but one in `kOneFar` keep to is not
// usual. Of fewer values some may be far, but none that is below twice the middle one.
constexpr float kFarTimes = 10;
constexpr std::size_t kOneFar = 100;
constexpr std::size_t kMostFarOfFew = 4;
constexpr float kSameShare = 1e-6F; ///< of the middle value: what differs by less is rounded

int CellsOf(std::int64_t pixels, double scale) {
    if (scale >= 1)
        return static_cast<int>(pixels);
    return std::max(static_cast<int>(std::lround(static_cast<double>(pixels) * scale)), 1);
}

int CellSide(int cells, double scale, int thinnest) {
    const int side = scale < 1 ? 1 : static_cast<int>(scale);
    return std::max(side, (thinnest + cells - 1) / cells);
}

} // namespace

double PlotScale(const PixelSize& size, const PixelSize& room) {
    const double fitting =
        std::min(static_cast<double>(room.width) / static_cast<double>(size.width),
                 static_cast<double>(room.height) / static_cast<double>(size.height));
    return fitting < 1 ? fitting : std::min(std::floor(fitting), kLargestScale);
}

SPlotShape PlotShape(const PixelSize& size, double scale, int thinnest) {
    SPlotShape shape{CellsOf(size.width, scale), CellsOf(size.height, scale)};
    shape.cellWidth = CellSide(shape.cellsWide, scale, thinnest);
    shape.cellHeight = CellSide(shape.cellsHigh, scale, thinnest);
    return shape;
}

SValueCells TurnedCells(const SValueCells& cells, std::uint32_t code) {
    const CQuarterTurn turn(code, static_cast<std::int64_t>(cells.width),
                            static_cast<std::int64_t>(cells.height));
    SValueCells turned{static_cast<std::size_t>(turn.TurnedSize().width),
                       static_cast<std::size_t>(turn.TurnedSize().height), cells.channels,
                       std::vector<float>(cells.values.size()), cells.notFinite};
    for (std::size_t y = 0; y < cells.height; ++y)
        for (std::size_t x = 0; x < cells.width; ++x) {
            const PixelPosition to =
                turn.Turned(static_cast<std::int64_t>(x), static_cast<std::int64_t>(y));
            const std::size_t cell =
                static_cast<std::size_t>(to.y) * turned.width + static_cast<std::size_t>(to.x);
            std::copy_n(cells.Cell(x, y), cells.channels, &turned.values[cell * cells.channels]);
        }
    return turned;
}

std::optional<SValueRange> RangeOf(const SValueCells& cells) {
    std::optional<SValueRange> range;
    for (const float value : cells.values) {
        if (!std::isfinite(value))
            continue;
        const auto found = static_cast<double>(value);
        if (!range)
            range = {found, found};
        range->low = std::min(range->low, found);
        range->high = std::max(range->high, found);
    }
    return range;
}

std::optional<SValueRange> JoinedRange(const std::optional<SValueRange>& a,
                                       const std::optional<SValueRange>& b) {
    if (!a || !b)
        return a ? a : b;
    return SValueRange{std::min(a->low, b->low), std::max(a->high, b->high)};
}

namespace {

/// A number that grows as the value does.
std::uint32_t OrderOf(float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    constexpr std::uint32_t kSign = 0x80000000U;
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/// The value that as many as `number` others are not above. Counts what is alike in its upper half
/// first: of a million values few are left to be put in order.
float ValueAt(const std::vector<float>& values, std::size_t number) {
    constexpr unsigned kLowerBits = 16;
    std::vector<std::uint32_t> counts(std::size_t{1} << kLowerBits);
    for (const float value : values)
        ++counts[OrderOf(value) >> kLowerBits];
    std::uint32_t upper = 0;
    for (; number >= counts[upper]; ++upper)
        number -= counts[upper];
    std::vector<float> alike;
    alike.reserve(counts[upper]);
    std::copy_if(values.begin(), values.end(), std::back_inserter(alike),
                 [upper](float value) { return OrderOf(value) >> kLowerBits == upper; });
    const auto place = alike.begin() + static_cast<std::ptrdiff_t>(number);
    std::nth_element(alike.begin(), place, alike.end());
    return *place;
}

/// How far from their middle one usual values are at most.
float UsualDistance(const std::vector<float>& values, float middle) {
    std::vector<float> distances;
    distances.reserve(values.size());
    for (const float value : values)
        distances.push_back(std::abs(value - middle));
    const std::size_t count = distances.size();
    const std::size_t far = std::max(count / kOneFar, std::min((count + 1) / 4, kMostFarOfFew));
    const float kept = ValueAt(distances, count - std::min(far + 1, count));
    const float height = std::abs(middle);
    if (kept > kSameShare * height)
        return std::max(kFarTimes * kept, count < kOneFar * kMostFarOfFew ? height : 0);
    // Nearly all are the same: that one, or the others by themselves, tell what is far.
    if (middle != 0)
        return height;
    std::erase(distances, 0.0F);
    return distances.empty() ? 0 : kFarTimes * ValueAt(distances, distances.size() / 2);
}

} // namespace

std::optional<SValueRange> UsualRange(std::span<const float> values) {
    std::vector<float> finite;
    finite.reserve(values.size());
    std::copy_if(values.begin(), values.end(), std::back_inserter(finite),
                 [](float value) { return std::isfinite(value); });
    if (finite.empty())
        return std::nullopt;
    const float middle = ValueAt(finite, finite.size() / 2);
    const float most = UsualDistance(finite, middle);
    float low = middle;
    float high = middle;
    for (const float value : finite) {
        if (std::abs(value - middle) > most)
            continue;
        low = std::min(low, value);
        high = std::max(high, value);
    }
    return SValueRange{static_cast<double>(low), static_cast<double>(high)};
}

SValueRange ScaleRange(const SScaleEnds& ends, std::span<const float> values) {
    if (ends.given)
        return *ends.given;
    const auto usual = UsualRange(values);
    if (!usual)
        return {0, 1};
    if (ends.fromZero)
        return {0, usual->high > 0 ? usual->high : 1};
    const double most = std::max(std::abs(usual->low), std::abs(usual->high));
    if (ends.scale == EColourScale::Diverging && most > 0)
        return {-most, most};
    if (usual->low < usual->high)
        return *usual;
    const double aside = most > 0 ? most / 2 : 0.5;
    return {usual->low - aside, usual->low + aside};
}

void CCellPainter::Paint(CPicture& picture, int left, int top, const SValueCells& cells,
                         const SPlotShape& shape) {
    const int bands = std::clamp(static_cast<int>(std::min<std::size_t>(m_jobs, kMostBands)), 1,
                                 std::max(shape.cellsHigh, 1));
    std::vector<SBeyond> beyond(static_cast<std::size_t>(bands));
    ShareOut(beyond.size(), m_jobs, [&](std::size_t band) {
        const auto number = static_cast<int>(band);
        beyond[band] =
            PaintRows(shape.cellsHigh * number / bands, shape.cellsHigh * (number + 1) / bands,
                      picture, left, top, cells, shape);
    });
    for (const SBeyond& part : beyond) {
        m_beyond.below += part.below;
        m_beyond.above += part.above;
    }
    m_cells +=
        static_cast<std::uint64_t>(shape.cellsWide) * static_cast<std::uint64_t>(shape.cellsHigh);
    m_isLight = cells.channels == 3;
}

CCellPainter::SBeyond CCellPainter::PaintRows(int begin, int end, CPicture& picture, int left,
                                              int top, const SValueCells& cells,
                                              const SPlotShape& shape) const {
    SBeyond beyond;
    for (int y = begin; y < end; ++y)
        for (int x = 0; x < shape.cellsWide; ++x) {
            const float* const cell =
                cells.Cell(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
            picture.Fill({left + x * shape.cellWidth, top + y * shape.cellHeight, shape.cellWidth,
                          shape.cellHeight},
                         ColourOf(cell, cells.channels, beyond));
        }
    return beyond;
}

SPaintedValues CCellPainter::Painted(const std::optional<SValueRange>& found,
                                     std::uint64_t notFinite) const {
    return {found, m_range, m_cells, m_beyond.below, m_beyond.above, notFinite, m_isLight};
}

SColour CCellPainter::LightColour(double place) {
    const std::uint8_t value = ScreenValue(place);
    return {value, value, value};
}

double CCellPainter::Place(float value) const {
    return (static_cast<double>(value) - m_range.low) / (m_range.high - m_range.low);
}

SColour CCellPainter::ColourOf(const float* cell, std::size_t channels, SBeyond& beyond) const {
    if (!std::all_of(cell, cell + channels, [](float value) { return std::isfinite(value); }))
        return kNoNumberColour;
    const auto [least, most] = std::minmax_element(cell, cell + channels);
    const bool isBelow = static_cast<double>(*least) < m_range.low;
    const bool isAbove = static_cast<double>(*most) > m_range.high;
    beyond.below += isBelow ? 1 : 0;
    beyond.above += isAbove ? 1 : 0;
    if (channels == 1 && (isBelow || isAbove))
        return isBelow ? kBelowColour : kAboveColour;
    if (channels == 1)
        return m_scale.At(Place(cell[0]));
    return {ScreenValue(Place(cell[0])), ScreenValue(Place(cell[1])), ScreenValue(Place(cell[2]))};
}

} // namespace trevolt
