// A rectangle in pixels; right and bottom are exclusive.
#pragma once

#include <cstdint>

namespace trevolt {

struct SPixelRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    /// Differences in 64 bits, so that no rectangle overflows; below 1 when there are no columns or
    /// rows.
    constexpr std::int64_t Width() const { return std::int64_t{right} - left; }
    constexpr std::int64_t Height() const { return std::int64_t{bottom} - top; }

    friend bool operator==(const SPixelRect&, const SPixelRect&) = default;
};

} // namespace trevolt
