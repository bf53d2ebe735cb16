#include "common/ElementTurn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

template <std::size_t Bytes>
using BytesElement = std::array<std::uint8_t, Bytes>;

/// An element that tells its number in as many bytes as there are.
template <class Element>
Element Numbered(std::uint32_t number) {
    std::array<std::uint8_t, sizeof(Element)> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>((number >> (8 * (i % 3))) + i / 3);
    return std::bit_cast<Element>(bytes);
}

template <class Element>
Element FilledWith(std::uint8_t byte) {
    std::array<std::uint8_t, sizeof(Element)> bytes{};
    bytes.fill(byte);
    return std::bit_cast<Element>(bytes);
}

constexpr std::int32_t kLongestSide = 140;

/// Numbered elements, enough for the pictures of the tests.
template <class Element>
const std::vector<Element>& Elements() {
    static const std::vector<Element> elements = [] {
        std::vector<Element> made;
        for (std::uint32_t i = 0; i < kLongestSide * 70; ++i)
            made.push_back(Numbered<Element>(i));
        return made;
    }();
    return elements;
}

/// A picture whose rows are as fleeting as they may be: what is asked for stands in memory that ends
/// with it, and is gone when the next is asked for.
template <class Element>
class CFleetingRows {
  public:
    CFleetingRows(std::int32_t width, std::int32_t height) : m_width(width), m_height(height) {}

    const Element* operator()(std::int32_t x, std::int32_t y, std::int32_t count) const {
        EXPECT_TRUE(x >= 0 && count >= 1 && count <= kTurnTile && x + count <= m_width)
            << x << ", " << count << " of " << m_width;
        EXPECT_TRUE(y >= 0 && y < m_height) << y << " of " << m_height;
        std::fill(m_given.begin(), m_given.end(), FilledWith<Element>(0xEE));
        const auto first = Elements<Element>().begin() + std::int64_t{y} * m_width + x;
        m_given = std::vector<Element>(first, first + count);
        return m_given.data();
    }

  private:
    std::int32_t m_width;
    std::int32_t m_height;
    mutable std::vector<Element> m_given;
};

/// Gathers `rect` of the turned picture and compares it pixel by pixel with the table of turns; what
/// lies before, beside and behind the rectangle must stay.
template <class Element>
void ExpectGathered(std::int32_t width, std::int32_t height, std::uint32_t code,
                    const SPixelRect& rect) {
    const std::int64_t stride = rect.Width() + 3;
    const std::int64_t before = 2;
    const std::vector<Element> untouched(static_cast<std::size_t>(before + stride * rect.Height()),
                                         FilledWith<Element>(0xA5));
    std::vector<Element> out = untouched;
    GatherTurned(code, width, height, rect, CFleetingRows<Element>(width, height),
                 out.data() + before, stride);

    std::vector<Element> expected = untouched;
    const PixelSize turned = CQuarterTurn(code, width, height).TurnedSize();
    const CQuarterTurn back(CQuarterTurn::BackCode(code), turned.width, turned.height);
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        for (std::int32_t x = rect.left; x < rect.right; ++x) {
            const PixelPosition from = back.Turned(x, y);
            expected[static_cast<std::size_t>(before + (y - rect.top) * stride + x - rect.left)] =
                Elements<Element>()[static_cast<std::size_t>(from.y * width + from.x)];
        }
    }
    EXPECT_TRUE(out == expected) << width << " x " << height << " by " << code << ", "
                                 << sizeof(Element) << " bytes, (" << rect.left << ", " << rect.top
                                 << ") to (" << rect.right << ", " << rect.bottom << ")";
}

template <class Element>
class ElementTurn : public testing::Test {};

using ElementTypes =
    testing::Types<std::uint16_t, BytesElement<1>, BytesElement<2>, BytesElement<3>,
                   BytesElement<6>, BytesElement<9>, BytesElement<12>, BytesElement<16>,
                   BytesElement<18>, BytesElement<36>, BytesElement<48>>;
