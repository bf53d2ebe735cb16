#include "app/dialog/TrevoltDlg.h"

#include <new>

#include "app/dialog/StartConstants.h"
#include "common/TextConversion.h"
#include "platform/FileSystem.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr int kProgressStarted = 5;
constexpr int kProgressTurning = 10;
constexpr int kProgressTurned = 95;
constexpr int kProgressDone = 100;
constexpr int kProgressPerFile = 80;

/// The wait cursor, as long as this lives.
class CWaitCursor {
  public:
    explicit CWaitCursor(CDialogView& view) : m_view(view) { m_view.ShowWaitCursor(true); }
    ~CWaitCursor() { m_view.ShowWaitCursor(false); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

  private:
    CDialogView& m_view;
};

/// A map of a size that got no memory must not pass for one of defaults.
void RequireStorage(const CChromaCorrectCoef& map, SMapSize size) {
    if (size.width > 0 && size.height > 0 && !map.HasStorage())
        throw std::bad_alloc();
}

} // namespace

CTrevoltDlg::CTrevoltDlg(CDialogView& view, CTranslate& translate, SDialogStart start)
    : m_view(view),
      m_translate(translate),
      m_start(std::move(start)),
      m_settings(m_start.moduleFolder + kSettingsFile, kSettingsSection) {}

void CTrevoltDlg::OnStart() {
    const CWaitCursor cursor(m_view);
    try {
        Run();
    } catch (const std::bad_alloc&) {
        EndWithoutMemory();
    }
    m_view.ShowRunState(ERunState::None);
    CMemoryBudget::Process().GiveBackKept(); // no file follows
}

void CTrevoltDlg::Run() {
    UpdateControls();
    if (!IsSizeGiven())
        return;
    ClearMaps();
    if (!LoadInput())
        return;
    m_view.ShowRunState(ERunState::Working);
    m_view.Show(kIdProgress, true);
    m_view.Enable(kIdAngle, false);
    m_view.SetProgress(kIdProgress, kProgressStarted);
    SetBusy(true);
    if (RotateAll() != 0)
        ExportAll();
    m_view.SetProgress(kIdProgress, kProgressDone);
    SetBusy(false);
}

/// The maps go first: the message needs memory too.
void CTrevoltDlg::EndWithoutMemory() {
    ClearMaps();
    CMemoryBudget::Process().GiveBackKept();
    SetBusy(false);
    TellFailure(L"Trevolt_Not_Enough_Memory", kMessageExclamation);
}

/// The two modes test different fields: cabinet mode the current pair, screen mode the remembered
/// screen pair.
bool CTrevoltDlg::IsSizeGiven() {
    const bool byCabinet = m_fields.wholeScreen == 0;
    const SMapSize& tested = byCabinet ? m_fields.current : m_fields.screen;
    if (tested.width != 0 && tested.height != 0)
        return true;
    ShowTranslated(byCabinet ? L"Trevolt_Please_Input_Correct_Cabinet_Size"
                             : L"Trevolt_Please_Input_Correct_Screen_Size",
                   kMessageExclamation);
    return false;
}

bool CTrevoltDlg::LoadInput() {
    const Status status = LoadFolder(m_fields.sourceFolder, m_fields.current, m_inputMap);
    if (Failed(status) || m_inputMap.empty()) {
        TellFailure(L"Trevolt_Coef_File_Not_Found", kMessageExclamation);
        return false;
    }
    if (m_inputMap.size() >= 2 && m_fields.wholeScreen != 0) {
        TellFailure(L"Trevolt_Make_Sure_File_Is_Only_One", kMessageExclamation);
        return false;
    }
    return true;
}

void CTrevoltDlg::SetBusy(bool busy) {
    m_fields.busy = busy ? 1 : 0;
    UpdateControls();
}

void CTrevoltDlg::UpdateControls() {
    constexpr std::uint32_t kBothSet = kSourceSet | kTargetSet;
    m_view.Enable(kIdStart, m_fields.pathsSet == kBothSet);
    const bool byCabinet = m_fields.wholeScreen == 0;
    m_view.SetText(kIdWidthLabel, m_translate.TranslateString(byCabinet ? L"Trevolt_Cabinet_Width"
                                                                        : L"Trevolt_Screen_Width"));
    m_view.SetText(kIdHeightLabel,
                   m_translate.TranslateString(byCabinet ? L"Trevolt_Cabinet_Height"
                                                         : L"Trevolt_Screen_Height"));
    const bool idle = m_fields.busy == 0;
    m_view.Show(kIdProgress, !idle);
    for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                         kIdWidth, kIdHeight})
        m_view.Enable(id, idle);
}

