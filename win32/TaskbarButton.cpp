#include "win32/TaskbarButton.h"

namespace trevolt {

TBPFLAG TaskbarFlag(ERunState state) {
    switch (state) {
    case ERunState::Working:
        return TBPF_NORMAL;
    case ERunState::Failed:
        return TBPF_ERROR;
    default:
        return TBPF_NOPROGRESS;
    }
}

CTaskbarButton::~CTaskbarButton() {
    if (m_taskbar != nullptr)
        m_taskbar->Release();
}

void CTaskbarButton::ShowState(HWND window, ERunState state) {
    m_state = state;
    if (!Connect())
        return;
    if (state == ERunState::Failed)
        m_taskbar->SetProgressValue(window, 1, 1);
    m_taskbar->SetProgressState(window, TaskbarFlag(state));
}

void CTaskbarButton::ShowPosition(HWND window, int position, int highest) {
    if (m_state == ERunState::Working && Connect())
        m_taskbar->SetProgressValue(window, static_cast<ULONGLONG>(position),
                                    static_cast<ULONGLONG>(highest));
}

/// Whether the taskbar listens. It is sought at the first run, so that the window opens without delay.
bool CTaskbarButton::Connect() {
    if (m_taskbar != nullptr)
        return true;
    void* found = nullptr;
    if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                                &found)))
        return false;
    m_taskbar = static_cast<ITaskbarList3*>(found);
    if (SUCCEEDED(m_taskbar->HrInit()))
        return true;
    m_taskbar->Release();
    m_taskbar = nullptr;
    return false;
}

} // namespace trevolt
