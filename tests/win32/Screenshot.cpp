#include "tests/win32/Screenshot.h"

#include <fstream>
#include <vector>

#include "platform/FileStream.h"

namespace trevolt::test {
namespace {

BITMAPINFOHEADER HeaderOf(const RECT& area) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = area.right - area.left;
    header.biHeight = area.bottom - area.top;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    return header;
}

/// The pixels of a part of the screen, bottom row first, 3 bytes each, rows padded to 4.
std::vector<char> ReadPixels(const RECT& area, BITMAPINFO& info) {
    const LONG width = info.bmiHeader.biWidth;
    const LONG height = info.bmiHeader.biHeight;
    const auto rowBytes = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
    std::vector<char> pixels(rowBytes * static_cast<std::size_t>(height));
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    SelectObject(memory, former);
    GetDIBits(screen, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return pixels;
}

/// The pixels once several looks at them are the same.
std::vector<char> ReadSteadyPixels(const RECT& area, BITMAPINFO& info) {
    constexpr int kLooks = 50;
    constexpr int kSameLooks = 3;
    constexpr DWORD kBetweenLooks = 150;
    std::vector<char> pixels = ReadPixels(area, info);
    for (int look = 1, same = 1; look < kLooks && same < kSameLooks; ++look) {
        Sleep(kBetweenLooks);
        std::vector<char> later = ReadPixels(area, info);
        same = later == pixels ? same + 1 : 1;
        pixels = std::move(later);
    }
    return pixels;
}

} // namespace

bool SaveScreen(const RECT& area, const std::wstring& path) {
    BITMAPINFO info{};
    info.bmiHeader = HeaderOf(area);
    const std::vector<char> pixels = ReadSteadyPixels(area, info);
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42; // "BM"
    header.bfOffBits = sizeof header + sizeof info.bmiHeader;
    header.bfSize = header.bfOffBits + static_cast<DWORD>(pixels.size());

    std::fstream file;
    if (!OpenFileStream(file, path.c_str(), std::ios::out | std::ios::trunc))
        return false;
    file.write(reinterpret_cast<const char*>(&header), sizeof header);
    file.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof info.bmiHeader);
    file.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    file.close();
    return file.good();
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
