// The window of the main dialog as the dialog's logic sees it. The logic names controls by their
// ids and knows no toolkit; a real window and the tests' in-memory one implement this.
#pragma once

#include <cstdint>
#include <string>

namespace trevolt {

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

class CDialogView {
  public:
    virtual ~CDialogView() = default;

    virtual std::wstring GetText(int id) const = 0;
    virtual void SetText(int id, const std::wstring& text) = 0;
    virtual void Enable(int id, bool enabled) = 0;
    virtual void Show(int id, bool shown) = 0;

    /// Data of the box's selected entry, −1 when none is selected.
    virtual std::int32_t SelectedData(int id) const = 0;
    /// Text of the box's selected entry, empty when none is selected.
    virtual std::wstring SelectedText(int id) const = 0;

    /// Moves the progress bar and redraws the window before it returns.
    virtual void SetProgress(int id, int position) = 0;

    /// Shows a modal message box and returns when it is closed.
    virtual void ShowMessage(const std::wstring& text, std::uint32_t style) = 0;
};

} // namespace trevolt
