// Coefficient maps for tests: painted, compared bit for bit, and set beside decoded sample pixels.
#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt::test {

/// A pixel whose twelve values are all different, and different from those of pixels near it.
inline SMatrixCoef PatternPixel(std::int32_t x, std::int32_t y) {
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < pixel.m.size(); ++k)
        pixel.m[k] = static_cast<float>(x % 1024) + static_cast<float>(y % 1024) / 1024.0F +
                     static_cast<float>(k) * 2048.0F;
    return pixel;
}

/// A pixel whose matrix is made of whole 255ths, which byte kinds hold without loss.
inline SMatrixCoef BytePixel(std::int32_t x, std::int32_t y) {
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 9; ++k)
        pixel.m[k] =
            static_cast<float>((x * 7 + y * 31 + static_cast<int>(k) * 57) & 0xFF) / 255.0F;
    return pixel;
}

template <class Paint>
void PaintMap(CChromaCorrectCoef& map, Paint paint) {
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            map.SetElement(x, y, paint(x, y));
}

inline std::string ShowPixel(const SMatrixCoef& pixel) {
    std::string text;
    for (const float value : pixel.m)
        text += std::to_string(value) + " ";
    return text;
}

/// Bit for bit, so that a NaN equals itself and −0 is not 0.
inline bool SamePixel(const SMatrixCoef& a, const SMatrixCoef& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Every pixel of `map` is `expected(x, y)`; only the first difference is reported.
template <class Expected>
void ExpectPixels(const CChromaCorrectCoef& map, Expected expected) {
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x) {
            const SMatrixCoef* pixel = map.FindElement(x, y);
            const SMatrixCoef wanted = expected(x, y);
            if (pixel != nullptr && SamePixel(*pixel, wanted))
                continue;
            FAIL() << "pixel " << x << ", " << y << "\n  is     "
                   << (pixel == nullptr ? "missing" : ShowPixel(*pixel)) << "\n  wanted "
                   << ShowPixel(wanted);
        }
}

/// Every gain of the map is 1.0, and there is one for every pixel.
inline void ExpectGainsOne(const CChromaCorrectCoef& map) {
    const CMassiveGrid& gains = map.GainGrid();
    ASSERT_EQ(gains.ElementCount(), std::uint64_t{map.Width()} * map.Height());
    for (std::uint32_t i = 0; i < gains.ElementCount(); ++i) {
        float gain = 0;
        std::memcpy(&gain, gains.Element(i), sizeof gain);
        ASSERT_EQ(gain, 1.0F) << "gain " << i;
    }
}

/// A pixel as decoded beside a sample.
struct SSamplePixel {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::array<float, 9> m{};
};

/// The pixels of a sample's `.csv`: behind a line of names x, y and the nine matrix values a line.
inline std::vector<SSamplePixel> ReadSamplePixels(const std::wstring& csvPath) {
    const std::string text = ReadText(csvPath);
    std::vector<SSamplePixel> pixels;
    for (std::size_t at = text.find('\n') + 1; at < text.size(); at = text.find('\n', at) + 1) {
        const char* cursor = &text[at];
        const auto take = [&](auto& value) {
            const auto [next, error] = std::from_chars(cursor, text.data() + text.size(), value);
            EXPECT_EQ(error, std::errc{}) << "line of pixel " << pixels.size();
            cursor = next + 1;
        };
        SSamplePixel pixel;
        take(pixel.x);
        take(pixel.y);
        for (float& value : pixel.m)
            take(value);
        pixels.push_back(pixel);
    }
    EXPECT_GT(pixels.size(), 20U);
    return pixels;
}

/// The map's pixels are those of a sample's `.csv`.
inline void ExpectSamplePixels(const CChromaCorrectCoef& map, std::wstring_view csvName) {
    for (const SSamplePixel& expected : ReadSamplePixels(Sample(csvName))) {
        SCOPED_TRACE(::testing::Message() << expected.x << ", " << expected.y);
        const SMatrixCoef* pixel = map.FindElement(expected.x, expected.y);
        ASSERT_NE(pixel, nullptr);
        for (std::size_t k = 0; k < 9; ++k)
            ASSERT_EQ(std::bit_cast<std::uint32_t>(pixel->m[k]),
                      std::bit_cast<std::uint32_t>(expected.m[k]))
                << "value " << k;
    }
}

} // namespace trevolt::test
