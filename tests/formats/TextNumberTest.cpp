#include "formats/TextNumber.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

std::string Fixed5(float value) {
    std::array<char, kFixed5Chars> text{};
    return {text.data(), WriteFixed5(text.data(), value)};
}

/// The exact decimal value, correctly rounded, for any finite float.
std::string ExactFixed5(float value) {
    std::array<char, kFixed5Chars> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(),
                                      static_cast<double>(value), std::chars_format::fixed, 5);
    return {text.data(), result.ptr};
}

TEST(TextNumber, WritesFiveDecimals) {
    EXPECT_EQ(Fixed5(0.0F), "0.00000");
    EXPECT_EQ(Fixed5(1.0F), "1.00000");
    EXPECT_EQ(Fixed5(0.8163F), "0.81630");
    EXPECT_EQ(Fixed5(-0.25F), "-0.25000");
    EXPECT_EQ(Fixed5(9.999994F), "9.99999");
    EXPECT_EQ(Fixed5(9.999996F), "10.00000");
    EXPECT_EQ(Fixed5(123.5F), "123.50000");
    EXPECT_EQ(Fixed5(9999.999F), "9999.99902");
    EXPECT_EQ(Fixed5(10000.0F), "10000.00000");
    EXPECT_EQ(Fixed5(16777216.0F), "16777216.00000");
}

TEST(TextNumber, KeepsTheSignOfWhatRoundsToZero) {
    EXPECT_EQ(Fixed5(-0.0F), "-0.00000");
    EXPECT_EQ(Fixed5(-1e-9F), "-0.00000");
    EXPECT_EQ(Fixed5(std::numeric_limits<float>::denorm_min()), "0.00000");
}

TEST(TextNumber, RoundsExactTiesToTheEvenDigit) {
    EXPECT_EQ(Fixed5(0.015625F), "0.01562"); // 1/64
    EXPECT_EQ(Fixed5(0.046875F), "0.04688"); // 3/64
    EXPECT_EQ(Fixed5(-0.015625F), "-0.01562");
    EXPECT_EQ(Fixed5(2.578125F), "2.57812");
    EXPECT_EQ(Fixed5(2.609375F), "2.60938");
}

TEST(TextNumber, RoundsByTheExactValueNotByTheShortestText) {
    EXPECT_EQ(Fixed5(0.000005F), "0.00000"); // the float lies below 5e-6
    EXPECT_EQ(Fixed5(0.000035F), "0.00004"); // and this one above 3.5e-5
}

TEST(TextNumber, WritesTheLargestFloatWhole) {
    EXPECT_EQ(Fixed5(-std::numeric_limits<float>::max()),
              "-340282346638528859811704183484516925440.00000");
    EXPECT_EQ(Fixed5(-std::numeric_limits<float>::max()).size(), kFixed5Chars);
}

TEST(TextNumber, WritesWhatIsNotFinite) {
    EXPECT_EQ(Fixed5(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(Fixed5(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(Fixed5(std::nanf("")), "nan");
    EXPECT_EQ(Fixed5(-std::nanf("")), "nan");
}

TEST(TextNumber, IsExactForEveryTieBelowTwo) {
    // An exact tie has 64 × value odd: 10^5 × value = (2k + 1) / 2 with 10^5 = 2^5 × 3125.
    for (int odd = 1; odd < 128; odd += 2) {
        const float value = static_cast<float>(odd) / 64.0F;
        ASSERT_EQ(Fixed5(value), ExactFixed5(value));
    }
}

TEST(TextNumber, IsExactForRandomBits) {
    std::mt19937 random(3);
    for (int round = 0; round < 1000000; ++round) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value)) {
            ASSERT_EQ(Fixed5(value), ExactFixed5(value)) << round;
        }
    }
}

TEST(TextNumber, IsExactForCoefficientsAndNearTheShortLimit) {
    std::mt19937 random(4);
    for (int round = 0; round < 1000000; ++round) {
        const float scale = round % 4 == 0 ? 10001.0F : 1.25F;
        const float value = static_cast<float>(random()) / 4294967296.0F * scale;
        ASSERT_EQ(Fixed5(value), ExactFixed5(value)) << round;
    }
}

#ifdef __GLIBC__
TEST(TextNumber, IsWhatTheLibraryPrints) {
    std::mt19937 random(5);
    std::array<char, 64> text{};
    for (int round = 0; round < 500000; ++round) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isnan(value))
            continue;
        std::snprintf(text.data(), text.size(), "%1.5f", static_cast<double>(value));
        ASSERT_EQ(Fixed5(value), text.data());
    }
}
#endif

TEST(TextNumber, AlignsIntegersInFiveCharacters) {
    const auto padded5 = [](std::uint32_t value) {
        std::array<char, 5> text{};
        return std::string(text.data(), WritePadded5(text.data(), value));
    };
    EXPECT_EQ(padded5(0), "    0");
    EXPECT_EQ(padded5(7), "    7");
    EXPECT_EQ(padded5(1234), " 1234");
    EXPECT_EQ(padded5(65534), "65534");
}

} // namespace
} // namespace trevolt
