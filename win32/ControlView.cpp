#include "win32/ControlView.h"

#include <array>

#include <commctrl.h>
#include <shlobj.h>

#include "win32/MsgBox.h"
#include "win32/Resource.h"
#include "win32/WindowText.h"

namespace trevolt {
namespace {

HICON LoadSizedIcon(int widthMetric, int heightMetric, UINT dpi) {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_TREVOLT),
                                         IMAGE_ICON, GetSystemMetricsForDpi(widthMetric, dpi),
                                         GetSystemMetricsForDpi(heightMetric, dpi), 0));
}

/// Whether the edit has room for its whole text.
bool IsTextShownWhole(HWND edit) {
    const std::wstring text = GetText(edit);
    const HDC context = GetDC(edit);
    const HGDIOBJ former =
        SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(edit, WM_GETFONT, 0, 0)));
    SIZE taken{};
    GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &taken);
    SelectObject(context, former);
    ReleaseDC(edit, context);
    RECT room{};
    SendMessageW(edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
    return taken.cx <= room.right - room.left;
}

/// Leads the opened browser to the folder that it is called with.
int CALLBACK OpenAtFolder(HWND browser, UINT message, LPARAM, LPARAM folder) {
    if (message == BFFM_INITIALIZED && folder != 0)
        SendMessageW(browser, BFFM_SETSELECTIONW, TRUE, folder);
    return 0;
}

/// An item of the shell's name space, freed with the holder.
class CItemList {
  public:
    explicit CItemList(PIDLIST_ABSOLUTE items) : m_items(items) {}
    ~CItemList() { CoTaskMemFree(m_items); }
    CItemList(const CItemList&) = delete;
    CItemList& operator=(const CItemList&) = delete;

    bool IsEmpty() const { return m_items == nullptr; }

    /// Empty when the item lies in no file system.
    std::wstring Path() const {
        constexpr DWORD kLongestPath = 32768;
        std::wstring path(kLongestPath, L'\0');
        if (SHGetPathFromIDListEx(m_items, path.data(), kLongestPath, GPFIDL_DEFAULT) == 0)
            return {};
        path.resize(wcslen(path.c_str()));
        return path;
    }

  private:
    PIDLIST_ABSOLUTE m_items;
};

} // namespace

CControlView::~CControlView() { DestroyIcons(); }

void CControlView::Attach(HWND dialog) {
    m_dialog = dialog;
    m_widthEdit.Attach(Control(kIdWidth));
    m_heightEdit.Attach(Control(kIdHeight));
}

void CControlView::DetachControls() {
    m_widthEdit.Detach();
    m_heightEdit.Detach();
    m_accessibleNames.Clear();
}

void CControlView::SetUpWindow() {
    AddAboutEntry();
    LoadIcons();
}

void CControlView::AddAboutEntry() {
    std::array<wchar_t, 128> text{};
    const int length = LoadStringW(GetModuleHandleW(nullptr), IDS_ABOUT, text.data(),
                                   static_cast<int>(text.size()));
    const HMENU menu = GetSystemMenu(m_dialog, FALSE);
    if (length == 0 || menu == nullptr)
        return;
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, IDM_ABOUT, text.data());
}

void CControlView::LoadIcons() {
    const UINT dpi = GetDpiForWindow(m_dialog);
    const HICON icon = LoadSizedIcon(SM_CXICON, SM_CYICON, dpi);
    const HICON smallIcon = LoadSizedIcon(SM_CXSMICON, SM_CYSMICON, dpi);
    SendMessageW(m_dialog, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    SendMessageW(m_dialog, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon));
    DestroyIcons();
    m_icon = icon;
    m_smallIcon = smallIcon;
}

void CControlView::DestroyIcons() {
    for (HICON* icon : {&m_icon, &m_smallIcon})
        if (*icon != nullptr)
            DestroyIcon(*icon);
}

void CControlView::SetTitle(const std::wstring& text) { SetWindowTextW(m_dialog, text.c_str()); }

std::wstring CControlView::GetText(int id) const { return trevolt::GetText(Control(id)); }

void CControlView::SetText(int id, const std::wstring& text) {
    SetDlgItemTextW(m_dialog, id, text.c_str());
}

void CControlView::SetAccessibleName(int id, const std::wstring& name) {
    m_accessibleNames.SetName(Control(id), name);
}

void CControlView::ShowFolder(int id, const std::wstring& folder) {
    SetText(id, folder);
    const auto end = static_cast<WPARAM>(folder.size());
    Send(id, EM_SETSEL, end, static_cast<LPARAM>(end));
    Send(id, EM_SCROLLCARET);
    CPathTip& tip = id == kIdSource ? m_sourceTip : m_targetTip;
    tip.SetPath(Control(id), IsTextShownWhole(Control(id)) ? std::wstring() : folder);
}

void CControlView::Enable(int id, bool enabled) { EnableWindow(Control(id), enabled); }

