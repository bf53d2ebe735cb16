// A window's text as a string.
#pragma once

#include <string>

#include <windows.h>

namespace trevolt {

inline std::wstring GetText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace trevolt
