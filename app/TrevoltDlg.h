// CTrevoltDlg: every field and every rule of the main dialog, without a toolkit or a system call.
// It shows itself through a CDialogView and looks texts up in the translator; both outlive it.
//
// Everything runs on the thread that shows the window, inside the handlers: no worker threads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "app/DialogView.h"
#include "common/StatusCodes.h"
#include "common/Translate.h"
#include "formats/ChromaCorrectCoef.h"

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

class CTrevoltDlg {
  public:
    CTrevoltDlg(CDialogView& view, const CTranslate& translate);

    /// The Start button: checks the size, loads the source folder, turns every map by the angle and
    /// exports the turned maps into the target folder. Every outcome is told in a message box.
    void OnStart();

    /// Relabels and enables the controls from the fields.
    void UpdateControls();

    /// Loads every file of a known kind below `path` (which ends with its separator) into `map`,
    /// each into a map of the given size, whatever its reader answers. E_FAIL when the search finds
    /// no entry at all, else 0.
    static Status LoadFolder(const std::wstring& path, SMapSize size, CCoefMapTable& map);

    /// Turns every input map by the selected angle into the output map. 1 when done.
    std::int32_t RotateAll();

    /// Writes every output map into the target folder under its angle-marked name.
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
    static constexpr std::uint32_t kSourceSet = 1;
    static constexpr std::uint32_t kTargetSet = 2;

    SFields& Fields() { return m_fields; }
    const SFields& Fields() const { return m_fields; }
    CCoefMapTable& InputMap() { return m_inputMap; }
    CCoefMapTable& OutputMap() { return m_outputMap; }

  private:
    bool IsSizeGiven();
    bool LoadInput();
    void SetBusy(bool busy);
    void RotateOne(const std::wstring& name, const CChromaCorrectCoef& source);
    void ExportOne(const std::wstring& name, const CChromaCorrectCoef& map,
                   const std::wstring& angle) const;
    void ShowTranslated(const wchar_t* key, std::uint32_t style);

    CDialogView& m_view;
    const CTranslate& m_translate;
    SFields m_fields;
    CCoefMapTable m_inputMap;
    CCoefMapTable m_outputMap;
};

} // namespace trevolt
