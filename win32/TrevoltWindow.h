// CTrevoltWindow: the main dialog's real window. It hands every event to CTrevoltDlg, which holds the
// dialog's rules, and keeps what concerns the window alone: keys, system menu, icon and closing.
//
// Belongs to the thread that runs it.
#pragma once

#include <windows.h>

#include <shellapi.h>

#include "app/dialog/TrevoltDlg.h"
#include "win32/ControlView.h"
#include "win32/WindowTheme.h"

namespace trevolt {

/// Where an icon's top left corner lies when the icon stands in the middle of a window.
POINT CentredIconPlace(const SIZE& client, const SIZE& icon);

/// How the window comes up for what a program was asked: minimised, or else shown, since a hidden one
/// could not be reached.
int FirstShowCommand(int asked);

class CTrevoltWindow {
  public:
    CTrevoltWindow(CTranslate& translate, SDialogStart start)
        : m_dialog(m_view, translate, std::move(start)) {}
    CTrevoltWindow(const CTrevoltWindow&) = delete;
    CTrevoltWindow& operator=(const CTrevoltWindow&) = delete;

    /// Shows the dialog as the program was asked to show its window, and handles its messages until it
    /// is closed.
    void RunModal(int showCommand);

  private:
    static INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
    INT_PTR OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR OnInitDialog();
    void AcceptDroppedFiles() const;
    INT_PTR OnCommand(int id, int notification);
    bool OnSysCommand(WPARAM command) const;
    bool OnPaint() const;
    void OnDropFiles(HDROP dropped);
    void OnCopyData(const COPYDATASTRUCT& data);
    void OnClose();
    bool PreTranslateMessage(const MSG& message);
    bool CommitOnEnter();

    HWND m_window = nullptr;
    CWindowTheme m_theme;
    CControlView m_view;
    CTrevoltDlg m_dialog;
};

} // namespace trevolt
