#include "app/rotation/RectCover.h"

#include <algorithm>
#include <array>
#include <random>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

bool IsIn(const SPixelRect& rect, std::int32_t x, std::int32_t y) {
    return rect.left <= x && x < rect.right && rect.top <= y && y < rect.bottom;
}

/// The pixels of -4 to 16 that `test` holds for.
template <class Test>
std::uint64_t CountPixels(Test test) {
    std::uint64_t count = 0;
    for (std::int32_t y = -4; y < 16; ++y)
        for (std::int32_t x = -4; x < 16; ++x)
            count += test(x, y) ? 1U : 0U;
    return count;
}

TEST(RectCover, CountsEveryPixelOnce) {
    EXPECT_EQ(CoveredPixels({}), 0U);
    EXPECT_EQ(CoveredPixels({{0, 0, 3, 2}}), 6U);
    EXPECT_EQ(CoveredPixels({{0, 0, 3, 2}, {0, 0, 3, 2}}), 6U);
    EXPECT_EQ(CoveredPixels({{0, 0, 3, 2}, {3, 0, 5, 2}}), 10U);
    EXPECT_EQ(CoveredPixels({{0, 0, 3, 2}, {2, 1, 4, 3}}), 9U);
    EXPECT_EQ(CoveredPixels({{0, 0, 9, 9}, {2, 2, 3, 3}}), 81U);
    EXPECT_EQ(CoveredPixels({{5, 5, 5, 9}, {5, 5, 9, 5}, {3, 3, 2, 9}}), 0U);
    EXPECT_EQ(CoveredPixels({{0, 0, 65535, 65535}}), std::uint64_t{65535} * 65535);
}

TEST(RectCover, TellsWhatIsSeenOfEachWhereLaterOnesLieAbove) {
    using Counts = std::vector<std::uint64_t>;
    EXPECT_EQ(TopmostPixels({}), Counts{});
    EXPECT_EQ(TopmostPixels({{0, 0, 3, 2}, {2, 1, 4, 3}}), (Counts{5, 4}));
    EXPECT_EQ(TopmostPixels({{2, 1, 4, 3}, {0, 0, 3, 2}}), (Counts{3, 6}));
    EXPECT_EQ(TopmostPixels({{0, 0, 3, 2}, {0, 0, 3, 2}}), (Counts{0, 6}));
    EXPECT_EQ(TopmostPixels({{0, 0, 9, 9}, {2, 2, 2, 3}, {-5, -5, 1, 1}}), (Counts{80, 0, 36}));
}

TEST(RectCover, NamesBothAndWhatTheyShare) {
    EXPECT_TRUE(FindOverlaps({{0, 0, 3, 2}, {3, 0, 5, 2}, {0, 2, 3, 4}}).empty());
    const auto overlaps = FindOverlaps({{2, 1, 5, 4}, {0, 0, 3, 2}});
    ASSERT_EQ(overlaps.size(), 1U);
    EXPECT_EQ(overlaps[0].first, 0U);
    EXPECT_EQ(overlaps[0].second, 1U);
    EXPECT_EQ(overlaps[0].rect, (SPixelRect{2, 1, 3, 2}));
    EXPECT_TRUE(FindOverlaps({{0, 0, 9, 9}, {4, 4, 4, 6}}).empty());
    EXPECT_TRUE(FindOverlaps({{0, 0, 9, 9}, {4, 4, 6, 4}, {0, 0, 3, 0}}).empty());
}

TEST(RectCover, IsWhatCountingPixelByPixelGives) {
    std::mt19937 random(7);
    const auto number = [&](int from, int to) {
        return std::uniform_int_distribution<std::int32_t>(from, to)(random);
    };
    for (int round = 0; round < 200; ++round) {
        std::vector<SPixelRect> rects;
        for (int i = number(1, 6); i > 0; --i) {
            const std::int32_t left = number(-4, 10);
            const std::int32_t top = number(-4, 10);
            rects.push_back({left, top, left + number(0, 6), top + number(0, 6)});
        }
        EXPECT_EQ(CoveredPixels(rects), CountPixels([&](std::int32_t x, std::int32_t y) {
                      return std::any_of(rects.begin(), rects.end(),
                                         [&](const SPixelRect& rect) { return IsIn(rect, x, y); });
                  }));
        const std::vector<std::uint64_t> topmost = TopmostPixels(rects);
        for (std::size_t i = 0; i < rects.size(); ++i)
            EXPECT_EQ(topmost[i], CountPixels([&](std::int32_t x, std::int32_t y) {
                          const auto isAbove = [&](const SPixelRect& rect) {
                              return IsIn(rect, x, y);
                          };
                          return IsIn(rects[i], x, y) &&
                                 std::none_of(rects.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                              rects.end(), isAbove);
                      }));
        std::uint64_t pairs = 0;
        for (std::size_t i = 0; i < rects.size(); ++i)
            for (std::size_t j = i + 1; j < rects.size(); ++j)
                pairs += CountPixels([&](std::int32_t x, std::int32_t y) {
                    return IsIn(rects[i], x, y) && IsIn(rects[j], x, y);
                });
        std::uint64_t told = 0;
        for (const SRectOverlap& overlap : FindOverlaps(rects)) {
            EXPECT_LT(overlap.first, overlap.second);
            told += CountPixels([&](std::int32_t x, std::int32_t y) {
                EXPECT_TRUE(!IsIn(overlap.rect, x, y) || (IsIn(rects[overlap.first], x, y) &&
                                                          IsIn(rects[overlap.second], x, y)));
                return IsIn(overlap.rect, x, y);
            });
        }
        EXPECT_EQ(told, pairs);
    }
}

} // namespace
} // namespace trevolt