Status CTrevoltDlg::LoadFolder(const std::wstring& path, SMapSize size, CCoefMapTable& map) {
    const FolderListing listing = ListEntries(path);
    if (listing.entries.empty())
        return E_FAIL;
    const std::wstring folder = FolderPart(path);
    for (const FolderEntry& entry : listing.entries) {
        if (entry.kind != EntryKind::File)
            continue;
        const std::wstring fullPath = folder + entry.name;
        const SFileKind* kind = FindLoadKind(fullPath);
        if (kind == nullptr)
            continue;
        auto loaded = std::make_unique<CChromaCorrectCoef>();
        loaded->Resize(size.width, size.height);
        RequireStorage(*loaded, size);
        // A file that does not load is turned and exported from what its map holds. Memory that it
        // asks for itself and does not get is no other case: its header may lie.
        const std::wstring readPath = kNamesIgnoreCase ? ToLowerAscii(fullPath) : fullPath;
        DropStatus(kind->load(*loaded, readPath.c_str()));
        map[entry.name] = std::move(loaded);
    }
    return S_OK;
}

std::int32_t CTrevoltDlg::RotateAll() {
    m_view.SetProgress(kIdProgress, kProgressTurning);
    const auto count = static_cast<int>(m_inputMap.size());
    int visited = 0;
    for (const auto& [name, source] : m_inputMap) {
        ++visited;
        if (source == nullptr || source->Width() < m_fields.current.width ||
            source->Height() < m_fields.current.height)
            continue;
        RotateOne(name, *source);
        // Divided before it is multiplied: the bar stays at 0 until the last file.
        m_view.SetProgress(kIdProgress, visited / count * kProgressPerFile);
    }
    m_view.SetProgress(kIdProgress, kProgressTurned);
    return 1;
}

void CTrevoltDlg::RotateOne(const std::wstring& name, const CChromaCorrectCoef& source) {
    const auto code = static_cast<std::uint32_t>(m_view.SelectedData(kIdAngle));
    if (!CQuarterTurn::IsKnown(code))
        return;
    auto turned = std::make_unique<CChromaCorrectCoef>();
    TurnMap(source, m_fields.current.width, m_fields.current.height, code, *turned);
    RequireStorage(*turned, m_fields.current);
    m_outputMap[name] = std::move(turned);
}

void CTrevoltDlg::ExportAll() {
    if (m_outputMap.empty()) {
        TellFailure(L"Trevolt_Export_Failed", kMessagePlain);
        return;
    }
    if (!PathExists(m_fields.targetFolder)) {
        TellFailure(L"Trevolt_Export_Path_Not_Exist", kMessageQuestion);
        return;
    }
    for (const auto& [name, map] : m_outputMap)
        ExportOne(name, *map);
    TellEnd(L"Trevolt_Export_Finished", kMessagePlain);
}

void CTrevoltDlg::ExportOne(const std::wstring& name, const CChromaCorrectCoef& map) const {
    const SFileKind* kind = FindExportKind(name);
    if (kind == nullptr)
        return;
    const std::wstring path =
        m_fields.targetFolder + ExportName(name, m_view.SelectedText(kIdAngle));
    const CTransferReport report;
    // The run's end is told alike, whatever was written; refused memory alone, which every writer
    // notes, ends it.
    DropStatus(kind->save(map, path.c_str()));
    if (report.WasMemoryRefused())
        throw std::bad_alloc();
}

void CTrevoltDlg::ClearMaps() {
    m_inputMap.clear();
    m_outputMap.clear();
}

/// A run may take long enough for its user to work elsewhere meanwhile.
void CTrevoltDlg::TellEnd(const wchar_t* key, std::uint32_t style) {
    m_view.CallUser();
    ShowTranslated(key, style);
}

void CTrevoltDlg::TellFailure(const wchar_t* key, std::uint32_t style) {
    m_view.ShowRunState(ERunState::Failed);
    TellEnd(key, style);
}

void CTrevoltDlg::ShowTranslated(const wchar_t* key, std::uint32_t style) {
    m_view.ShowMessage(m_translate.TranslateString(key), style);
}

} // namespace trevolt
