#include "common/ElementTurn.h"

#include <array>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

template <std::size_t Bytes>
using BytesElement = std::array<std::uint8_t, Bytes>;

/// An element that tells its number in as many bytes as there are.
template <std::size_t Bytes>
BytesElement<Bytes> Numbered(std::uint32_t number) {
    BytesElement<Bytes> element{};
    for (std::size_t i = 0; i < Bytes; ++i)
        element[i] = static_cast<std::uint8_t>((number >> (8 * (i % 3))) + i / 3);
    return element;
}

/// Gathers `rect` of the turned picture and compares it pixel by pixel with the table of turns; what
/// lies beside the rectangle must stay.
template <std::size_t Bytes>
void ExpectGathered(std::int32_t width, std::int32_t height, std::uint32_t code,
                    const SPixelRect& rect) {
    using Element = BytesElement<Bytes>;
    std::vector<Element> picture;
    for (std::int32_t i = 0; i < width * height; ++i)
        picture.push_back(Numbered<Bytes>(static_cast<std::uint32_t>(i)));
    const auto stride = rect.Width() + 3;
    Element untouched;
    untouched.fill(0xA5);
    std::vector<Element> out(static_cast<std::size_t>(stride * rect.Height()), untouched);
    GatherTurned(
        code, width, height, rect,
        [&](std::int32_t x, std::int32_t y, std::int32_t) { return &picture[y * width + x]; },
        out.data(), stride);

    std::vector<Element> expected(out.size(), untouched);
    const CQuarterTurn turn(code, width, height);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const PixelPosition to = turn.Turned(x, y);
            if (to.x >= rect.left && to.x < rect.right && to.y >= rect.top && to.y < rect.bottom)
                expected[(to.y - rect.top) * stride + to.x - rect.left] = picture[y * width + x];
        }
    }
    EXPECT_EQ(out, expected) << width << " x " << height << " by " << code << ", "
                             << static_cast<int>(Bytes) << " bytes, from (" << rect.left << ", "
                             << rect.top << ")";
}

template <std::size_t Bytes>
void ExpectGatheredWhatever() {
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {1, 40}, {40, 1}, {15, 16}, {16, 17}, {33, 50}, {64, 48}}) {
            const PixelSize turned = CQuarterTurn(code, width, height).TurnedSize();
            const auto right = static_cast<std::int32_t>(turned.width);
            const auto bottom = static_cast<std::int32_t>(turned.height);
            ExpectGathered<Bytes>(width, height, code, {0, 0, right, bottom});
            ExpectGathered<Bytes>(width, height, code, {right / 2, bottom / 3, right, bottom});
            ExpectGathered<Bytes>(width, height, code, {0, bottom / 2, (right + 1) / 2, bottom});
        }
    }
}

TEST(ElementTurn, GathersEveryRectangleOfEveryTurn) {
    ExpectGatheredWhatever<2>();
    ExpectGatheredWhatever<3>();
    ExpectGatheredWhatever<9>();
    ExpectGatheredWhatever<12>();
    ExpectGatheredWhatever<36>();
    ExpectGatheredWhatever<48>();
}

TEST(ElementTurn, AsksForNoMoreThanATileAndNothingOutside) {
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        std::vector<std::uint16_t> row(20);
        std::iota(row.begin(), row.end(), std::uint16_t{0});
        std::vector<std::uint16_t> out(20 * 30);
        const PixelSize turned = CQuarterTurn(code, 20, 30).TurnedSize();
        GatherTurned(
            code, 20, 30,
            {0, 0, static_cast<std::int32_t>(turned.width),
             static_cast<std::int32_t>(turned.height)},
            [&](std::int32_t x, std::int32_t y, std::int32_t count) {
                EXPECT_LE(count, kTurnTile);
                EXPECT_GE(x, 0);
                EXPECT_LE(x + count, 20);
                EXPECT_TRUE(y >= 0 && y < 30);
                return &row[x];
            },
            out.data(), turned.width);
    }
}

TEST(ElementTurn, TurnsRectangles) {
    EXPECT_EQ(TurnedRect(CQuarterTurn(1, 10, 6), {1, 2, 4, 3}), (SPixelRect{3, 1, 4, 4}));
    EXPECT_EQ(TurnedRect(CQuarterTurn(2, 10, 6), {1, 2, 4, 3}), (SPixelRect{6, 3, 9, 4}));
    EXPECT_EQ(TurnedRect(CQuarterTurn(3, 10, 6), {1, 2, 4, 3}), (SPixelRect{2, 6, 3, 9}));
}

} // namespace
} // namespace trevolt
