#include "app/inspection/MapThumbnail.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <fmt/format.h>

#include "app/inspection/AreaAverage.h"
#include "app/inspection/CellPainter.h"
#include "app/inspection/MapPicture.h"
#include "app/inspection/Picture.h"
#include "app/inspection/PngFile.h"
#include "app/inspection/ScaleTicks.h"

namespace trevolt {
namespace {

constexpr double kPageBytes = 32.0 * 1024 * 1024;
/// In base64, of a picture of three bytes a pixel that nothing packs.
constexpr double kPixelBytes = 4;
constexpr int kSmallestSide = 16;
constexpr int kLargestSide = 128;
constexpr int kThinnestShown = 4;
constexpr int kRangeDigits = 3;

std::string FromTo(const SValueRange& range) {
    const auto [low, high] = ShownEnds(range, kRangeDigits);
    return fmt::format("{} to {}", low, high);
}

std::string RangeText(const SPaintedValues& painted) {
    const auto& found = painted.found;
    if (!found)
        return "without any number";
    if (found->low == found->high)
        return fmt::format("{} everywhere", ShownNumber(found->low, kRangeDigits));
    std::string all = FromTo(*found);
    if (painted.below + painted.above == 0)
        return all;
    return fmt::format("{}, a few from {}", FromTo(painted.range), all);
}

} // namespace

int ThumbnailSide(std::size_t files) {
    const double pixels = kPageBytes / (2 * kPixelBytes * static_cast<double>(files));
    const double side = std::floor(std::sqrt(pixels));
    return side < kSmallestSide ? 0 : static_cast<int>(std::min<double>(side, kLargestSide));
}

SThumbnail MapThumbnail(const CChromaCorrectCoef& map, int side) {
    if (map.IsEmpty() || !map.HasStorage())
        return {};
    const PixelSize size{map.Width(), map.Height()};
    const SPlotShape shape = PlotShape(size, PlotScale(size, {side, side}), kThinnestShown);
    const SValueCells cells =
        AverageByArea(MapRows(map, {}), static_cast<std::size_t>(shape.cellsWide),
                      static_cast<std::size_t>(shape.cellsHigh), 1);
    const auto found = RangeOf(cells);
    CPicture picture(shape.cellsWide, shape.cellsHigh, kNoNumberColour);
    CCellPainter painter(EColourScale::FalseColour, ScaleRange({}, cells.values));
    painter.Paint(picture, 0, 0, cells, {shape.cellsWide, shape.cellsHigh, 1, 1});
    const std::vector<std::uint8_t> png = PngBytes(picture);
    const int times = kLargestSide / std::max(shape.Width(), shape.Height());
    return {std::string(png.begin(), png.end()), static_cast<std::uint32_t>(times * shape.Width()),
            static_cast<std::uint32_t>(times * shape.Height()),
            RangeText(painter.Painted(found, cells.notFinite))};
}

} // namespace trevolt
