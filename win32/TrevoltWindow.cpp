#include "win32/TrevoltWindow.h"

#include "platform/LaunchLanguage.h"
#include "win32/Resource.h"

namespace trevolt {
namespace {

static_assert(kDialogTemplate == IDD_TREVOLT);

/// The about box: it shows its texts and closes with its button or Escape.
class CAboutDlg {
  public:
    /// Shows the box over `owner` until it is closed.
    static void DoModal(HWND owner) {
        CAboutDlg box;
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ABOUT), owner, Procedure,
                        reinterpret_cast<LPARAM>(&box));
    }

  private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrW(window, DWLP_USER, lParam);
            reinterpret_cast<CAboutDlg*>(lParam)->m_theme.Apply(window);
            return TRUE;
        }
        auto* self = reinterpret_cast<CAboutDlg*>(GetWindowLongPtrW(window, DWLP_USER));
        if (self == nullptr)
            return FALSE;
        if (const auto answer = self->m_theme.OnMessage(window, message, wParam, lParam))
            return *answer;
        if (message != WM_COMMAND || (LOWORD(wParam) != IDOK && LOWORD(wParam) != IDCANCEL))
            return FALSE;
        EndDialog(window, LOWORD(wParam));
        return TRUE;
    }

    CWindowTheme m_theme;
};

} // namespace

int FirstShowCommand(int asked) {
    switch (asked) {
    case SW_MINIMIZE:
    case SW_SHOWMINIMIZED:
    case SW_SHOWMINNOACTIVE:
    case SW_FORCEMINIMIZE:
        return SW_SHOWMINNOACTIVE;
    default:
        return SW_SHOW;
    }
}

void CTrevoltWindow::RunModal(int showCommand) {
    CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_TREVOLT), nullptr,
                       DialogProcedure, reinterpret_cast<LPARAM>(this));
    if (m_window == nullptr)
        return;
    ShowWindow(m_window, FirstShowCommand(showCommand));
    // The system may put what the launcher asked for in place of a program's first command.
    if (IsWindowVisible(m_window) == 0)
        ShowWindow(m_window, SW_SHOW);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (m_window != nullptr &&
            (PreTranslateMessage(message) || IsDialogMessageW(m_window, &message)))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

/// Escape asks the dialog to close, Enter commits the size that is being typed.
bool CTrevoltWindow::PreTranslateMessage(const MSG& message) {
    if (message.message != WM_KEYDOWN)
        return false;
    if (message.wParam == VK_ESCAPE) {
        SendMessageW(m_window, WM_CLOSE, 0, 0);
        return true;
    }
    return message.wParam == VK_RETURN && CommitOnEnter();
}

/// Whether Enter goes no further: it never presses Start.
bool CTrevoltWindow::CommitOnEnter() {
    if (CNumberEdit* edit = m_view.FocusedNumberEdit(); edit != nullptr) {
        edit->Commit();
        return true;
    }
    return GetFocus() == GetDlgItem(m_window, kIdStart);
}

INT_PTR CALLBACK CTrevoltWindow::DialogProcedure(HWND window, UINT message, WPARAM wParam,
                                                 LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        reinterpret_cast<CTrevoltWindow*>(lParam)->m_window = window;
    }
    auto* self = reinterpret_cast<CTrevoltWindow*>(GetWindowLongPtrW(window, DWLP_USER));
    return self == nullptr ? FALSE : self->OnMessage(message, wParam, lParam);
}

INT_PTR CTrevoltWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (const auto answer = m_theme.OnMessage(m_window, message, wParam, lParam))
        return *answer;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_COMMAND:
        return OnCommand(LOWORD(wParam), HIWORD(wParam));
    case CNumberEdit::kCommitted:
        SetWindowLongPtrW(m_window, DWLP_MSGRESULT,
                          m_dialog.OnNumberEditNotify(m_view.FindNumberEdit(lParam)));
        return TRUE;
    case WM_SYSCOMMAND:
        return OnSysCommand(wParam) ? TRUE : FALSE;
    case WM_PAINT:
        return OnPaint() ? TRUE : FALSE;
    case WM_QUERYDRAGICON:
        return reinterpret_cast<INT_PTR>(m_view.Icon());
    case WM_COPYDATA:
        if (lParam != 0)
            OnCopyData(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
        return FALSE; // the default handling follows
    case WM_DROPFILES:
        OnDropFiles(reinterpret_cast<HDROP>(wParam));
        return TRUE;
    case WM_DPICHANGED:
        m_view.LoadIcons();
        return FALSE;
    case WM_MOVE:
        m_view.HideBalloon();
        return FALSE;
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE)
            m_view.HideBalloon();
        return FALSE;
    case WM_CLOSE:
        OnClose();
        return TRUE;
    case WM_DESTROY:
        m_window = nullptr;
        PostQuitMessage(0); // wakes the message loop, also when the close was sent and not posted
        return FALSE;
    default:
        return FALSE;
    }
}

