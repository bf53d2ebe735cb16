// CBalloonTip: an information balloon at an edit: the edit's own, or a tooltip balloon that stands in
// where the own one cannot be shown.
//
// Belongs to the thread of its windows.
#pragma once

#include <string>

#include <windows.h>

namespace trevolt {

/// Whether `edit` is asked for its own balloon while `focused` has the focus. To show it, an edit
/// takes the focus: a user who has left the field would be pulled back into it.
bool IsOwnBalloonFit(HWND edit, HWND focused);

class CBalloonTip {
  public:
    CBalloonTip() = default;
    ~CBalloonTip() { Hide(); }
    CBalloonTip(const CBalloonTip&) = delete;
    CBalloonTip& operator=(const CBalloonTip&) = delete;

    /// Shows a balloon with the information icon at `edit`, in place of the one shown before. The
    /// focus stays where it is.
    void Show(HWND edit, const std::wstring& title, const std::wstring& text);

    /// Takes the stand-in down; an edit's own balloon goes by itself.
    void Hide();

  private:
    static bool ShowOwn(HWND edit, const std::wstring& title, const std::wstring& text);
    void ShowTooltip(HWND edit, const std::wstring& title, const std::wstring& text);
    static void CALLBACK OnTimeout(HWND tooltip, UINT message, UINT_PTR self, DWORD time);

    HWND m_tooltip = nullptr;
};

} // namespace trevolt
