// CWindowTheme: the colours of a dialog and of its controls, after the system's setting. Dark ones are
// the program's own; light ones and those of a high contrast are drawn by the system.
//
// Belongs to the thread of its window.
#pragma once

#include <optional>

#include <windows.h>

#include <commctrl.h>

#include "app/dialog/WindowColours.h"

namespace trevolt {

class CWindowTheme {
  public:
    CWindowTheme() = default;
    ~CWindowTheme();
    CWindowTheme(const CWindowTheme&) = delete;
    CWindowTheme& operator=(const CWindowTheme&) = delete;

    /// Takes the system's setting anew for the dialog and all of its controls.
    void Apply(HWND dialog);

    /// A dialog procedure's answer to the messages that colours hang on: a WM_CTLCOLOR… message and a
    /// button's custom drawing. Nothing where the default handling shall follow, as behind a change of
    /// the system's setting, which is taken.
    std::optional<INT_PTR> OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

  private:
    std::optional<INT_PTR> Colour(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) const;
    INT_PTR ColourControl(HDC context, HWND control, bool isField) const;
    void DrawButton(const NMCUSTOMDRAW& drawn) const;
    void DrawPushButton(HWND button, HDC context, RECT place) const;
    void DrawRadioButton(HWND button, HDC context, RECT place) const;
    void DrawButtonText(HWND button, HDC context, RECT place, UINT format) const;
    void SetBrushes();

    std::optional<SWindowColours> m_colours;
    HBRUSH m_windowBrush = nullptr;
    HBRUSH m_fieldBrush = nullptr;
};

} // namespace trevolt
