// Every rule by which floats become words and bytes, and back. A value that has no integer (NaN, an
// infinity, out of range) converts to 0 on every system, where a rule says nothing else.
#pragma once

#include <cmath>
#include <cstdint>

namespace trevolt {

/// The word of 1.0.
inline constexpr std::uint16_t kFullScale = 0xFFFF;
inline constexpr float kFullScaleFloat = kFullScale;

/// `value` truncated towards zero as int64, 0 where there is no such integer.
inline std::int64_t TruncateToInt64(double value) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (!(value >= -kLimit && value < kLimit))
        return 0;
    return static_cast<std::int64_t>(value);
}

/// `value` truncated towards zero as int32, 0 where there is no such integer.
inline std::int32_t TruncateToInt32(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0))
        return 0;
    return static_cast<std::int32_t>(value);
}

/// roundf(value × scale) as int64: float32 product, half away from zero. Nothing is clamped.
inline std::int64_t RoundScaled(float value, float scale) {
    return TruncateToInt64(static_cast<double>(std::roundf(value * scale)));
}

/// The low 8 bits of roundf(value × 255): 1.002 wraps to 0.
inline std::uint8_t RoundToByte(float value) {
    return static_cast<std::uint8_t>(RoundScaled(value, 255.0F));
}

/// roundf(value × 65535), which words are cut from.
inline std::int64_t RoundToWide(float value) { return RoundScaled(value, kFullScaleFloat); }

/// The low 16 bits of roundf(value × 65535): 1.00001 wraps to 0.
inline std::uint16_t RoundToWord(float value) {
    return static_cast<std::uint16_t>(RoundToWide(value));
}

/// roundf(value × 65535) clamped to a word; the infinities clamp too, NaN becomes 0.
inline std::uint16_t RoundToClampedWord(float value) {
    const float scaled = std::roundf(value * kFullScaleFloat);
    if (!(scaled > 0.0F))
        return 0;
    return scaled < kFullScaleFloat ? static_cast<std::uint16_t>(scaled) : kFullScale;
}

/// The low 16 bits of (int)(value × 65535), in float32 arithmetic, truncated.
inline std::uint16_t CutToWord(float value) {
    return static_cast<std::uint16_t>(
        TruncateToInt32(static_cast<double>(value * kFullScaleFloat)));
}

/// The low 16 bits of (int)(value × 65535 + 0.5), in float32 arithmetic, truncated.
inline std::uint16_t TruncateToWord(float value) {
    return static_cast<std::uint16_t>(
        TruncateToInt32(static_cast<double>(value * kFullScaleFloat + 0.5F)));
}

/// word ÷ 65535 in float32.
inline float WordToFloat(std::uint16_t word) { return static_cast<float>(word) / kFullScaleFloat; }

/// byte ÷ 255 in float32.
inline float ByteToFloat(std::uint8_t byte) { return static_cast<float>(byte) / 255.0F; }

} // namespace trevolt
