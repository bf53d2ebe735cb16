// Pictures of what the screen shows.
#pragma once

#include <string>

#include <windows.h>

namespace trevolt::test {

/// Waits until the part of the screen that `area` names stands still, and writes it as a bitmap
/// file. False when it cannot.
bool SaveScreen(const RECT& area, const std::wstring& path);

/// The whole screen.
RECT ScreenArea();

/// The window's place on the screen, grown to hold `other` too when that is not null.
RECT WindowArea(HWND window, HWND other = nullptr);

} // namespace trevolt::test