INT_PTR CTrevoltWindow::OnInitDialog() {
    m_view.Attach(m_window);
    m_theme.Apply(m_window);
    AcceptDroppedFiles();
    return m_dialog.OnInitDialog(ReadLaunchLanguage()) ? TRUE : FALSE;
}

/// Also from an Explorer with fewer rights than a launcher that runs as an administrator gives.
void CTrevoltWindow::AcceptDroppedFiles() const {
    constexpr UINT kCopyGlobalData = 0x0049; // carries the names from one process to the other
    for (const UINT message : {UINT{WM_DROPFILES}, kCopyGlobalData})
        ChangeWindowMessageFilterEx(m_window, message, MSGFLT_ALLOW, nullptr);
    DragAcceptFiles(m_window, TRUE);
}

INT_PTR CTrevoltWindow::OnCommand(int id, int notification) {
    struct SHandler {
        int id;
        int notification;
        void (CTrevoltDlg::*handle)();
    };
    static constexpr SHandler kHandlers[] = {
        {kIdStart, BN_CLICKED, &CTrevoltDlg::OnStart},
        {kIdBrowseSource, BN_CLICKED, &CTrevoltDlg::OnBrowseSource},
        {kIdBrowseTarget, BN_CLICKED, &CTrevoltDlg::OnBrowseTarget},
        {kIdByCabinet, BN_CLICKED, &CTrevoltDlg::OnModeChanged},
        {kIdByScreen, BN_CLICKED, &CTrevoltDlg::OnModeChanged},
        {kIdWidth, EN_CHANGE, &CTrevoltDlg::OnSizeChanged},
        {kIdHeight, EN_CHANGE, &CTrevoltDlg::OnSizeChanged},
    };
    for (const SHandler& handler : kHandlers) {
        if (handler.id != id || handler.notification != notification)
            continue;
        if (notification == EN_CHANGE)
            m_view.HideBalloon();
        (m_dialog.*handler.handle)();
        return TRUE;
    }
    return FALSE;
}

bool CTrevoltWindow::OnSysCommand(WPARAM command) const {
    constexpr WPARAM kCommandMask = 0xFFF0; // the system uses the low four bits
    if ((command & kCommandMask) != IDM_ABOUT)
        return false;
    CAboutDlg::DoModal(m_window);
    return true;
}

/// A minimised window shows its icon in the middle.
bool CTrevoltWindow::OnPaint() const {
    if (IsIconic(m_window) == 0)
        return false;
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(m_window, &paint);
    SendMessageW(m_window, WM_ICONERASEBKGND, reinterpret_cast<WPARAM>(context), 0);
    const UINT dpi = GetDpiForWindow(m_window);
    RECT client{};
    GetClientRect(m_window, &client);
    const POINT place =
        CentredIconPlace({client.right, client.bottom}, {GetSystemMetricsForDpi(SM_CXICON, dpi),
                                                         GetSystemMetricsForDpi(SM_CYICON, dpi)});
    DrawIcon(context, place.x, place.y, m_view.Icon());
    EndPaint(m_window, &paint);
    return true;
}

/// Of several things dropped at once the first counts. Under a modal window nothing does.
void CTrevoltWindow::OnDropFiles(HDROP dropped) {
    std::wstring path(DragQueryFileW(dropped, 0, nullptr, 0), L'\0');
    DragQueryFileW(dropped, 0, path.data(), static_cast<UINT>(path.size()) + 1);
    POINT mouse{};
    DragQueryPoint(dropped, &mouse);
    DragFinish(dropped);
    if (path.empty() || IsWindowEnabled(m_window) == 0)
        return;
    const HWND underMouse = ChildWindowFromPointEx(m_window, mouse, CWP_SKIPINVISIBLE);
    m_dialog.OnFolderDropped(path, underMouse == m_window ? 0 : GetDlgCtrlID(underMouse));
}

void CTrevoltWindow::OnCopyData(const COPYDATASTRUCT& data) {
    const auto* bytes = static_cast<const std::byte*>(data.lpData);
    m_dialog.OnCopyData(data.dwData, {bytes, bytes == nullptr ? 0 : data.cbData});
}

/// What is being typed was saved with every character, so nothing is committed on the way: the edits
/// go one after the other, and a balloon would point at a window that is going.
void CTrevoltWindow::OnClose() {
    m_view.DetachControls();
    m_view.HideBalloon();
    DestroyWindow(m_window);
}

POINT CentredIconPlace(const SIZE& client, const SIZE& icon) {
    return {(client.cx - icon.cx + 1) / 2, (client.cy - icon.cy + 1) / 2};
}

} // namespace trevolt
