// Cabinets and screens for tests: files of every kind with pixels that all of them hold.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "app/rotation/MapRegion.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/FileKinds.h"

namespace trevolt::test {

/// Whole 255ths, so low that no cleaning changes a column.
inline SMatrixCoef LowPixel(std::int32_t x, std::int32_t y, std::int32_t cabinet) {
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 9; ++k)
        pixel.m[k] =
            static_cast<float>((x * 7 + y * 31 + cabinet * 11 + static_cast<int>(k) * 5) % 64) /
            255.0F;
    return pixel;
}

/// As a kind of the extension gives it back: diagonal kinds hold no more than three values.
inline SMatrixCoef HeldPixel(const std::wstring& name, SMatrixCoef pixel) {
    for (const wchar_t* diagonal : {L".3fcoef", L".3bcoef", L".3wcoef", L".4wcoef"})
        if (name.ends_with(diagonal))
            for (const std::size_t k : {1U, 2U, 3U, 5U, 6U, 7U})
                pixel.m[k] = 0.0F;
    return pixel;
}

inline void WriteCabinet(const std::wstring& path, std::int32_t width, std::int32_t height,
                         std::int32_t cabinet) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    PaintMap(map, [&](std::int32_t x, std::int32_t y) { return LowPixel(x, y, cabinet); });
    ASSERT_GE(FindExportKind(path)->save(map, path.c_str()), 0);
}

/// Where pixel (x, y) of a turned cabinet comes from, which is w × h before its turn.
inline std::pair<std::int32_t, std::int32_t>
CabinetPixel(std::uint32_t code, std::int32_t w, std::int32_t h, std::int32_t x, std::int32_t y) {
    switch (code) {
    case 1:
        return {y, h - 1 - x};
    case 2:
        return {w - 1 - x, h - 1 - y};
    case 3:
        return {w - 1 - y, x};
    default:
        return {x, y};
    }
}

/// The matrix of every pixel of a file is `expected(x, y)`, as near as text and words come.
template <class Expected>
void ExpectFile(const std::wstring& path, std::int32_t width, std::int32_t height,
                Expected expected) {
    const SCoefLoad load = LoadCoefFile(path);
    EXPECT_TRUE(load.problems.empty());
    ASSERT_EQ(load.size, (PixelSize{width, height}));
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            for (std::size_t k = 0; k < 9; ++k)
                ASSERT_NEAR(load.map->FindElement(x, y)->m[k], expected(x, y).m[k], 1e-5)
                    << x << ", " << y << " value " << k;
}

inline const std::atomic<bool> kNotInterrupted{false};
inline const std::atomic<bool> kIsInterrupted{true};

} // namespace trevolt::test
