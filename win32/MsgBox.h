// The message box of the window library, with buttons in the library's own language.
#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

namespace trevolt {

/// The library's own texts (the buttons of its message boxes) are those of the tools' language `id`
/// from now on. Before the first call they are the system's.
void Korvel_LanguageChanged(std::int32_t id);

/// How far a message box's button moves to the right in a box that grows by `growth` on that side: one
/// at the right edge stays at it, one in the middle stays there.
int WidenedButtonShift(const RECT& box, const RECT& button, int growth);

/// Shows `text` in a modal message box owned by `owner`, under the owner's title, with the style
/// bits of MessageBox, and returns when it is closed. The box shows its whole caption.
void MsgBox(HWND owner, const std::wstring& text, std::uint32_t style);

} // namespace trevolt
