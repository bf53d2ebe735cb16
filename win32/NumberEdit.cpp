#include "win32/NumberEdit.h"

#include <commctrl.h>

namespace trevolt {
namespace {

constexpr UINT_PTR kSubclassId = 1;

} // namespace

void CNumberEdit::Attach(HWND edit) {
    Detach();
    if (SetWindowSubclass(edit, EditProcedure, kSubclassId, reinterpret_cast<DWORD_PTR>(this)) != 0)
        m_edit = edit;
}

void CNumberEdit::Detach() {
    if (m_edit != nullptr)
        RemoveWindowSubclass(m_edit, EditProcedure, kSubclassId);
    m_edit = nullptr;
}

void CNumberEdit::Commit() {
    SendMessageW(GetParent(m_edit), kCommitted, static_cast<WPARAM>(GetDlgCtrlID(m_edit)),
                 reinterpret_cast<LPARAM>(this));
}

LRESULT CALLBACK CNumberEdit::EditProcedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam,
                                            UINT_PTR, DWORD_PTR self) {
    auto& numberEdit = *reinterpret_cast<CNumberEdit*>(self);
    const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
    // After the edit itself: on losing the focus it takes down a balloon that it shows.
    if (message == WM_KILLFOCUS)
        numberEdit.Commit();
    if (message == WM_NCDESTROY)
        numberEdit.Detach();
    return result;
}

} // namespace trevolt
