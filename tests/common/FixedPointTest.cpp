#include "trevolt/FixedPoint.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/support/ExtremeNumbers.h"

namespace trevolt {
namespace {

using test::kInfinity;
using test::kNaN;

TEST(FixedPoint, RoundsToBytesHalfAwayFromZeroAndWraps) {
    EXPECT_EQ(RoundToByte(0.0F), 0);
    EXPECT_EQ(RoundToByte(1.0F), 255);
    EXPECT_EQ(RoundToByte(0.998F), 254);
    EXPECT_EQ(RoundToByte(1.002F), 0);
    EXPECT_EQ(RoundToByte(0.5F), 128);
    EXPECT_EQ(RoundToByte(-0.5F), 128); // the low bits of −128
    EXPECT_EQ(RoundToByte(-1.0F), 1);   // of −255
    EXPECT_EQ(RoundToByte(2.0F), 254);  // of 510
}

TEST(FixedPoint, RoundsToIntegersPastAWord) {
    EXPECT_EQ(RoundToWide(1.0F), 65535);
    EXPECT_EQ(RoundToWide(1.5F), 98303); // 98302.5
    EXPECT_EQ(RoundToWide(-0.5F), -32768);
    EXPECT_EQ(RoundToWide(1e9F), static_cast<std::int64_t>(1e9F * 65535.0F));
    EXPECT_EQ(RoundToWide(kNaN), 0);
    EXPECT_EQ(RoundToWide(kInfinity), 0);
}

TEST(FixedPoint, RoundsAndClampsToWords) {
    EXPECT_EQ(RoundToClampedWord(0.5F), 32768); // 32767.5
    EXPECT_EQ(RoundToClampedWord(65534.0F / 65535.0F), 65534);
    EXPECT_EQ(RoundToClampedWord(1.0F), 65535);
    EXPECT_EQ(RoundToClampedWord(1.5F), 65535);
    EXPECT_EQ(RoundToClampedWord(-1.0F), 0);
    EXPECT_EQ(RoundToClampedWord(kInfinity), 65535);
    EXPECT_EQ(RoundToClampedWord(-kInfinity), 0);
    EXPECT_EQ(RoundToClampedWord(kNaN), 0);
}

TEST(FixedPoint, CutsToWordsAndWraps) {
    EXPECT_EQ(CutToWord(1.0F), 65535);
    EXPECT_EQ(CutToWord(0.5F), 32767);  // 32767.5
    EXPECT_EQ(CutToWord(-0.5F), 32769); // −32767.5 is cut to −32767
    EXPECT_EQ(CutToWord(1.5F), 32766);  // 98302.5
    EXPECT_EQ(CutToWord(40000.0F), 0);  // beyond an int32
    EXPECT_EQ(CutToWord(kNaN), 0);
}

TEST(FixedPoint, RoundsToWordsAndWraps) {
    EXPECT_EQ(RoundToWord(1.0F), 65535);
    EXPECT_EQ(RoundToWord(0.0F), 0);
    EXPECT_EQ(RoundToWord(0.5F), 32768); // 32767.5
    EXPECT_EQ(RoundToWord(1.00001F), 0); // 65535.66
    EXPECT_EQ(RoundToWord(2.0F), 65534);
    EXPECT_EQ(RoundToWord(-1.0F), 1);
}

TEST(FixedPoint, TruncatesToWordsTowardsZero) {
    EXPECT_EQ(TruncateToWord(1.0F), 65535);
    EXPECT_EQ(TruncateToWord(0.5F), 32768);         // 32768.0
    EXPECT_EQ(TruncateToWord(-0.5F), 32769);        // −32767.0
    EXPECT_EQ(TruncateToWord(-1.0F / 65535.0F), 0); // −0.5 is cut to 0, not rounded to −1
    EXPECT_EQ(TruncateToWord(-2.0F / 65535.0F), 65535);
    EXPECT_EQ(TruncateToWord(40000.0F), 0); // beyond an int32
}

TEST(FixedPoint, WhatHasNoIntegerIsZero) {
    for (const float value : {kNaN, kInfinity, -kInfinity, 1e30F, -1e30F}) {
        EXPECT_EQ(RoundToByte(value), 0);
        EXPECT_EQ(RoundToWord(value), 0);
        EXPECT_EQ(TruncateToWord(value), 0);
    }
}

TEST(FixedPoint, ConvertsUpToTheEdgesOfTheIntegers) {
    constexpr double kTwo63 = 9223372036854775808.0;
    EXPECT_EQ(TruncateToInt64(kTwo63), 0);
    EXPECT_EQ(TruncateToInt64(std::nextafter(kTwo63, 0.0)), 9223372036854774784);
    EXPECT_EQ(TruncateToInt64(-kTwo63), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(TruncateToInt64(std::nextafter(-kTwo63, -kTwo63 * 2)), 0);
    EXPECT_EQ(TruncateToInt64(-1.9), -1);
    EXPECT_EQ(TruncateToInt32(2147483647.9), 2147483647);
    EXPECT_EQ(TruncateToInt32(2147483648.0), 0);
    EXPECT_EQ(TruncateToInt32(-2147483648.9), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(TruncateToInt32(-2147483649.0), 0);
}

TEST(FixedPoint, EveryWordAndByteSurvivesTheWayThroughFloat) {
    for (unsigned word = 0; word <= 0xFFFF; ++word) {
        const float value = WordToFloat(static_cast<std::uint16_t>(word));
        ASSERT_EQ(RoundToWord(value), word);
    }
    for (unsigned byte = 0; byte <= 0xFF; ++byte)
        ASSERT_EQ(RoundToByte(ByteToFloat(static_cast<std::uint8_t>(byte))), byte);
    EXPECT_EQ(WordToFloat(65535), 1.0F);
    EXPECT_EQ(ByteToFloat(51), 0.2F);
}

} // namespace
} // namespace trevolt
