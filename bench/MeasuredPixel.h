// What a calibration run leaves in a pixel, made up: gains near 0.86 that drift slowly over the map,
// crosstalk near 0.02, and noise down to the last bit of each, so that LZ4 makes next to nothing of it
// but where the whole matrix is bytes. The same for every machine and run.
#pragma once

#include <cstdint>
#include <new>

#include "bench/WordContent.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

/// Noise in 0..1 that depends on the pixel, the value and the cabinet only.
inline float PixelNoise(std::uint32_t x, std::uint32_t y, std::uint32_t value,
                        std::uint32_t cabinet) {
    std::uint32_t hash = (y * 65536U + x) * 16U + value + cabinet * 2654435769U;
    hash = (hash ^ (hash >> 16)) * 2146121005U;
    hash = (hash ^ (hash >> 15)) * 2221713035U;
    return static_cast<float>(hash >> 8) / 16777216.0F;
}

inline SMatrixCoef MeasuredPixel(std::uint32_t x, std::uint32_t y, std::uint32_t cabinet) {
    const auto drift = static_cast<float>(GainDrift(x, y));
    SMatrixCoef pixel;
    for (std::uint32_t k = 0; k < pixel.m.size(); ++k) {
        const float noise = PixelNoise(x, y, k, cabinet);
        const bool isGain = k == 0 || k == 4 || k == 8 || k == 10;
        pixel.m[k] = isGain ? drift + 0.05F * (noise - 0.5F) : 0.02F + 0.01F * (noise - 0.5F);
    }
    return pixel;
}

/// A map of measured pixels. Throws std::bad_alloc when its memory is refused.
inline CChromaCorrectCoef MeasuredMap(std::int32_t width, std::int32_t height,
                                      std::uint32_t cabinet) {
    CChromaCorrectCoef map;
    map.ResizeForOverwrite(width, height);
    if (!map.HasStorage())
        throw std::bad_alloc();
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            map.SetElement(x, y,
                           MeasuredPixel(static_cast<std::uint32_t>(x),
                                         static_cast<std::uint32_t>(y), cabinet));
    return map;
}

} // namespace trevolt
