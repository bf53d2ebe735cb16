// The cleaning that every matrix of a text coefficient file goes through.
// May be used from any thread.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace trevolt {

/// A hair above 0: what lies below it is calibration noise.
inline constexpr float kSmallestCoefficient = 1e-5F; // 0x3727C5AC
/// A hair above 1: what lies above it is no longer a rounding error of the text.
inline constexpr float kLargestCoefficient = 1.00001F; // 0x3F800054

/// Cleans a row-major 3×3 matrix in float32 arithmetic: values below the smallest coefficient
/// become 0, values above the largest become 1, and the three values of each column whose sum is
/// above the largest are divided by that sum. NaN stays. Cleaning again changes nothing but a
/// value that the division took below the smallest coefficient. True when a value changed by more
/// than the sign of a zero.
inline bool SanitizeMatrix(std::span<float, 9> m) {
    std::uint32_t changedBits = 0;
    for (float& value : m) {
        const auto given = std::bit_cast<std::uint32_t>(value);
        value = value < kSmallestCoefficient ? 0.0F : value;
        value = value > kLargestCoefficient ? 1.0F : value;
        changedBits |= (std::bit_cast<std::uint32_t>(value) ^ given) << 1; // all but the sign
    }
    bool isChanged = changedBits != 0;
    for (std::size_t column = 0; column < 3; ++column) {
        const float sum = m[column] + m[3 + column] + m[6 + column];
        if (!(sum > kLargestCoefficient))
            continue;
        for (std::size_t k = column; k < m.size(); k += 3)
            m[k] /= sum;
        isChanged = true; // by more than a rounding, since it has a value that is not 0
    }
    return isChanged;
}

} // namespace trevolt
