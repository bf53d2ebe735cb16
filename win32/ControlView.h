// CControlView: the dialog's view on real controls, which are named by their ids.
//
// Belongs to the thread of its window.
#pragma once

#include "app/dialog/DialogView.h"
#include "win32/AccessibleNames.h"
#include "win32/BalloonTip.h"
#include "win32/NumberEdit.h"
#include "win32/PathTip.h"
#include "win32/TaskbarButton.h"

namespace trevolt {

class CControlView : public CDialogView {
  public:
    CControlView() = default;
    ~CControlView() override;
    CControlView(const CControlView&) = delete;
    CControlView& operator=(const CControlView&) = delete;

    /// Takes the dialog's window and its controls.
    void Attach(HWND dialog);

    /// The number edits tell nothing from now on, and no control has a name but its text.
    void DetachControls();

    void SetUpWindow() override;
    void SetTitle(const std::wstring& text) override;
    std::wstring GetText(int id) const override;
    void SetText(int id, const std::wstring& text) override;
    void SetAccessibleName(int id, const std::wstring& name) override;
    void ShowFolder(int id, const std::wstring& folder) override;
    void Enable(int id, bool enabled) override;
    void Show(int id, bool shown) override;
    bool IsChecked(int id) const override;
    void Check(int id) override;
    void ClearEntries(int id) override;
    void AddEntry(int id, std::wstring_view text, std::int32_t data) override;
    void SelectEntry(int id, int index) override;
    std::int32_t SelectedData(int id) const override;
    std::wstring SelectedText(int id) const override;
    void SetNumberLimits(int id, std::int32_t type, std::int32_t lowest,
                         std::int32_t highest) override;
    void ShowBalloon(int id, const std::wstring& title, const std::wstring& text) override;
    void SelectWholeText(int id) override;
    void SetProgressRange(int id, int lowest, int highest) override;
    void SetProgress(int id, int position) override;
    void ShowRunState(ERunState state) override;
    void CallUser() override;
    void ShowWaitCursor(bool shown) override;
    void ShowMessage(const std::wstring& text, std::uint32_t style) override;
    SBrowsedFolder BrowseForFolder(const std::wstring& opened) override;
    void LanguageChanged(std::int32_t langId) override;

    /// Loads the icons in the sizes of the window's monitor and gives them to the window.
    void LoadIcons();
    HICON Icon() const { return m_icon; }

    /// Takes a shown balloon down.
    void HideBalloon() { m_balloon.Hide(); }

    const CNumberEdit& NumberEdit(int id) const {
        return id == kIdWidth ? m_widthEdit : m_heightEdit;
    }

    /// The number edit that has the focus, null when none has it.
    CNumberEdit* FocusedNumberEdit();

    /// The id of the number edit at the address that a notification carries, 0 when none of this
    /// dialog's lies there. The address is compared only.
    int FindNumberEdit(LPARAM address) const;

  private:
    HWND Control(int id) const { return GetDlgItem(m_dialog, id); }
    LRESULT Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendDlgItemMessageW(m_dialog, id, message, wParam, lParam);
    }
    LRESULT SelectedIndex(int id) const;
    void AddAboutEntry();
    void DestroyIcons();

    HWND m_dialog = nullptr;
    HICON m_icon = nullptr;
    HICON m_smallIcon = nullptr;
    bool m_isWaitCursorShown = false;
    CNumberEdit m_widthEdit;
    CNumberEdit m_heightEdit;
    CBalloonTip m_balloon;
    CAccessibleNames m_accessibleNames;
    CTaskbarButton m_taskbarButton;
    CPathTip m_sourceTip;
    CPathTip m_targetTip;
};

} // namespace trevolt
