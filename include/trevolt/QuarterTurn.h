// The one table of turns: what a code does to a rectangle's size and to its pixels. Codes are those
// of the angle box and of the turned writers: 1 is a quarter turn clockwise as seen on the screen,
// 2 a half turn, 3 a quarter turn counter-clockwise.
#pragma once

#include <cstdint>

namespace trevolt {

struct PixelPosition {
    std::int64_t x = 0;
    std::int64_t y = 0;
    friend bool operator==(const PixelPosition&, const PixelPosition&) = default;
};

struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// One code's row: the turned position of (x, y) in a w × h rectangle is
/// (baseX + stepX · (x, y), baseY + stepY · (x, y)).
class CQuarterTurn {
  public:
    static constexpr bool IsKnown(std::uint32_t code) { return code >= 1 && code <= 3; }

    /// The code that turns back what `code` turned; unknown for an unknown one.
    static constexpr std::uint32_t BackCode(std::uint32_t code) { return 4 - code; }

    /// Turn of a w × h rectangle by `code`. An unknown code turns it into 0 × 0.
    constexpr CQuarterTurn(std::uint32_t code, std::int64_t width, std::int64_t height) {
        switch (code) {
        case 1: // (h − 1 − y, x)
            m_size = {height, width};
            m_base = {height - 1, 0};
            m_stepX = {0, 1};
            m_stepY = {-1, 0};
            break;
        case 2: // (w − 1 − x, h − 1 − y)
            m_size = {width, height};
            m_base = {width - 1, height - 1};
            m_stepX = {-1, 0};
            m_stepY = {0, -1};
            break;
        case 3: // (y, w − 1 − x)
            m_size = {height, width};
            m_base = {0, width - 1};
            m_stepX = {0, -1};
            m_stepY = {1, 0};
            break;
        default:
            break;
        }
    }

    /// Width and height of the turned rectangle.
    constexpr PixelSize TurnedSize() const { return m_size; }

    /// Where source pixel (x, y) goes.
    constexpr PixelPosition Turned(std::int64_t x, std::int64_t y) const {
        return {m_base.x + m_stepX.x * x + m_stepY.x * y, m_base.y + m_stepX.y * x + m_stepY.y * y};
    }

    /// Whether the pixels of a row stay in one row.
    constexpr bool StaysInRow() const { return m_stepX.y == 0; }

    /// Whether the pixels of a column, from top to bottom, come to stand from right to left.
    constexpr bool IsLeftward() const { return m_stepY.x < 0; }

  private:
    PixelSize m_size;
    PixelPosition m_base;
    PixelPosition m_stepX; ///< how the target moves when x grows by one
    PixelPosition m_stepY; ///< how the target moves when y grows by one
};

} // namespace trevolt
