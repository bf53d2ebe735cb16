// CTrevoltDlg: every field and every rule of the main dialog, without a toolkit or a system call.
// It shows itself through a CDialogView and looks texts up in the translator; both outlive it.
//
// Everything runs on the thread that shows the window, inside the handlers: no worker threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>

#include "app/dialog/DialogView.h"
#include "app/dialog/FolderChoice.h"
#include "app/dialog/Translate.h"
#include "platform/SettingsProfile.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

struct SMapSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    friend bool operator==(const SMapSize&, const SMapSize&) = default;
};

/// Owned coefficient maps by file name (name and extension as found, no folder).
class CCoefMapTable : public std::unordered_map<std::wstring, std::unique_ptr<CChromaCorrectCoef>> {
  public:
    static constexpr std::size_t kBuckets = 17;
    CCoefMapTable() : unordered_map(kBuckets) {}
};

/// What the program knows before it makes its dialog.
struct SDialogStart {
    std::wstring moduleFolder; ///< the program's folder, with its separator
    std::wstring placeholder;  ///< what a folder field says until a folder is set
};

class CTrevoltDlg {
  public:
    CTrevoltDlg(CDialogView& view, CTranslate& translate, SDialogStart start = {});

    /// The dialog's initialisation, with the language id of the launching program: the window's
    /// icons and system menu, settings, controls, then the language. True: the system shall choose
    /// the first focus.
    bool OnInitDialog(std::int32_t launchLanguage);

    /// Browses for the source folder (the target folder), saves it and shows it.
    void OnBrowseSource();
    void OnBrowseTarget();

    /// A path was dropped over the control `underMouse` (0 is none): its folder fills a folder box as
    /// if it had been browsed for. While a run is on nothing happens.
    void OnFolderDropped(const std::wstring& path, int underMouse);

    /// The text of a size edit has changed: its value is taken and saved.
    void OnSizeChanged();

    /// A radio button was clicked: the other mode's remembered size becomes the current one.
    void OnModeChanged();

    /// A number edit has committed its value. Anything but the two size edits is ignored. Always 0.
    std::int32_t OnNumberEditNotify(int id);

    /// Data from another program: with tag 0, a language id as little-endian int32, which the
    /// window takes at once. Other tags, and data too short for an id, change nothing.
    void OnCopyData(std::uintptr_t tag, std::span<const std::byte> data);

    /// Checks the texts of both size edits; at the first fault a balloon tells it at its edit.
    /// 1 when both are good, else 0.
    std::int32_t ValidateSizeInputs();

    /// Reads the settings file into the fields.
    void LoadSettings();

    /// Remembers the current size for its mode and writes the settings file.
    void SaveSettings();

    /// Gives the translator a language. Nothing that is shown changes yet.
    void SelectLanguage(std::int32_t id);

    /// The Start button: checks the size, loads the source folder, turns every map by the angle and
    /// exports the turned maps into the target folder. Every outcome is told in a message box.
    /// Memory exhaustion (std::bad_alloc) ends the run where it is: nothing more is written, both
    /// maps are emptied, the controls come back, and a message tells it.
    void OnStart();

    /// Relabels and enables the controls from the fields.
    void UpdateControls();

    /// Loads every file of a known kind below `path` (which ends with its separator) into `map`,
    /// each into a map of the given size, whatever its reader answers. E_FAIL when the search finds
    /// no entry at all, else 0. Throws std::bad_alloc when a map of the given size gets no memory;
    /// what a file's own header asks for and does not get is only a file that does not load.
    static Status LoadFolder(const std::wstring& path, SMapSize size, CCoefMapTable& map);

    /// Turns every input map by the selected angle into the output map. 1 when done. Throws
    /// std::bad_alloc when a turned map gets no memory.
    std::int32_t RotateAll();

    /// Writes every output map into the target folder under its name, marked with the text that the
    /// angle box then shows. Throws std::bad_alloc when a writer gets no memory for what it writes.
    void ExportAll();

    /// Destroys every loaded and every turned map.
    void ClearMaps();

    /// The fields of the dialog. Path-set bit 0 stands for the source folder, bit 1 for the target.
    struct SFields {
        std::wstring sourceFolder;
        std::wstring targetFolder;
        std::uint32_t pathsSet = 0;
        SMapSize current;
        SMapSize screen;
        SMapSize cabinet;
        std::int32_t wholeScreen = 0; ///< 0 by cabinet, 1 whole screen
        std::int32_t busy = 0;
    };
    static constexpr std::int32_t kHighestWidth = kLargestMapSide;
    static constexpr std::int32_t kHighestHeight = 32768;

    SFields& Fields() { return m_fields; }
    const SFields& Fields() const { return m_fields; }
    CCoefMapTable& InputMap() { return m_inputMap; }
    CCoefMapTable& OutputMap() { return m_outputMap; }

  private:
    void InitControls();
    void FillAngleBox();
    void TranslateWindow();
    void ShowFields();
    void ReadFields();
    SMapSize& RememberedSize() {
        return m_fields.wholeScreen == 0 ? m_fields.cabinet : m_fields.screen;
    }
    /// What belongs to one of the two folder boxes.
    struct SFolderBox {
        std::wstring& folder;
        std::uint32_t setFlag;
    };
    SFolderBox FolderBox(int id);
    void Browse(int id);
    void TakeFolder(int id, const SBrowsedFolder& browsed);
    std::wstring CheckedFolder(const SBrowsedFolder& browsed);
    std::wstring SavedFolder(const std::wstring& folder) const;
    void ShowSizeTip(int id, const std::wstring& text);
    void Run();
    void EndWithoutMemory();
    bool IsSizeGiven();
    bool LoadInput();
    void SetBusy(bool busy);
    void RotateOne(const std::wstring& name, const CChromaCorrectCoef& source);
    void ExportOne(const std::wstring& name, const CChromaCorrectCoef& map) const;
    void ShowTranslated(const wchar_t* key, std::uint32_t style);
    void TellEnd(const wchar_t* key, std::uint32_t style);
    void TellFailure(const wchar_t* key, std::uint32_t style);

    CDialogView& m_view;
    CTranslate& m_translate;
    SDialogStart m_start;
    CSettingsProfile m_settings;
    bool m_isShowingFields = false; ///< notifications of the controls are the dialog's own doing
    SFields m_fields;
    CCoefMapTable m_inputMap;
    CCoefMapTable m_outputMap;
};

} // namespace trevolt
