// CTaskbarButton: how far a run is, shown on a window's button in the taskbar. A system without a
// taskbar shows nothing.
//
// Belongs to the thread of its window, which has initialised COM.
#pragma once

#include <windows.h>

#include <shobjidl.h>

#include "app/dialog/DialogView.h"

namespace trevolt {

/// How the taskbar names a state.
TBPFLAG TaskbarFlag(ERunState state);

class CTaskbarButton {
  public:
    CTaskbarButton() = default;
    /// Shows its progress on `taskbar`, one reference of which becomes its own, and seeks no other.
    explicit CTaskbarButton(ITaskbarList3* taskbar) : m_taskbar(taskbar) {}
    ~CTaskbarButton();
    CTaskbarButton(const CTaskbarButton&) = delete;
    CTaskbarButton& operator=(const CTaskbarButton&) = delete;

    /// Shows the state on the button of `window`; a failed run takes the whole button.
    void ShowState(HWND window, ERunState state);

    /// Shows how far the run is, while one works.
    void ShowPosition(HWND window, int position, int highest);

  private:
    bool Connect();

    ITaskbarList3* m_taskbar = nullptr;
    ERunState m_state = ERunState::None;
};

} // namespace trevolt
