#include "tests/win32/Screenshot.h"

#include <algorithm>
#include <stdexcept>

#include <objidl.h>
// After the interfaces that it uses.
#include <gdiplus.h>

namespace trevolt::test {
namespace {

constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

/// The library that encodes pictures, while it is needed.
class CPictureLibrary {
  public:
    CPictureLibrary() {
        const Gdiplus::GdiplusStartupInput input;
        m_isReady = Gdiplus::GdiplusStartup(&m_token, &input, nullptr) == Gdiplus::Ok;
    }
    ~CPictureLibrary() {
        if (m_isReady)
            Gdiplus::GdiplusShutdown(m_token);
    }
    CPictureLibrary(const CPictureLibrary&) = delete;
    CPictureLibrary& operator=(const CPictureLibrary&) = delete;

  private:
    ULONG_PTR m_token = 0;
    bool m_isReady = false;
};

} // namespace

CPixels::CPixels(const SIZE& size, const std::function<void(HDC)>& draw)
    : m_width(size.cx), m_height(size.cy) {
    m_pixels.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
    BITMAPINFO info = Info();
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, m_width, m_height);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    draw(memory);
    SelectObject(memory, former);
    GetDIBits(screen, bitmap, 0, static_cast<UINT>(m_height), m_pixels.data(), &info,
              DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    for (std::uint32_t& pixel : m_pixels)
        pixel &= 0xFFFFFFU;
}

CPixels CPixels::OfScreen(const RECT& area) {
    const HDC screen = GetDC(nullptr);
    CPixels pixels({area.right - area.left, area.bottom - area.top}, [&](HDC context) {
        BitBlt(context, 0, 0, area.right - area.left, area.bottom - area.top, screen, area.left,
               area.top, SRCCOPY);
    });
    ReleaseDC(nullptr, screen);
    return pixels;
}

CPixels CPixels::OfSteadyScreen(const RECT& area) {
    constexpr int kLooks = 200;
    constexpr int kSameLooks = 4;
    constexpr DWORD kBetweenLooks = 25;
    CPixels pixels = OfScreen(area);
    for (int look = 1, same = 1; look < kLooks && same < kSameLooks; ++look) {
        Sleep(kBetweenLooks);
        CPixels later = OfScreen(area);
        same = later == pixels ? same + 1 : 1;
        pixels = std::move(later);
    }
    return pixels;
}

BITMAPINFO CPixels::Info() const {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = m_width;
    info.bmiHeader.biHeight = -m_height; // top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    return info;
}

CPixels CPixels::Part(const RECT& area) const {
    CPixels part;
    part.m_width = area.right - area.left;
    part.m_height = area.bottom - area.top;
    for (LONG y = area.top; y < area.bottom; ++y)
        for (LONG x = area.left; x < area.right; ++x)
            part.m_pixels.push_back(At(x, y));
    return part;
}

std::uint32_t CPixels::At(LONG x, LONG y) const {
    if (x < 0 || x >= m_width || y < 0 || y >= m_height)
        throw std::out_of_range("no such pixel");
    return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                    static_cast<std::size_t>(x)];
}

std::size_t CPixels::Differing(const CPixels& other) const {
    if (m_width != other.m_width || m_height != other.m_height)
        return m_pixels.size();
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_pixels.size(); ++i)
        count += m_pixels[i] == other.m_pixels[i] ? 0 : 1;
    return count;
}

bool CPixels::Save(const std::wstring& path) const {
    const CPictureLibrary library;
    const BITMAPINFO info = Info();
    std::vector<std::uint32_t> pixels = m_pixels;
    Gdiplus::Bitmap bitmap(&info, pixels.data());
    return bitmap.Save(path.c_str(), &kPngEncoder, nullptr) == Gdiplus::Ok;
}

RECT ScreenArea() { return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

RECT WindowArea(HWND window, HWND other) {
    RECT area{};
    GetWindowRect(window, &area);
    RECT second{};
    if (other != nullptr && GetWindowRect(other, &second) != 0)
        UnionRect(&area, &area, &second);
    const RECT screen = ScreenArea();
    IntersectRect(&area, &area, &screen);
    return area;
}

} // namespace trevolt::test
