// CBalloonTip: an information balloon at an edit. Where the system cannot show an edit's own
// balloon, a tooltip balloon stands in.
//
// Belongs to the thread of its windows.
#pragma once

#include <string>

#include <windows.h>

namespace trevolt {

class CBalloonTip {
  public:
    CBalloonTip() = default;
    ~CBalloonTip() { Hide(); }
    CBalloonTip(const CBalloonTip&) = delete;
    CBalloonTip& operator=(const CBalloonTip&) = delete;

    /// Shows a balloon with the information icon at `edit`, in place of the one shown before.
    void Show(HWND edit, const std::wstring& title, const std::wstring& text);

    /// Takes the stand-in down; an edit's own balloon goes by itself.
    void Hide();

  private:
    void ShowTooltip(HWND edit, const std::wstring& title, const std::wstring& text);
    static void CALLBACK OnTimeout(HWND tooltip, UINT message, UINT_PTR self, DWORD time);

    HWND m_tooltip = nullptr;
};

} // namespace trevolt
