// CPicture: what is painted before it becomes a file. Eight bits a colour, row by row from the left
// top; what would be painted outside is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trevolt {

struct SColour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const SColour&, const SColour&) = default;
};

/// In pixels of a picture; its right and bottom edges are outside.
struct SPictureRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

class CPicture {
  public:
    /// A picture in one colour; both sides are at least 1. Throws std::bad_alloc.
    CPicture(int width, int height, SColour background);

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// Adds rows below in one colour. Throws std::bad_alloc.
    void Lengthen(int rows, SColour background);

    /// A pixel inside the picture.
    SColour At(int x, int y) const;

    void Set(int x, int y, SColour colour);

    /// Mixes `colour` over a pixel, `cover` 255ths of it.
    void Mix(int x, int y, SColour colour, int cover);

    void Fill(const SPictureRect& rect, SColour colour);

    /// The same, `cover` 255ths of it.
    void MixFill(const SPictureRect& rect, SColour colour, int cover);

    /// A line of one pixel along the inside of the rectangle's edges.
    void Frame(const SPictureRect& rect, SColour colour);

    /// Red, green and blue of all pixels, without gaps.
    std::span<const std::uint8_t> Bytes() const { return m_bytes; }

  private:
    bool IsInside(int x, int y) const { return x >= 0 && y >= 0 && x < m_width && y < m_height; }
    std::size_t IndexOf(int x, int y) const {
        return 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                    static_cast<std::size_t>(x));
    }
    /// The part of `rect` that lies in the picture.
    SPictureRect Clipped(const SPictureRect& rect) const;

    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace trevolt