void CControlView::Show(int id, bool shown) { ShowWindow(Control(id), shown ? SW_SHOW : SW_HIDE); }

bool CControlView::IsChecked(int id) const {
    return IsDlgButtonChecked(m_dialog, id) == BST_CHECKED;
}

void CControlView::Check(int id) { CheckRadioButton(m_dialog, kIdByCabinet, kIdByScreen, id); }

void CControlView::ClearEntries(int id) { Send(id, CB_RESETCONTENT); }

void CControlView::AddEntry(int id, std::wstring_view text, std::int32_t data) {
    const std::wstring entry(text);
    const LRESULT index = Send(id, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
    Send(id, CB_SETITEMDATA, static_cast<WPARAM>(index), data);
}

void CControlView::SelectEntry(int id, int index) {
    Send(id, CB_SETCURSEL, static_cast<WPARAM>(index));
}

LRESULT CControlView::SelectedIndex(int id) const { return Send(id, CB_GETCURSEL); }

std::int32_t CControlView::SelectedData(int id) const {
    const LRESULT index = SelectedIndex(id);
    if (index == CB_ERR)
        return -1;
    return static_cast<std::int32_t>(Send(id, CB_GETITEMDATA, static_cast<WPARAM>(index)));
}

std::wstring CControlView::SelectedText(int id) const {
    return SelectedIndex(id) == CB_ERR ? std::wstring() : GetText(id);
}

void CControlView::SetNumberLimits(int id, std::int32_t type, std::int32_t lowest,
                                   std::int32_t highest) {
    CNumberEdit& edit = id == kIdWidth ? m_widthEdit : m_heightEdit;
    edit.SetType(type);
    edit.SetMinValue(lowest);
    edit.SetMaxValue(highest);
}

CNumberEdit* CControlView::FocusedNumberEdit() {
    for (CNumberEdit* edit : {&m_widthEdit, &m_heightEdit})
        if (edit->HasFocus())
            return edit;
    return nullptr;
}

int CControlView::FindNumberEdit(LPARAM address) const {
    if (address == reinterpret_cast<LPARAM>(&m_widthEdit))
        return kIdWidth;
    return address == reinterpret_cast<LPARAM>(&m_heightEdit) ? kIdHeight : 0;
}

void CControlView::ShowBalloon(int id, const std::wstring& title, const std::wstring& text) {
    m_balloon.Show(Control(id), title, text);
}

void CControlView::SelectWholeText(int id) {
    Send(id, EM_SETSEL, 0, -1);
    Send(id, EM_SCROLLCARET);
}

void CControlView::SetProgressRange(int id, int lowest, int highest) {
    Send(id, PBM_SETRANGE32, static_cast<WPARAM>(lowest), highest);
}

void CControlView::SetProgress(int id, int position) {
    // A themed bar glides forward by a timer, which does not run while no message is pumped; it
    // steps back at once. Beyond the highest position there is room only while the range has it.
    const LRESULT highest = Send(id, PBM_GETRANGE, FALSE);
    Send(id, PBM_SETRANGE32, 0, highest + 1);
    Send(id, PBM_SETPOS, static_cast<WPARAM>(position + 1));
    Send(id, PBM_SETPOS, static_cast<WPARAM>(position));
    Send(id, PBM_SETRANGE32, 0, highest);
    m_taskbarButton.ShowPosition(m_dialog, position, static_cast<int>(highest));
    RedrawWindow(m_dialog, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

void CControlView::ShowRunState(ERunState state) { m_taskbarButton.ShowState(m_dialog, state); }

void CControlView::CallUser() {
    if (GetForegroundWindow() == m_dialog)
        return;
    FLASHWINFO flash{};
    flash.cbSize = sizeof flash;
    flash.hwnd = m_dialog;
    flash.dwFlags = FLASHW_TRAY | FLASHW_TIMERNOFG;
    FlashWindowEx(&flash);
}

void CControlView::ShowWaitCursor(bool shown) {
    m_isWaitCursorShown = shown;
    SetCursor(LoadCursorW(nullptr, shown ? IDC_WAIT : IDC_ARROW));
}

void CControlView::ShowMessage(const std::wstring& text, std::uint32_t style) {
    const bool isWaiting = m_isWaitCursorShown;
    ShowWaitCursor(false);
    MsgBox(m_dialog, text, style);
    ShowWaitCursor(isWaiting);
}

SBrowsedFolder CControlView::BrowseForFolder(const std::wstring& opened) {
    BROWSEINFOW browser{};
    browser.hwndOwner = m_dialog;
    browser.lpfn = OpenAtFolder;
    browser.lParam = opened.empty() ? 0 : reinterpret_cast<LPARAM>(opened.c_str());
    const CItemList chosen(SHBrowseForFolderW(&browser));
    if (chosen.IsEmpty())
        return {};
    return {true, chosen.Path()};
}

void CControlView::LanguageChanged(std::int32_t langId) { Korvel_LanguageChanged(langId); }

} // namespace trevolt