TYPED_TEST_SUITE(ElementTurn, ElementTypes);

/// The whole picture, and rectangles that begin and end inside.
template <class Element>
void ExpectTurned(std::int32_t width, std::int32_t height) {
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        const PixelSize turned = CQuarterTurn(code, width, height).TurnedSize();
        const auto right = static_cast<std::int32_t>(turned.width);
        const auto bottom = static_cast<std::int32_t>(turned.height);
        ExpectGathered<Element>(width, height, code, {0, 0, right, bottom});
        ExpectGathered<Element>(width, height, code, {right / 2, bottom / 3, right, bottom});
        ExpectGathered<Element>(width, height, code, {0, bottom / 2, (right + 1) / 2, bottom});
    }
}

TYPED_TEST(ElementTurn, GathersPicturesOfEverySize) {
    for (std::int32_t side = 1; side <= 40; ++side) {
        ExpectTurned<TypeParam>(side, 1);
        ExpectTurned<TypeParam>(1, side);
        ExpectTurned<TypeParam>(side, 13);
        ExpectTurned<TypeParam>(13, side);
        ExpectTurned<TypeParam>(side, 41 - side);
    }
    for (const std::int32_t side : {48, 63, 64, 65, 72, 127, 128, 129, kLongestSide}) {
        ExpectTurned<TypeParam>(side, 9);
        ExpectTurned<TypeParam>(9, side);
    }
    ExpectTurned<TypeParam>(64, 64);
    ExpectTurned<TypeParam>(kLongestSide, 70);
    ExpectTurned<TypeParam>(70, kLongestSide);
}

TYPED_TEST(ElementTurn, GathersEveryRectangle) {
    constexpr std::int32_t kWidth = 9;
    constexpr std::int32_t kHeight = 7;
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        const PixelSize turned = CQuarterTurn(code, kWidth, kHeight).TurnedSize();
        for (std::int32_t left = 0; left < turned.width; ++left)
            for (std::int32_t right = left + 1; right <= turned.width; ++right)
                for (std::int32_t top = 0; top < turned.height; top += 2)
                    for (std::int32_t bottom = top + 1; bottom <= turned.height; ++bottom)
                        ExpectGathered<TypeParam>(kWidth, kHeight, code,
                                                  {left, top, right, bottom});
    }
}

TYPED_TEST(ElementTurn, MovesElementsAtAnyAddress) {
    const std::vector<TypeParam>& elements = Elements<TypeParam>();
    constexpr std::int32_t kSide = 35;
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        for (std::size_t shift = 0; shift < 4; ++shift) {
            std::vector<TypeParam> out(kSide * kSide + shift);
            GatherTurned(
                code, kSide, kSide, {0, 0, kSide, kSide},
                [&](std::int32_t x, std::int32_t y, std::int32_t) {
                    return &elements[shift + static_cast<std::size_t>(y * kSide + x)];
                },
                out.data() + shift, kSide);
            const CQuarterTurn turn(code, kSide, kSide);
            for (std::int32_t i = 0; i < kSide * kSide; ++i) {
                const PixelPosition to = turn.Turned(i % kSide, i / kSide);
                ASSERT_EQ(out[shift + static_cast<std::size_t>(to.y * kSide + to.x)],
                          elements[shift + static_cast<std::size_t>(i)]);
            }
        }
    }
}

TEST(TurnedRect, IsWhereTheRectangleLies) {
    EXPECT_EQ(TurnedRect(CQuarterTurn(1, 10, 6), {1, 2, 4, 3}), (SPixelRect{3, 1, 4, 4}));
    EXPECT_EQ(TurnedRect(CQuarterTurn(2, 10, 6), {1, 2, 4, 3}), (SPixelRect{6, 3, 9, 4}));
    EXPECT_EQ(TurnedRect(CQuarterTurn(3, 10, 6), {1, 2, 4, 3}), (SPixelRect{2, 6, 3, 9}));
}

} // namespace
} // namespace trevolt
