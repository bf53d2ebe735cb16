#include "trevolt/QuarterTurn.h"

#include <gtest/gtest.h>

#include "trevolt/PixelRect.h"

namespace trevolt {
namespace {

TEST(QuarterTurn, TurnsClockwiseByCodeOne) {
    const CQuarterTurn turn(1, 2, 3);
    EXPECT_EQ(turn.TurnedSize(), (PixelSize{3, 2}));
    EXPECT_EQ(turn.Turned(0, 0), (PixelPosition{2, 0}));
    EXPECT_EQ(turn.Turned(1, 2), (PixelPosition{0, 1}));
}

TEST(QuarterTurn, TurnsByHalfWithCodeTwo) {
    const CQuarterTurn turn(2, 4, 3);
    EXPECT_EQ(turn.TurnedSize(), (PixelSize{4, 3}));
    EXPECT_EQ(turn.Turned(0, 0), (PixelPosition{3, 2}));
    EXPECT_EQ(turn.Turned(3, 2), (PixelPosition{0, 0}));
}

TEST(QuarterTurn, TurnsCounterClockwiseByCodeThree) {
    const CQuarterTurn turn(3, 2, 3);
    EXPECT_EQ(turn.TurnedSize(), (PixelSize{3, 2}));
    EXPECT_EQ(turn.Turned(0, 0), (PixelPosition{0, 1}));
    EXPECT_EQ(turn.Turned(1, 0), (PixelPosition{0, 0}));
}

TEST(QuarterTurn, FourQuartersAreNone) {
    constexpr std::int64_t kWidth = 7;
    constexpr std::int64_t kHeight = 4;
    for (const std::uint32_t code : {1U, 3U}) {
        PixelSize size{kWidth, kHeight};
        PixelPosition position{5, 1};
        for (int n = 0; n < 4; ++n) {
            const CQuarterTurn turn(code, size.width, size.height);
            position = turn.Turned(position.x, position.y);
            size = turn.TurnedSize();
        }
        EXPECT_EQ(size, (PixelSize{kWidth, kHeight}));
        EXPECT_EQ(position, (PixelPosition{5, 1}));
    }
}

TEST(QuarterTurn, TellsHowRowsAndColumnsLie) {
    struct {
        std::uint32_t code;
        bool staysInRow;
        bool isLeftward;
    } const expected[] = {{1, false, true}, {2, true, false}, {3, false, false}};
    for (const auto& [code, staysInRow, isLeftward] : expected) {
        const CQuarterTurn turn(code, 5, 6);
        EXPECT_EQ(turn.StaysInRow(), staysInRow) << code;
        EXPECT_EQ(turn.IsLeftward(), isLeftward) << code;
    }
}

TEST(QuarterTurn, KnowsThreeCodes) {
    EXPECT_FALSE(CQuarterTurn::IsKnown(0));
    EXPECT_TRUE(CQuarterTurn::IsKnown(1));
    EXPECT_TRUE(CQuarterTurn::IsKnown(3));
    EXPECT_FALSE(CQuarterTurn::IsKnown(4));
    EXPECT_FALSE(CQuarterTurn::IsKnown(0xFFFFFFFF));
    EXPECT_EQ(CQuarterTurn(0, 5, 6).TurnedSize(), (PixelSize{0, 0}));
}

TEST(PixelRect, MeasuresInSixtyFourBits) {
    const SPixelRect rect{INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN};
    EXPECT_EQ(rect.Width(), 4294967295);
    EXPECT_EQ(rect.Height(), -4294967295);
}

} // namespace
} // namespace trevolt
