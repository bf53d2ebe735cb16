// Floats to the integers that words and bytes are cut from. A value that has no such integer
// (NaN, an infinity, out of range) converts to 0 on every system.
#pragma once

#include <cmath>
#include <cstdint>

namespace trevolt {

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

/// The low 16 bits of roundf(value × 65535): 1.00001 wraps to 0.
inline std::uint16_t RoundToWord(float value) {
    return static_cast<std::uint16_t>(RoundScaled(value, 65535.0F));
}

/// The low 16 bits of (int)(value × 65535 + 0.5), in float32 arithmetic, truncated.
inline std::uint16_t TruncateToWord(float value) {
    return static_cast<std::uint16_t>(
        TruncateToInt32(static_cast<double>(value * 65535.0F + 0.5F)));
}

/// word ÷ 65535 in float32.
inline float WordToFloat(std::uint16_t word) { return static_cast<float>(word) / 65535.0F; }

/// byte ÷ 255 in float32.
inline float ByteToFloat(std::uint8_t byte) { return static_cast<float>(byte) / 255.0F; }

} // namespace trevolt
