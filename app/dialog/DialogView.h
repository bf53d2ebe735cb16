// The window of the main dialog as the dialog's logic sees it. The logic names controls by their
// ids and knows no toolkit; a real window and the tests' in-memory one implement this.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trevolt {

inline constexpr int kDialogTemplate = 102;

/// Control ids of the dialog template.
enum EControlId : int {
    kIdAngleLabel = 1000,
    kIdStart = 1001,
    kIdWidth = 1002,
    kIdSourceLabel = 1003,
    kIdHeight = 1004,
    kIdBrowseSource = 1005,
    kIdTargetLabel = 1006,
    kIdSource = 1007,
    kIdProgress = 1008,
    kIdTarget = 1010,
    kIdBrowseTarget = 1013,
    kIdByCabinet = 1017,
    kIdByScreen = 1018,
    kIdWidthLabel = 1019,
    kIdHeightLabel = 1020,
    kIdAngle = 1021
};

/// Style values of message boxes.
enum EMessageStyle : std::uint32_t {
    kMessagePlain = 0,
    kMessageQuestion = 0x20,
    kMessageExclamation = 0x30,
    kMessageInformation = 0x40
};

/// How a run stands, for one who looks at the taskbar and not at the window.
enum class ERunState { None, Working, Failed };

/// What the folder browser answered. A chosen item that lies in no file system has no path.
struct SBrowsedFolder {
    bool isChosen = false;
    std::wstring path;
};

class CDialogView {
  public:
    virtual ~CDialogView() = default;

    /// Gives the window its icons and its system menu the entry of the about box.
    virtual void SetUpWindow() = 0;
    virtual void SetTitle(const std::wstring& text) = 0;

    virtual std::wstring GetText(int id) const = 0;
    virtual void SetText(int id, const std::wstring& text) = 0;
    /// What a screen reader calls the control, in place of its text.
    virtual void SetAccessibleName(int id, const std::wstring& name) = 0;
    /// Shows a folder's path in its box: its end where the box is too narrow, and the whole of it in a
    /// tooltip then.
    virtual void ShowFolder(int id, const std::wstring& folder) = 0;
    virtual void Enable(int id, bool enabled) = 0;
    virtual void Show(int id, bool shown) = 0;

    virtual bool IsChecked(int id) const = 0;
    /// Checks the radio button and unchecks the other of its group.
    virtual void Check(int id) = 0;

    virtual void ClearEntries(int id) = 0;
    /// Appends an entry to the box.
    virtual void AddEntry(int id, std::wstring_view text, std::int32_t data) = 0;
    /// Selects the box's entry at `index`.
    virtual void SelectEntry(int id, int index) = 0;
    /// Data of the box's selected entry, −1 when none is selected.
    virtual std::int32_t SelectedData(int id) const = 0;
    /// Text of the box's selected entry, empty when none is selected.
    virtual std::wstring SelectedText(int id) const = 0;

    /// What the number edit may hold: it tells its dialog about committed values, and neither
    /// filters nor clamps them.
    virtual void SetNumberLimits(int id, std::int32_t type, std::int32_t lowest,
                                 std::int32_t highest) = 0;
    /// Shows an information balloon at the edit.
    virtual void ShowBalloon(int id, const std::wstring& title, const std::wstring& text) = 0;
    /// Selects the edit's whole text and scrolls it into view.
    virtual void SelectWholeText(int id) = 0;

    virtual void SetProgressRange(int id, int lowest, int highest) = 0;
    /// Moves the progress bar and redraws the window before it returns.
    virtual void SetProgress(int id, int position) = 0;

    /// Shows on the window's taskbar button how the run stands; while it works, the bar's position too.
    virtual void ShowRunState(ERunState state) = 0;
    /// Lets the window's taskbar button flash when the user works in another window.
    virtual void CallUser() = 0;

    /// Shows or takes back the wait cursor. While a message box is open the cursor is the usual one.
    virtual void ShowWaitCursor(bool shown) = 0;

    /// Shows a modal message box and returns when it is closed.
    virtual void ShowMessage(const std::wstring& text, std::uint32_t style) = 0;

    /// Lets the user choose a folder; modal. It opens at `opened`, or at its root where that names no
    /// folder.
    virtual SBrowsedFolder BrowseForFolder(const std::wstring& opened) = 0;

    /// The window library's own texts follow the language from now on.
    virtual void LanguageChanged(std::int32_t langId) = 0;
};

} // namespace trevolt
