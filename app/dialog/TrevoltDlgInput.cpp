// What the user enters: folders, mode and sizes, and the checks of the sizes.
#include <array>

#include "app/dialog/TrevoltDlg.h"
#include "common/TextConversion.h"
#include "platform/FileSystem.h"

namespace trevolt {
namespace {

bool HasForeignCharacter(const std::wstring& text) {
    return text.find_first_not_of(L"0123456789.") != std::wstring::npos;
}

bool IsNoInteger(const std::wstring& text) {
    return text.empty() || text.find(L'.') != std::wstring::npos;
}

} // namespace

void CTrevoltDlg::ShowFields() {
    m_isShowingFields = true;
    m_view.ShowFolder(kIdSource, m_fields.sourceFolder);
    m_view.ShowFolder(kIdTarget, m_fields.targetFolder);
    m_view.SetText(kIdWidth, std::to_wstring(m_fields.current.width));
    m_view.SetText(kIdHeight, std::to_wstring(m_fields.current.height));
    m_view.Check(m_fields.wholeScreen == 0 ? kIdByCabinet : kIdByScreen);
    m_isShowingFields = false;
}

/// The folder edits are read-only and are not read back.
void CTrevoltDlg::ReadFields() {
    m_fields.current = {LeadingInteger(m_view.GetText(kIdWidth)),
                        LeadingInteger(m_view.GetText(kIdHeight))};
    m_fields.wholeScreen = m_view.IsChecked(kIdByScreen) ? 1 : 0;
}

CTrevoltDlg::SFolderBox CTrevoltDlg::FolderBox(int id) {
    if (id == kIdSource)
        return {m_fields.sourceFolder, kSourceSet};
    return {m_fields.targetFolder, kTargetSet};
}

void CTrevoltDlg::OnBrowseSource() { Browse(kIdSource); }

void CTrevoltDlg::OnBrowseTarget() { Browse(kIdTarget); }

void CTrevoltDlg::Browse(int id) {
    const auto [folder, setFlag] = FolderBox(id);
    const bool isSet = (m_fields.pathsSet & setFlag) != 0;
    TakeFolder(id, m_view.BrowseForFolder(isSet ? folder : std::wstring()));
}

void CTrevoltDlg::OnFolderDropped(const std::wstring& path, int underMouse) {
    if (m_fields.busy != 0)
        return;
    TakeFolder(DroppedFolderBox(underMouse, m_fields.pathsSet), {true, DroppedFolder(path)});
}

void CTrevoltDlg::TakeFolder(int id, const SBrowsedFolder& browsed) {
    const std::wstring chosen = CheckedFolder(browsed);
    if (!chosen.empty()) {
        const auto [folder, setFlag] = FolderBox(id);
        folder = chosen;
        m_fields.pathsSet |= setFlag;
    }
    SaveSettings();
    ShowFields();
    UpdateControls();
}

/// The chosen folder's path with its separator; empty when none was chosen.
std::wstring CTrevoltDlg::CheckedFolder(const SBrowsedFolder& browsed) {
    if (!browsed.isChosen)
        return {};
    if (browsed.path.empty())
        ShowTranslated(L"Trevolt_Invalid_Path_Select_Again", kMessageInformation);
    return WithSeparator(browsed.path);
}

void CTrevoltDlg::OnSizeChanged() {
    if (m_isShowingFields)
        return;
    ReadFields();
    SaveSettings();
}

void CTrevoltDlg::OnModeChanged() {
    ReadFields();
    m_fields.current = RememberedSize();
    UpdateControls();
    ShowFields();
}

std::int32_t CTrevoltDlg::OnNumberEditNotify(int id) {
    if (m_isShowingFields || (id != kIdWidth && id != kIdHeight))
        return 0;
    ValidateSizeInputs();
    ReadFields();
    SaveSettings();
    return 0;
}

std::int32_t CTrevoltDlg::ValidateSizeInputs() {
    struct SInput {
        int id;
        std::int32_t highest;
        std::wstring text;
    };
    const std::array<SInput, 2> inputs{
        SInput{kIdWidth, kHighestWidth, m_view.GetText(kIdWidth)},
        SInput{kIdHeight, kHighestHeight, m_view.GetText(kIdHeight)}};

    for (const SInput& input : inputs)
        if (HasForeignCharacter(input.text)) {
            ShowSizeTip(input.id, m_translate.TranslateString(L"Tools_Only_Numbers_Can_Input"));
            return 0;
        }
    for (const SInput& input : inputs)
        if (IsNoInteger(input.text)) {
            ShowSizeTip(input.id, m_translate.TranslateString(L"Tools_Only_Integer_Can_Input"));
            return 0;
        }
    for (const SInput& input : inputs)
        if (LeadingInteger(input.text) > input.highest) {
            ShowSizeTip(input.id, WithNumbers(m_translate.TranslateString(L"Trevolt_Edit_Limit"), 0,
                                              input.highest));
            return 0;
        }
    return 1;
}

void CTrevoltDlg::ShowSizeTip(int id, const std::wstring& text) {
    m_view.ShowBalloon(id, m_translate.TranslateString(L"Tools_Cannot_Input_Char"), text);
    m_view.SelectWholeText(id);
}

} // namespace trevolt
