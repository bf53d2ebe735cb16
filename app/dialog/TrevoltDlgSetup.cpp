// The dialog's initialisation, its settings file and its language.
#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "app/dialog/ControlNames.h"
#include "app/dialog/Languages.h"
#include "app/dialog/StartConstants.h"
#include "app/dialog/TrevoltDlg.h"
#include "common/TextConversion.h"
#include "trevolt/CoefRotation.h"

namespace trevolt {
namespace {

constexpr std::wstring_view kKeyPrefix = L"Trevolt_";

/// The controls whose texts are the language's. The two size labels are not among them: the mode
/// sets them.
constexpr std::array<int, 8> kTranslatedControls{kIdByCabinet,    kIdByScreen,     kIdAngleLabel,
                                                 kIdSourceLabel,  kIdBrowseSource, kIdTargetLabel,
                                                 kIdBrowseTarget, kIdStart};

class CTranslatedView : public CTranslatedDialog {
  public:
    explicit CTranslatedView(CDialogView& view) : m_view(view) {}
    void ShowTitle(const std::wstring& text) override { m_view.SetTitle(text); }
    void ShowControlText(int id, const std::wstring& text) override { m_view.SetText(id, text); }

  private:
    CDialogView& m_view;
};

} // namespace

bool CTrevoltDlg::OnInitDialog(std::int32_t launchLanguage) {
    constexpr std::int32_t kIntegerType = 1;
    m_view.SetUpWindow();
    InitControls();
    SelectLanguage(launchLanguage);
    TranslateWindow();
    m_view.LanguageChanged(m_translate.LangId());
    UpdateControls(); // the size labels follow the language
    m_view.SetNumberLimits(kIdWidth, kIntegerType, 0, kHighestWidth);
    m_view.SetNumberLimits(kIdHeight, kIntegerType, 0, kHighestHeight);
    return true;
}

void CTrevoltDlg::InitControls() {
    m_fields.pathsSet = 0;
    m_fields.sourceFolder = m_start.placeholder;
    m_fields.targetFolder = m_start.placeholder;
    LoadSettings();
    FillAngleBox();
    UpdateControls();
    m_view.SetProgressRange(kIdProgress, 0, 100);
    m_view.Show(kIdProgress, false);
    ShowFields();
}

void CTrevoltDlg::FillAngleBox() {
    m_view.ClearEntries(kIdAngle);
    for (const SAngle& angle : kAngles)
        m_view.AddEntry(kIdAngle, angle.text, static_cast<std::int32_t>(angle.code));
    m_view.SelectEntry(kIdAngle, 0);
}

void CTrevoltDlg::LoadSettings() {
    const auto number = [this](const wchar_t* key) {
        return LeadingInteger(m_settings.ReadString(key));
    };
    m_fields.cabinet = {number(kKeyCabinetWidth), number(kKeyCabinetHeight)};
    m_fields.current = m_fields.cabinet;
    m_fields.screen = {number(kKeyScreenWidth), number(kKeyScreenHeight)};

    const auto takeFolder = [this](const wchar_t* key, std::wstring& folder, std::uint32_t flag) {
        const std::wstring saved = m_settings.ReadString(key);
        if (saved.empty())
            return;
        folder = saved;
        m_fields.pathsSet |= flag;
    };
    takeFolder(kKeySourceFolder, m_fields.sourceFolder, kSourceSet);
    takeFolder(kKeyTargetFolder, m_fields.targetFolder, kTargetSet);
}

void CTrevoltDlg::SaveSettings() {
    RememberedSize() = m_fields.current;
    const auto write = [this](const wchar_t* key, const std::wstring& value) {
        m_settings.WriteString(key, value); // a folder that is read-only loses its settings only
    };
    const auto writeSize = [&](const wchar_t* key, std::int32_t size) {
        write(key, std::to_wstring(std::max(size, 0)));
    };
    writeSize(kKeyCabinetWidth, m_fields.cabinet.width);
    writeSize(kKeyCabinetHeight, m_fields.cabinet.height);
    writeSize(kKeyScreenWidth, m_fields.screen.width);
    writeSize(kKeyScreenHeight, m_fields.screen.height);
    write(kKeySourceFolder, SavedFolder(m_fields.sourceFolder));
    write(kKeyTargetFolder, SavedFolder(m_fields.targetFolder));
}

std::wstring CTrevoltDlg::SavedFolder(const std::wstring& folder) const {
    return folder == m_start.placeholder ? std::wstring() : folder;
}

void CTrevoltDlg::SelectLanguage(std::int32_t id) {
    SelectToolsLanguage(m_translate, m_start.moduleFolder, id);
}

void CTrevoltDlg::TranslateWindow() {
    CTranslatedView window(m_view);
    m_translate.TranslateDialog(window, kTranslatedControls, kDialogTemplate, kKeyPrefix);
    for (const auto& [button, label] :
         {std::pair(kIdBrowseSource, kIdSourceLabel), std::pair(kIdBrowseTarget, kIdTargetLabel)})
        m_view.SetAccessibleName(button, ButtonName(m_view.GetText(button), m_view.GetText(label)));
}

/// The window library's own texts and the size labels keep the former language: those labels follow
/// at their next update.
void CTrevoltDlg::OnCopyData(std::uintptr_t tag, std::span<const std::byte> data) {
    constexpr std::uintptr_t kLanguageTag = 0;
    std::int32_t id = 0;
    if (tag != kLanguageTag || data.size() < sizeof id)
        return;
    std::memcpy(&id, data.data(), sizeof id);
    SelectLanguage(id);
    TranslateWindow();
}

} // namespace trevolt
