#include "win32/BalloonTip.h"

#include <commctrl.h>

namespace trevolt {
namespace {

constexpr UINT kShownMilliseconds = 10000;
constexpr LPARAM kWidestBalloon = 400; // pixels at 96 DPI; longer texts are wrapped

/// Pixels on the edit's monitor for a length at 96 DPI.
int Scaled(HWND window, LPARAM length) {
    return MulDiv(static_cast<int>(length), static_cast<int>(GetDpiForWindow(window)), 96);
}

} // namespace

bool IsOwnBalloonFit(HWND edit, HWND focused) { return edit == focused; }

void CBalloonTip::Show(HWND edit, const std::wstring& title, const std::wstring& text) {
    Hide();
    if (!IsOwnBalloonFit(edit, GetFocus()) || !ShowOwn(edit, title, text))
        ShowTooltip(edit, title, text);
}

bool CBalloonTip::ShowOwn(HWND edit, const std::wstring& title, const std::wstring& text) {
    EDITBALLOONTIP balloon{};
    balloon.cbStruct = sizeof balloon;
    balloon.pszTitle = title.c_str();
    balloon.pszText = text.c_str();
    balloon.ttiIcon = TTI_INFO;
    return SendMessageW(edit, EM_SHOWBALLOONTIP, 0, reinterpret_cast<LPARAM>(&balloon)) != 0;
}

/// A tooltip lies over every window, so none comes up for a dialog that is not the active one.
void CBalloonTip::ShowTooltip(HWND edit, const std::wstring& title, const std::wstring& text) {
    if (GetActiveWindow() != GetAncestor(edit, GA_ROOT))
        return;
    m_tooltip = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                WS_POPUP | TTS_BALLOON | TTS_NOPREFIX | TTS_ALWAYSTIP,
                                CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, edit,
                                nullptr, nullptr, nullptr);
    if (m_tooltip == nullptr)
        return;
    std::wstring shown = text;
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_TRACK;
    tool.hwnd = GetParent(edit);
    tool.uId = reinterpret_cast<UINT_PTR>(edit);
    tool.lpszText = shown.data();
    const auto toolAddress = reinterpret_cast<LPARAM>(&tool);
    SendMessageW(m_tooltip, TTM_ADDTOOLW, 0, toolAddress);
    SendMessageW(m_tooltip, TTM_SETMAXTIPWIDTH, 0, Scaled(edit, kWidestBalloon));
    SendMessageW(m_tooltip, TTM_SETTITLEW, TTI_INFO, reinterpret_cast<LPARAM>(title.c_str()));

    RECT place{};
    GetWindowRect(edit, &place);
    SendMessageW(m_tooltip, TTM_TRACKPOSITION, 0,
                 MAKELPARAM((place.left + place.right) / 2, (place.top + place.bottom) / 2));
    SendMessageW(m_tooltip, TTM_TRACKACTIVATE, TRUE, toolAddress);
    SetTimer(m_tooltip, reinterpret_cast<UINT_PTR>(this), kShownMilliseconds, OnTimeout);
}

void CBalloonTip::Hide() {
    if (m_tooltip != nullptr)
        DestroyWindow(m_tooltip);
    m_tooltip = nullptr;
}

void CALLBACK CBalloonTip::OnTimeout(HWND, UINT, UINT_PTR self, DWORD) {
    reinterpret_cast<CBalloonTip*>(self)->Hide();
}

} // namespace trevolt
