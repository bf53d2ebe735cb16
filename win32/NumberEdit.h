// CNumberEdit: an edit that tells its dialog when its value is committed, by losing the focus or by
// Enter. It neither filters nor clamps what is typed: its dialog checks the value.
//
// Belongs to the thread of its window.
#pragma once

#include <cstdint>

#include <windows.h>

namespace trevolt {

class CNumberEdit {
  public:
    /// Sent (not posted) to the dialog, with the control's id and the address of the CNumberEdit.
    static constexpr UINT kCommitted = 0x746;

    CNumberEdit() = default;
    ~CNumberEdit() { Detach(); }
    CNumberEdit(const CNumberEdit&) = delete;
    CNumberEdit& operator=(const CNumberEdit&) = delete;

    /// Takes an edit control of a dialog.
    void Attach(HWND edit);

    /// What kind of number it holds; 1 is an integer.
    void SetType(std::int32_t type) { m_type = type; }
    void SetMinValue(std::int32_t value) { m_minValue = value; }
    void SetMaxValue(std::int32_t value) { m_maxValue = value; }
    std::int32_t Type() const { return m_type; }
    std::int32_t MinValue() const { return m_minValue; }
    std::int32_t MaxValue() const { return m_maxValue; }

    bool HasFocus() const { return m_edit != nullptr && GetFocus() == m_edit; }

    /// Tells the dialog that the value stands.
    void Commit();

    /// Leaves the control alone from now on.
    void Detach();

  private:
    static LRESULT CALLBACK EditProcedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam,
                                          UINT_PTR id, DWORD_PTR self);

    HWND m_edit = nullptr;
    std::int32_t m_type = 0;
    std::int32_t m_minValue = 0;
    std::int32_t m_maxValue = 0;
};

} // namespace trevolt
