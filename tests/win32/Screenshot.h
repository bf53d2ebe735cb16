// Pictures of what the screen shows, and their pixels.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <windows.h>

namespace trevolt::test {

/// A picture: pixels 0xRRGGBB, top row first.
class CPixels {
  public:
    /// What `draw` leaves on a bitmap of that size, which is black before.
    CPixels(const SIZE& size, const std::function<void(HDC)>& draw);

    /// A part of the screen.
    static CPixels OfScreen(const RECT& area);
    /// A part of the screen once several looks at it were the same.
    static CPixels OfSteadyScreen(const RECT& area);

    LONG Width() const { return m_width; }
    LONG Height() const { return m_height; }
    std::uint32_t At(LONG x, LONG y) const;
    CPixels Part(const RECT& area) const;

    /// How many pixels differ from `other`'s; all when its size is another.
    std::size_t Differing(const CPixels& other) const;
    bool operator==(const CPixels& other) const = default;

    /// Writes a PNG file. False when that fails.
    bool Save(const std::wstring& path) const;

  private:
    CPixels() = default;
    BITMAPINFO Info() const;

    LONG m_width = 0;
    LONG m_height = 0;
    std::vector<std::uint32_t> m_pixels;
};

/// The whole screen.
RECT ScreenArea();

/// The window's place on the screen, grown to hold `other` too when that is not null.
RECT WindowArea(HWND window, HWND other = nullptr);

} // namespace trevolt::test
